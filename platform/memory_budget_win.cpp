#include <windows.h>

#include "platform/memory_budget.h"

namespace skyvault {

std::uint64_t MachineMemory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? status.ullTotalPhys : 0;
}

}  // namespace skyvault
