// Pictures as Direct2D takes them.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace skyvault {

/// The picture in Rgba8 with its colours multiplied by alpha, at most `limit` pixels wide and high (larger
/// ones are averaged down, proportions kept). Empty for an invalid picture and without memory.
Image ToScreenPicture(const Image& picture, std::uint32_t limit);

/// The picture made smaller by averaging so that it fits a rectangle of width × height; both positive.
/// Empty when it fits already, and without memory.
Image ReducedToFit(const Image& picture, float width, float height);

}  // namespace skyvault
