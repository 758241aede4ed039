// The batch processing dialog: a folder, its layout, and where to and as what it is to be written.
#pragma once

#include <windows.h>

#include "settings/app_state.h"

namespace skyvault {

/// Waits until the dialog is closed; Start runs the batch inside of it. Start stores what was chosen in the
/// settings (batch fields, import and export folder). 1: a batch was run; 2: cancelled.
INT_PTR ShowBatchDialog(HINSTANCE instance, HWND owner, AppState& settings);

}  // namespace skyvault
