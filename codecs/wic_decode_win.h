// The part of decoding through WIC that stands on its own.
#pragma once

#include "codecs/wic_formats_win.h"

namespace skyvault {

/// Fills the picture's pixels from `whole` at once; when that fails, row by row from `rows`, where the
/// first failing row ends it. image: valid, in the sources' pixel format.
bool CopyWicPixels(IWICBitmapSource& whole, IWICBitmapSource& rows, Image& image);

}  // namespace skyvault
