// Blocks of 4 × 4 pixels decoded: BC1 to BC5 and BC7.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/dds_container.h"

namespace skyvault {

/// Sixteen pixels, row by row from the top; red, green, blue, alpha of each.
using BlockPixels = std::array<std::uint8_t, 64>;

/// format: one of the block-compressed ones. block: 8 bytes of BC1 and BC4, 16 of the others. Any bytes
/// decode to something; a BC7 block of no mode is transparent black.
void DecodeBlock(DdsFormat format, const std::byte* block, BlockPixels& pixels);

/// BC7 alone.
void DecodeBc7Block(const std::byte* block, BlockPixels& pixels);

}  // namespace skyvault
