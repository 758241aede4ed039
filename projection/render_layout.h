// The one driver of every layout: rows of directions in, a picture out.
//
// The picture is built in bands of rows that may run on several cores, and within a band in tiles, so that
// neighbouring directions read neighbouring memory. A picture built at double size for antialiasing is
// averaged tile by tile: the doubled picture as a whole never exists.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/feedback.h"
#include "projection/panorama.h"
#include "projection/row_kernels.h"

namespace skyvault {

/// Which pixels of a block lie inside a layout's shape.
enum class Coverage { All, None, Some };

/// A layout is a pure function from pixels to directions.
struct LayoutGrid {
    /// Size in pixels of the grid the function works on.
    std::uint32_t width = 0, height = 0;

    /// Fills the block with the directions (length 1e-18 .. 1e18, or 0) of the pixels first .. first + count
    /// − 1 of a row, row 0 at the top, count ≤ kBlockSize. With Coverage::Some, inside[i] says which pixels
    /// count, and the directions of the others may be anything. Called from several threads at once.
    std::function<Coverage(std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block,
                           std::uint8_t* inside)>
        directions;

    /// The directions are defined as unit vectors, but given before they are any: the length is taken off
    /// with a rounding of its own, and only where that shows.
    bool toUnitLength = false;
};

struct RenderOptions {
    PixelFormat format = PixelFormat::None;  ///< of the result
    bool halve = false;  ///< average 2 × 2 pixels of the grid, whose sizes are even, into one
    /// Of the pixels outside the shape, and of a logo disc without a picture (projection/panorama.h).
    Color8 emptyColour;
    Feedback* feedback = nullptr;           ///< null: no progress is reported
    const wchar_t* progressText = nullptr;  ///< what the progress box says
};

/// Builds the picture into `result`, whose memory is used again when it fits. NoMemory leaves it empty.
Outcome RenderLayout(const Panorama& panorama, const LayoutGrid& grid, const RenderOptions& options,
                     Image& result);

}  // namespace skyvault
