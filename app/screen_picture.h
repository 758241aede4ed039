// Pictures as Direct2D takes them.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace skyvault {

/// Makes `result` the picture in Rgba8 with its colours multiplied by alpha, at most `limit` pixels wide and
/// high (larger ones are averaged down, proportions kept). A result of that size already keeps its memory:
/// fresh memory costs more than the conversion. False for an invalid picture and without memory.
bool ToScreenPicture(const Image& picture, std::uint32_t limit, Image& result);

/// The picture made smaller by averaging so that it fits a rectangle of width × height; both positive.
/// Empty when it fits already, and without memory.
Image ReducedToFit(const Image& picture, float width, float height);

}  // namespace skyvault
