// The console program without its entry point, which differs between systems.
#pragma once

#include <string>
#include <vector>

namespace skyvault {

/// Runs one command line and gives the exit status. arguments: without the program's own name.
int RunConsoleProgram(const std::vector<std::wstring>& arguments);

}  // namespace skyvault
