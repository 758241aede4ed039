// TIFF files written through libtiff: LZW with differences, alpha that colours are not multiplied by. Equal
// pictures give equal files.
#pragma once

#include <string>

#include "image/image.h"

namespace skyvault {

/// Writes the format as it is. False on any failure; a broken file may then be left.
bool WriteTiff(const Image& image, const std::wstring& path, PixelFormat format);

}  // namespace skyvault
