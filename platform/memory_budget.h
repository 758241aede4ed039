// How much memory pictures may take: asked before a picture is decoded, since no file is to be believed about
// its size.
#pragma once

#include <cstdint>
#include <string>

#include "platform/outcome.h"

namespace skyvault {

/// In bytes. Three quarters of the machine's memory unless set otherwise.
std::uint64_t MemoryBudget();

/// 0: back to the default.
void SetMemoryBudget(std::uint64_t bytes);

/// Done, or NeedsMemory of the file when reading it takes more than the budget.
Outcome WithinMemoryBudget(const std::wstring& file, std::uint64_t bytes);

/// What the machine has, in bytes; 0 when the system does not tell.
std::uint64_t MachineMemory();

}  // namespace skyvault
