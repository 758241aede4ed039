// Pixels of BMP files in runs: RLE8 and RLE4.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "image/image.h"

namespace skyvault {

/// The next byte of the file; negative at its end.
using NextByte = std::function<int()>;

/// Runs to rows of an Rgba8 picture, bottom row first. bits: 8 or 4. palette: 256 entries as pixels are in
/// memory; pixels that no code tells have the first. False for codes that leave the picture and for files
/// that end before it does.
bool ReadBmpRuns(const NextByte& next, std::uint32_t bits, std::span<const std::uint32_t> palette,
                 Image& image);

}  // namespace skyvault
