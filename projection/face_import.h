// Building the six faces out of a layout's picture, for the imports whose faces are not simply cut out.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "projection/layout_requests.h"
#include "projection/row_kernels.h"

namespace skyvault {

/// The picture in the file; what of it could not be kept is told.
Outcome LoadAndTell(const ImportRequest& request, Feedback& feedback, Image& picture);

/// The picture of a layout, composited over the background colour unless "Transparency" is on.
Outcome LoadLayoutPicture(const ImportRequest& request, Feedback& feedback, Image& picture);

/// Makes faceSize × faceSize pictures of the six faces, one after the other, and hands each to `fill`. A face
/// without memory stays empty and is not filled (NoMemory). Progress: "Creating cube faces...". Sets the
/// panorama's faceSize.
Outcome CreateFaces(Panorama& panorama, std::uint32_t faceSize, PixelFormat format, Feedback& feedback,
                    const std::function<void(CubeFace which, Image& face)>& fill);

/// Which pixel of a picture each of the pixels first .. first + count − 1 of a face's row shows. Any whole
/// numbers: positions wrap around the picture's edges. Called from several threads at once.
using PixelLookup = std::function<void(std::uint32_t row, std::uint32_t first, int count,
                                       std::int32_t* columns, std::int32_t* rows)>;

/// Fills a face from a picture.
void FillFace(Image& face, const Image& picture, const PixelLookup& lookup);

/// Which pixel of a picture is seen along each of the unit directions of a block.
using DirectionLookup =
    std::function<void(const DirectionBlock& block, int count, std::int32_t* columns, std::int32_t* rows)>;

/// Fills a face from a picture by its pixels' directions.
void FillFaceByDirection(CubeFace which, Image& face, const Image& picture, const DirectionLookup& lookup);

}  // namespace skyvault
