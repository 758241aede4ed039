#include "projection/disc_layouts.h"

#include <cassert>

#include "projection/disc_kernels.h"
#include "projection/face_import.h"
#include "projection/square_export.h"

namespace skyvault {
namespace {

/// The passes that tell one shape from another.
struct DiscRow {
    PanoramaFormat format;
    DiscKernels::Directions DiscKernels::*directions;
    DiscKernels::Pixels DiscKernels::*pixels;
};

constexpr DiscRow kDiscs[] = {
    {PanoramaFormat::SphereMap, &DiscKernels::sphereMapDirections, &DiscKernels::sphereMapPixels},
    {PanoramaFormat::MirrorBall, &DiscKernels::mirrorBallDirections, &DiscKernels::mirrorBallPixels},
    {PanoramaFormat::Heart, &DiscKernels::heartDirections, &DiscKernels::heartPixels},
};

const DiscRow& RowOf(PanoramaFormat format) {
    const DiscRow* row = kDiscs;
    while (row->format != format) {
        ++row;
        assert(row != std::end(kDiscs));
    }
    return *row;
}

}  // namespace

Outcome ImportDisc(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    Image picture;
    Outcome loaded = LoadLayoutPicture(request, feedback, picture);
    if (!loaded.IsDone()) return loaded;
    const DiscKernels::Pixels pixels = DiscPasses().*RowOf(request.format).pixels;
    return CreateFaces(
        panorama, 2 * picture.width, picture.format, feedback, [&](CubeFace which, Image& face) {
            FillFaceByDirection(
                which, face, picture,
                [&](const DirectionBlock& block, int count, std::int32_t* columns, std::int32_t* rows) {
                    pixels(block, count, picture.width, picture.height, columns, rows);
                });
        });
}

LayoutGrid DiscGrid(PanoramaFormat shape, std::uint32_t size) {
    const DiscKernels::Directions directions = DiscPasses().*RowOf(shape).directions;
    return {
        size, size,
        [=](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block, std::uint8_t* inside) {
            const SquareSpan span{static_cast<std::int32_t>(size), static_cast<std::int32_t>(row),
                                  static_cast<std::int32_t>(first)};
            const int within = directions(span, count, block, inside);
            if (within == 0) return Coverage::None;
            return within == count ? Coverage::All : Coverage::Some;
        }};
}

Outcome RenderDisc(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                   Image& result) {
    return RenderSquare(
        panorama, request, feedback, [&](std::uint32_t size) { return DiscGrid(request.format, size); },
        result);
}

}  // namespace skyvault
