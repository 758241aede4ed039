// A picture in at most 256 colours, for files that have a palette.
//
// A picture that has no more colours keeps them exactly. Otherwise the colours are chosen by cutting the
// picture's own colours into boxes, the widest spread first, and the error of each pixel is passed on to
// its neighbours (Floyd and Steinberg's weights, every other row from right to left).
#pragma once

#include <cstdint>
#include <vector>

#include "image/image.h"

namespace skyvault {

struct IndexedPicture {
    std::vector<Color8> colours;  ///< 1 to 256, opaque but for the transparent one
    int transparent = -1;         ///< which colour is transparent; −1: none
    ByteBuffer indices;           ///< width × height, row by row
};

/// The picture as it would be in the wanted format, one of the nine. Pixels with an alpha below 128 become
/// transparent when that format has alpha. False without memory.
bool MakeIndexed(const Image& image, PixelFormat wanted, IndexedPicture& indexed);

}  // namespace skyvault
