// Blocks of 4 × 4 pixels encoded as BC1.
#pragma once

#include <cstddef>

#include "codecs/block_decode_builtin.h"

namespace skyvault {

/// Pixels of alpha below 128 become transparent black, the others opaque. block: 8 bytes.
void EncodeBc1Block(const BlockPixels& pixels, std::byte* block);

}  // namespace skyvault
