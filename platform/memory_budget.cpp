#include "platform/memory_budget.h"

#include <atomic>
#include <limits>

namespace skyvault {
namespace {

std::atomic<std::uint64_t> budget{0};

}  // namespace

std::uint64_t MemoryBudget() {
    const std::uint64_t set = budget;
    if (set != 0) return set;
    static const std::uint64_t machine = MachineMemory();
    return machine != 0 ? machine / 4 * 3 : std::numeric_limits<std::uint64_t>::max();
}

Outcome WithinMemoryBudget(const std::wstring& file, std::uint64_t bytes) {
    const std::uint64_t allowed = MemoryBudget();
    if (bytes <= allowed) return {};
    Outcome outcome = Failure(Reason::NeedsMemory, file);
    outcome.bytesNeeded = bytes;
    outcome.bytesAllowed = allowed;
    return outcome;
}

void SetMemoryBudget(std::uint64_t bytes) {
    budget = bytes;
}

}  // namespace skyvault
