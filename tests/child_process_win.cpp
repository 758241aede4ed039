#include <windows.h>

#include "tests/child_process.h"

namespace skyvault::test {
namespace {

HANDLE CreateInheritable(const std::wstring& path) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool madeOwnConsole = false;

/// Ctrl+C needs a console, and tests run from a script may have none. Everything on the one made here is
/// sent the key, so this process is deaf to it.
void MakeOwnConsole() {
    FreeConsole();
    SetConsoleCtrlHandler([](DWORD) -> BOOL { return TRUE; }, TRUE);
    madeOwnConsole = AllocConsole() != 0;
}

}  // namespace

ChildProcess::ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments,
                           bool interruptible) {
    // No argument of a test holds a quote or ends in a backslash.
    std::wstring line = L"\"" + program + L"\"";
    for (const std::wstring& argument : arguments) line += L" \"" + argument + L"\"";
    if (interruptible && GetConsoleCP() == 0) MakeOwnConsole();
    // In a group of its own on a console that others share: nothing else shall be interrupted.
    const DWORD group = interruptible && !madeOwnConsole ? CREATE_NEW_PROCESS_GROUP : 0;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = CreateInheritable(folder_ / L"out");
    startup.hStdError = CreateInheritable(folder_ / L"err");
    PROCESS_INFORMATION process{};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, group, nullptr, nullptr,
                       &startup, &process)) {
        CloseHandle(process.hThread);
        process_ = reinterpret_cast<std::intptr_t>(process.hProcess);
    }
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
}

ChildProcess::~ChildProcess() {
    if (HasEnded()) return;
    TerminateProcess(reinterpret_cast<HANDLE>(process_), 1);
    HasEnded(true);
}

bool ChildProcess::HasEnded(bool wait) {
    const auto process = reinterpret_cast<HANDLE>(process_);
    if (process_ != 0 && WaitForSingleObject(process, wait ? INFINITE : 0) == WAIT_OBJECT_0) {
        DWORD status = 0;
        if (GetExitCodeProcess(process, &status)) exitStatus_ = static_cast<int>(status);
        CloseHandle(process);
        process_ = 0;
    }
    return process_ == 0;
}

bool ChildProcess::Interrupt() {
    if (madeOwnConsole) return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
    const DWORD group = GetProcessId(reinterpret_cast<HANDLE>(process_));
    return process_ != 0 && GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, group) != 0;
}

}  // namespace skyvault::test
