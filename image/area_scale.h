// Resizing by area: a new pixel is the mean of what lies under it, parts of pixels counted as such.
//
// This is for decoding a picture smaller than it is stored; views and exports sample and average in their
// own ways.
#pragma once

#include "image/image.h"

namespace skyvault {

/// The picture in another size, in the same format; alpha is averaged like any other channel. Integer
/// channels are rounded to nearest. Empty when the size is, or without memory.
Image ScaleByArea(const Image& source, std::uint32_t width, std::uint32_t height);

/// Makes a decoded picture fit into the target (FitInto); a target without width or height changes nothing.
/// False when nothing is left of the picture, or without memory.
bool ScaleInto(const PictureSize& target, Image& image);

}  // namespace skyvault
