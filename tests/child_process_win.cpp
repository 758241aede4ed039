#include <windows.h>

#include <algorithm>

#include "tests/child_process.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {

namespace {

/// One argument as the C runtime's rules read it back.
std::wstring Quoted(const std::wstring& argument) {
    if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos) return argument;
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        // Backslashes count only before a quote.
        if (c == L'"') text.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text += c;
    }
    text.append(backslashes, L'\\');
    return text + L"\"";
}

HANDLE CreateInheritable(const std::wstring& path) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool madeOwnConsole = false;

/// Ctrl+C needs a console, and tests run from a script may have none. Everything on the one made here is
/// sent the key, so this process is deaf to it.
void MakeOwnConsole() {
    if (madeOwnConsole) return;
    FreeConsole();
    SetConsoleCtrlHandler([](DWORD) -> BOOL { return TRUE; }, TRUE);
    madeOwnConsole = AllocConsole() != 0;
}

}  // namespace

struct ChildProcess::State {
    bool ownGroup = false;  ///< on the tests' own console, where nothing else shall be interrupted
    TemporaryFolder folder;
    PROCESS_INFORMATION process{};

    std::string Output(const wchar_t* name) const {
        std::string text = folder.Read(name);
        std::erase(text, '\r');
        return text;
    }
};

ChildProcess::ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments,
                           bool interruptible)
    : state_(std::make_unique<State>()) {
    std::wstring line = Quoted(program);
    for (const std::wstring& argument : arguments) line += L" " + Quoted(argument);
    if (interruptible) {
        state_->ownGroup = !madeOwnConsole && GetConsoleCP() != 0;
        if (!state_->ownGroup) MakeOwnConsole();
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = CreateInheritable(state_->folder.Path(L"out"));
    startup.hStdError = CreateInheritable(state_->folder.Path(L"err"));
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                        state_->ownGroup ? CREATE_NEW_PROCESS_GROUP : 0, nullptr, nullptr, &startup,
                        &state_->process)) {
        state_->process = {};
    }
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
}

ChildProcess::~ChildProcess() {
    if (state_->process.hProcess == nullptr) return;
    if (!HasEnded()) TerminateProcess(state_->process.hProcess, 1);
    WaitForSingleObject(state_->process.hProcess, INFINITE);
    CloseHandle(state_->process.hProcess);
    CloseHandle(state_->process.hThread);
}

bool ChildProcess::HasEnded() {
    return state_->process.hProcess == nullptr ||
           WaitForSingleObject(state_->process.hProcess, 0) == WAIT_OBJECT_0;
}

bool ChildProcess::Interrupt() {
    if (state_->ownGroup) return GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, state_->process.dwProcessId) != 0;
    return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
}

ProgramResult ChildProcess::Wait() {
    ProgramResult result;
    if (state_->process.hProcess != nullptr) {
        DWORD status = 0;
        WaitForSingleObject(state_->process.hProcess, INFINITE);
        if (GetExitCodeProcess(state_->process.hProcess, &status))
            result.exitStatus = static_cast<int>(status);
    }
    result.out = state_->Output(L"out");
    result.err = state_->Output(L"err");
    return result;
}

}  // namespace skyvault::test
