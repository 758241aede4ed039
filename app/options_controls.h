// Which control of the options dialog edits which setting.
#pragma once

#include <windows.h>

#include <string>

#include "settings/app_state.h"

namespace skyvault {

/// Fills the lists and limits the texts; once per dialog.
void SetUpOptionsControls(HWND dialog);

/// Shows the settings in the controls. A list shows nothing when its setting is none of its items.
void ShowInControls(HWND dialog, const AppState& settings);

/// Reads every control back. Numbers are not checked, and what is no number is 0; a list without a choice
/// leaves its setting as it is.
void ReadFromControls(HWND dialog, AppState& settings);

/// The control's whole text.
std::wstring TextOfControl(HWND dialog, int id);

}  // namespace skyvault
