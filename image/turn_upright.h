// Turning a picture the way its photo's orientation asks for.
//
// EXIF counts: 1 upright; 2 mirrored left to right; 3 half a turn; 4 mirrored top to bottom; 5 mirrored at
// the diagonal from the top left; 6 to be turned to the right by a quarter; 7 mirrored at the other diagonal;
// 8 to be turned to the left by a quarter.
#pragma once

#include "image/image.h"

namespace skyvault {

/// Whether width and height change places.
constexpr bool SwapsSides(int orientation) {
    return orientation >= 5 && orientation <= 8;
}

/// Turns the picture; any other orientation than 2 .. 8 leaves it alone. False when invalid or without memory
/// for a copy, which only 5 .. 8 take; the picture then stays as it was.
bool TurnUpright(int orientation, Image& image);

}  // namespace skyvault
