// The pixels of one frame of a GIF file.
#pragma once

#include <cstddef>
#include <span>

#include "codecs/gif_frames.h"
#include "image/image.h"

namespace skyvault {

/// image: Rgba8, of the frame's size. False when the codes end before the frame does, or are none.
bool ReadGifPixels(std::span<const std::byte> file, const GifFrame& frame, Image& image);

}  // namespace skyvault
