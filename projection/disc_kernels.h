// The passes of the sphere map, the mirror ball and the heart, one table for every set of kernels
// (kernel_choice.h).
#pragma once

#include <cstdint>

#include "projection/row_kernels.h"

namespace skyvault {

/// Pixels first .. first + n − 1 of a row of a grid of size × size pixels, row 0 at the top.
struct SquareSpan {
    std::int32_t size = 0, row = 0, first = 0;
};

/// The Bonne projection with a standard parallel of 100°, whose outline is a heart.
struct HeartShape {
    static constexpr float kParallel = 1.7453293f;  ///< 100° in radians
    static constexpr float kCone = -0.17632699f;    ///< 1 / tan kParallel
    static constexpr float kWidth = 4.040308f, kHeight = 4.058762f;
    static constexpr float kLeft = 2.020586f;    ///< from the left edge to the axis
    static constexpr float kBelow = 3.3161261f;  ///< from the bottom edge to the origin
    static constexpr float kAbove = 0.742636f;   ///< from the origin to the top edge
};

struct DiscKernels {
    /// The directions of a span of a shape. inside[i] is 1 for the pixels within the shape and 0 for the
    /// others, whose directions may be anything. Gives the number of those within; when there are none,
    /// inside may be left unwritten.
    using Directions = int (*)(const SquareSpan& span, int n, DirectionBlock& block, std::uint8_t* inside);
    Directions sphereMapDirections, mirrorBallDirections, heartDirections;

    /// Which pixel of a shape's picture, width × height, is seen along each unit direction. Any whole
    /// numbers: positions wrap around the edges.
    using Pixels = void (*)(const DirectionBlock& block, int n, std::uint32_t width, std::uint32_t height,
                            std::int32_t* columns, std::int32_t* rows);
    Pixels sphereMapPixels, mirrorBallPixels, heartPixels;
};

SKYVAULT_KERNEL_TABLE(DiscKernels, DiscPasses)

}  // namespace skyvault
