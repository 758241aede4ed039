// The options dialog: export resolutions and flags, logo, background colour and the generators' parameters.
#pragma once

#include <windows.h>

#include "app/file_dialogs.h"
#include "settings/app_state.h"

namespace skyvault {

/// Shows the dialog until it is closed: IDOK, then the settings hold what its controls said, or IDCANCEL.
/// A chosen colour and "Reset all" change the settings at once and stand after Cancel too. COM must be
/// initialised.
INT_PTR ShowOptionsDialog(HINSTANCE instance, HWND owner, AppState& settings, const FileDialogs& fileDialogs);

}  // namespace skyvault
