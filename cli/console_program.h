// The console program without its entry point, which differs between systems.
#pragma once

#include <string>
#include <vector>

namespace skyvault {

/// Runs one command line and gives the exit status. arguments: without the program's own name.
int RunConsoleProgram(const std::vector<std::wstring>& arguments);

/// Makes the process answer Ctrl+C, and being asked to end, by removing what is half-written and ending with
/// the status for it. A new process does not inherit that.
void WatchForInterrupts();

}  // namespace skyvault
