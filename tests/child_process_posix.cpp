#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/child_process.h"

namespace skyvault::test {

ChildProcess::ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments, bool) {
    std::vector<std::string> texts = {ToUtf8(program)};
    for (const std::wstring& argument : arguments) texts.push_back(ToUtf8(argument));
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);

    const std::string out = ToUtf8(folder_ / L"out"), err = ToUtf8(folder_ / L"err");
    process_ = fork();
    if (process_ != 0) return;
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(open(out.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
    dup2(open(err.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
    // Tests may themselves run in the background, where Ctrl+C is ignored.
    signal(SIGINT, SIG_DFL);
    execv(pointers[0], pointers.data());
    _exit(127);
}

ChildProcess::~ChildProcess() {
    if (HasEnded()) return;
    kill(static_cast<pid_t>(process_), SIGKILL);
    HasEnded(true);
}

bool ChildProcess::HasEnded(bool wait) {
    int status = 0;
    if (process_ > 0 && waitpid(static_cast<pid_t>(process_), &status, wait ? 0 : WNOHANG) == process_) {
        if (WIFEXITED(status)) exitStatus_ = WEXITSTATUS(status);
        process_ = 0;
    }
    return process_ <= 0;
}

bool ChildProcess::Interrupt() {
    return process_ > 0 && kill(static_cast<pid_t>(process_), SIGINT) == 0;
}

}  // namespace skyvault::test
