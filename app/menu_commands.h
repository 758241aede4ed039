// From keys to menu commands, and the menu commands that are the window's own.
#pragma once

#include <windows.h>

#include <cstdint>

#include "app/file_dialogs.h"
#include "session/session.h"

namespace skyvault {

/// The menu command a key stands for, alone or with Ctrl held; 0 for keys that stand for none. Every key does
/// exactly what its menu item does.
std::uint16_t CommandOfKey(WPARAM virtualKey, bool controlHeld);
/// The same for typed characters.
std::uint16_t CommandOfCharacter(WPARAM character);

/// Runs a menu command of the session or of the window; unknown numbers do nothing. The file dialogs are for
/// the window's own dialogs.
void RunMenuCommand(HWND window, HINSTANCE instance, Session& session, const FileDialogs& fileDialogs,
                    std::uint16_t command);

}  // namespace skyvault
