// This process among those of the machine.
#pragma once

#include <cstdint>
#include <string>

namespace skyvault {

std::uint32_t ProcessId();

/// False when no process of this machine has the number any more.
bool ProcessRuns(std::uint32_t id);

/// Tells apart the machines, and the containers, in which one number means different processes: they may
/// share a folder.
std::string ProcessDomain();

}  // namespace skyvault
