// Soft coloured blobs: points floating in the cube pull at every pixel, and the sum picks a palette colour.
#pragma once

#include <cstddef>

#include "projection/layout_requests.h"

namespace skyvault {

/// Replaces the six faces. "BlobsForceFields" points of strength "BlobsPower", colours along the palette
/// picture's diagonal; without a readable picture everything is red. CannotOpen, and nothing changed, without
/// a path.
Outcome GenerateBlobs(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// The field of every pixel is kept between the two passes when it takes no more bytes than this: enough
/// for faces of 8192 × 8192. With too little of it the field is worked out twice.
inline constexpr std::size_t kMostFieldBytes = std::size_t{2} << 30;
Outcome GenerateBlobs(const ImportRequest& request, Feedback& feedback, Panorama& panorama,
                      std::size_t mostFieldBytes);

}  // namespace skyvault
