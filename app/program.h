// The whole desktop program, from start-up to the saved settings.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace skyvault {

/// Runs until the main window is closed. showCommand: as ShowWindow takes it. files: opened at first, as if
/// they had been dropped on the window. Returns the quit message's value; 0 when the window cannot be created
/// (nothing is saved then) or when start-up ends before the message loop.
int RunSkyvault(HINSTANCE instance, int showCommand, const std::vector<std::wstring>& files = {});

}  // namespace skyvault
