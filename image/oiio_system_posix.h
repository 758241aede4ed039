// OpenImageIO set up for this program, and its names for our kinds and formats.
#pragma once

#include <OpenImageIO/imageio.h>

#include "image/pixel_format.h"

namespace skyvault {

/// To be called before anything else of OpenImageIO; does its work once.
void PrepareOiio();

/// What one channel of the format is to OpenImageIO.
OIIO::TypeDesc OiioChannelType(PixelFormat format);

/// 1, 3 or 4.
int ChannelCount(PixelFormat format);

}  // namespace skyvault
