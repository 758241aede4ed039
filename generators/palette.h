// Colours out of the palette picture a generator is given.
#pragma once

#include <span>

#include "image/image.h"
#include "projection/layout_requests.h"

namespace skyvault {

/// The picture a generator is given. PictureMissing when it cannot be read, which every generator does
/// without and passes on.
Outcome ReadPalette(const ImportRequest& request, Image& picture);

/// How a palette runs along a picture's main diagonal; n entries, picture W × H.
enum class Diagonal {
    ToCorner,  ///< entry k at (k · (W − 1) / (n − 1), k · (H − 1) / (n − 1)): the last is the last pixel
    EvenShares,  ///< entry k at (k · W / n, k · H / n)
};

/// Fills `colours` (two or more) from the picture's diagonal, all four channels as they are. False, and
/// nothing filled, for a picture that is not valid.
bool DiagonalPalette(const Image& picture, Diagonal rule, std::span<Color8> colours);

/// A pixel of a valid picture: a random column, then a random row.
Color8 RandomPixel(const Image& picture);

}  // namespace skyvault
