// Soft coloured blobs: points floating in the cube pull at every pixel, and the sum picks a palette colour.
#pragma once

#include <cstddef>
#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// The field of every pixel is kept between the two passes when it takes no more bytes than this: enough
/// for faces of 8192 × 8192.
inline constexpr std::size_t kMostFieldBytes = std::size_t{2} << 30;

/// Replaces the six faces. "BlobsForceFields" points of strength "BlobsPower", colours along the palette
/// picture's diagonal; without a readable picture everything is red. False, and nothing changed, without a
/// path. mostFieldBytes: see above; with too little of it the field is worked out twice.
bool GenerateBlobs(Panorama& panorama, const std::wstring& palettePicturePath,
                   std::size_t mostFieldBytes = kMostFieldBytes);

}  // namespace skyvault
