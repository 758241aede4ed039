#include <unistd.h>

#include "platform/memory_budget.h"

namespace skyvault {

std::uint64_t MachineMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES), pageBytes = sysconf(_SC_PAGESIZE);
    return pages > 0 && pageBytes > 0
               ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageBytes)
               : 0;
}

}  // namespace skyvault
