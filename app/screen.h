// The screen as the window's placement needs it.
#pragma once

#include <windows.h>

#include "settings/app_state.h"

namespace skyvault {

/// The rectangle around all monitors.
ScreenRect VirtualScreen();

/// DefaultWindowRect of the primary screen.
ScreenRect DefaultWindowRectOfScreen();

/// DefaultAppState with the default window of the primary screen.
AppState DefaultSettingsOfScreen();

/// Pixels per 96th of an inch of the window's monitor: 1.0, 1.25, 1.5 …
float ScaleOf(HWND window);

/// Moves the window to the middle of its owner, inside the owner's monitor.
void CentreOverOwner(HWND window);

}  // namespace skyvault
