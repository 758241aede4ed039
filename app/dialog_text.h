// What is written in the controls of a dialog.
#pragma once

#include <windows.h>

#include <string>

namespace skyvault {

/// The control's whole text.
std::wstring TextOfControl(HWND dialog, int id);

}  // namespace skyvault
