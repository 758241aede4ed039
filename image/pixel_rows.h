// What pictures do to whole rows of pixels in place.
#pragma once

#include <cstddef>

#include "image/colour.h"

namespace skyvault {

/// Exchanges the first and third channel of every pixel; formats with three or four channels only.
void SwapRedAndBlueRow(PixelFormat format, std::byte* row, std::size_t count);

/// Composites every pixel over an opaque background and makes it opaque; formats with alpha only.
void FlattenRow(PixelFormat format, std::byte* row, std::size_t count, const Color8& background);

/// Gives every pixel full alpha and leaves its colour; formats with alpha only.
void MakeRowOpaque(PixelFormat format, std::byte* row, std::size_t count);

}  // namespace skyvault
