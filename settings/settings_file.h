// The settings file: read once at start-up, written once at exit.
#pragma once

#include <string>

#include "platform/feedback.h"
#include "settings/app_state.h"

namespace skyvault {

/// ApplicationDataFolder() and in it Skyvault.txt. A Skyvault.ini, or else a Skyvault.txt, found in
/// `programFolder` is moved there first; a file already there is never replaced by the move.
std::wstring SettingsPath(const std::wstring& programFolder);

/// Fills the record from the file; a missing file, key or value leaves what is there. Sets settingsLoaded
/// once the file is open. The window rectangle is fitted to the virtual screen.
void LoadSettings(AppState& state, const std::wstring& path, const ScreenRect& virtualScreen);

/// Writes the file (UTF-16), unless one is there that could not be opened in this run. On failure an error
/// message names the path, and an older file stays whole.
bool SaveSettings(const AppState& state, const std::wstring& path, Feedback& feedback);

}  // namespace skyvault
