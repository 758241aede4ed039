// The settings file: read once at start-up, written once at exit.
#pragma once

#include <string>

#include "platform/outcome.h"
#include "settings/app_state.h"
#include "settings/text_file.h"

namespace skyvault {

/// ApplicationDataFolder() and in it Skyvault.txt. Settings left in `programFolder` by an older version are
/// moved there first (MoveOlderSettings).
std::wstring SettingsPath(const std::wstring& programFolder);

/// Moves a Skyvault.ini, or else a Skyvault.txt, found in `programFolder` to `path`; a file already there
/// is never replaced.
void MoveOlderSettings(const std::wstring& programFolder, const std::wstring& path);

/// Fills the record from the file; a missing file or key leaves what is there, a missing or malformed value
/// is 0, false or empty. The later of two lines with the same key wins. Sets settingsLoaded when the file
/// could be read. A window rectangle in the file is fitted to the virtual screen.
void LoadSettings(AppState& state, const std::wstring& path, const ScreenRect& virtualScreen);

/// The same from a file that is open already; settingsLoaded stays as it is.
void ReadSettings(AppState& state, TextFileReader& file, const ScreenRect& virtualScreen);

/// What SaveSettings writes.
TextFileWriter WrittenSettings(const AppState& state);

/// Writes the file (UTF-16), unless one is there that was not read in this run. When writing fails
/// (CannotSaveSettings) an older file stays whole.
Outcome SaveSettings(const AppState& state, const std::wstring& path);

}  // namespace skyvault
