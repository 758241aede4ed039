#include <windows.h>

#include <array>

#include "platform/process.h"
#include "platform/utf8.h"

namespace skyvault {

std::uint32_t ProcessId() {
    return GetCurrentProcessId();
}

bool ProcessRuns(std::uint32_t id) {
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id);
    // What may not be opened runs; a number that nobody has is an invalid parameter.
    if (process == nullptr) return GetLastError() != ERROR_INVALID_PARAMETER;
    const bool runs = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return runs;
}

std::string ProcessDomain() {
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD length = static_cast<DWORD>(name.size());
    return GetComputerNameW(name.data(), &length) ? ToUtf8({name.data(), length}) : std::string();
}

}  // namespace skyvault
