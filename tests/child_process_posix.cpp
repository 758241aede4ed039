#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/utf8.h"
#include "tests/child_process.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {

struct ChildProcess::State {
    TemporaryFolder folder;
    pid_t process = -1;
    bool ended = false;
    int status = 0;

    void Reap(int options) {
        if (ended || process < 0) return;
        ended = waitpid(process, &status, options) == process;
    }
};

ChildProcess::ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments, bool)
    : state_(std::make_unique<State>()) {
    std::vector<std::string> texts = {ToUtf8(program)};
    for (const std::wstring& argument : arguments) texts.push_back(ToUtf8(argument));
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);

    const std::string out = ToUtf8(state_->folder.Path(L"out")), err = ToUtf8(state_->folder.Path(L"err"));
    state_->process = fork();
    if (state_->process != 0) return;
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(open(out.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
    dup2(open(err.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
    // Tests may themselves run in the background, where Ctrl+C is ignored.
    signal(SIGINT, SIG_DFL);
    execv(pointers[0], pointers.data());
    _exit(127);
}

ChildProcess::~ChildProcess() {
    if (state_->process >= 0 && !state_->ended) {
        kill(state_->process, SIGKILL);
        state_->Reap(0);
    }
}

bool ChildProcess::HasEnded() {
    state_->Reap(WNOHANG);
    return state_->ended || state_->process < 0;
}

bool ChildProcess::Interrupt() {
    return state_->process >= 0 && kill(state_->process, SIGINT) == 0;
}

ProgramResult ChildProcess::Wait() {
    state_->Reap(0);
    ProgramResult result;
    if (state_->ended && WIFEXITED(state_->status)) result.exitStatus = WEXITSTATUS(state_->status);
    result.out = state_->folder.Read(L"out");
    result.err = state_->folder.Read(L"err");
    return result;
}

}  // namespace skyvault::test
