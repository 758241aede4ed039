// Box-average scaling, the program's only way to make a picture smaller.
//
// Transparent pixels never darken the colour of an edge: colours are averaged over the visible pixels of a
// box, alpha over all of them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "image/image.h"

namespace skyvault {

/// width, height: the size asked for, in pixels. keepAspect: fit inside that size instead. format: of the
/// result.
/// With average, every pixel is the mean of a box of k × k source pixels, k = ⌈max(source/result)⌉ within
/// 2..32; the same size copies. Without average the picture is cropped, or padded with transparent black,
/// and not scaled. Empty for an invalid source; invalid for a size of 0 or without memory.
Image ResizeImage(const Image& source, std::uint32_t width, std::uint32_t height, PixelFormat format,
                  bool average, bool keepAspect);

/// How a result's pixels map to boxes of a source.
struct BoxGrid {
    std::uint32_t width = 0, height = 0;  ///< of the result
    std::uint32_t box = 2;                ///< edge k
    /// How far a box reaches from row to row and column to column: 0 where the whole result is one pixel
    /// high or wide, then the first row or column counts k times.
    std::uint32_t rowStep = 1, columnStep = 1;
};

BoxGrid MakeBoxGrid(std::uint32_t sourceWidth, std::uint32_t sourceHeight, std::uint32_t width,
                    std::uint32_t height);

/// Row y of the average: grid.width pixels of `format` at destination.
void AverageRow(const Image& source, const BoxGrid& grid, std::uint32_t y, PixelFormat format,
                std::byte* destination);

}  // namespace skyvault
