// The pixels of a TIFF page, as a picture.
#pragma once

#include "codecs/tiff_page_posix.h"
#include "image/image.h"

namespace skyvault {

/// Reads all pixels into a picture of the page's size and format, strip by strip or tile by tile. False
/// without memory, and at the first that is damaged, as far as the library or the compression's own check
/// tells.
bool ReadTiffPixels(TiffSource& source, TIFF* tiff, const TiffPage& page, Image& image);

}  // namespace skyvault
