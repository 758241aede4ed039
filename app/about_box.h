// The about box: the program's picture, name and version, and the way to its help pages.
#pragma once

#include <windows.h>

namespace skyvault {

/// Shows the box until it is closed.
void ShowAboutBox(HINSTANCE instance, HWND owner);

}  // namespace skyvault
