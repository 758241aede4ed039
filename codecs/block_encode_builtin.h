// Blocks of 4 × 4 pixels encoded.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/block_decode_builtin.h"

namespace skyvault {

/// Pixels of alpha below 128 become transparent black, the others opaque. block: 8 bytes.
void EncodeBc1Block(const BlockPixels& pixels, std::byte* block);

/// 16 bytes: BC4's alpha, then BC1's colours, all of them opaque.
void EncodeBc3Block(const BlockPixels& pixels, std::byte* block);

/// 16 bytes. Opaque pixels stay opaque, a block of one colour keeps it exactly.
void EncodeBc7Block(const BlockPixels& pixels, std::byte* block);

/// As BlockPixels, in the bits of halves.
using BlockHalves = std::array<std::uint16_t, 64>;

/// 16 bytes of unsigned BC6H: alpha is dropped, below 0 becomes 0, infinity the largest half, NaN 0.
void EncodeBc6hBlock(const BlockHalves& pixels, std::byte* block);

}  // namespace skyvault
