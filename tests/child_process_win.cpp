#include <windows.h>

#include "tests/child_process.h"

namespace skyvault::test {
namespace {

HANDLE CreateInheritable(const std::wstring& path) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

ChildProcess::ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments,
                           bool interruptible) {
    // No argument of a test holds a quote or ends in a backslash.
    std::wstring line = L"\"" + program + L"\"";
    for (const std::wstring& argument : arguments) line += L" \"" + argument + L"\"";
    // An interruption needs a console, and tests run from a script may have none.
    if (interruptible && GetConsoleCP() == 0) AllocConsole();
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = CreateInheritable(folder_ / L"out");
    startup.hStdError = CreateInheritable(folder_ / L"err");
    // In a group of its own: nothing else shall be interrupted.
    PROCESS_INFORMATION process{};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                       interruptible ? CREATE_NEW_PROCESS_GROUP : 0, nullptr, nullptr, &startup, &process)) {
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
    const DWORD group = GetProcessId(reinterpret_cast<HANDLE>(process_));
    return process_ != 0 && GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, group) != 0;
}

}  // namespace skyvault::test
