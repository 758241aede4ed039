// A picture on the clipboard.
#pragma once

#include <windows.h>

#include "image/image.h"

namespace skyvault {

/// Puts the picture on the clipboard as a bitmap of 24 bits (CF_DIB), which every program takes; transparency
/// is left out. False for an invalid picture, without memory, and while another program holds the clipboard.
bool CopyPicture(HWND owner, const Image& picture);

}  // namespace skyvault
