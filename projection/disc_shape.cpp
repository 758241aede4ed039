#include "projection/disc_shape.h"

#include "projection/face_import.h"
#include "projection/square_export.h"

namespace skyvault {

bool ImportDisc(Panorama& panorama, const std::wstring& path, DiscKernels::Pixels pixels) {
    const Image picture = LoadLayoutPicture(panorama, path);
    if (!picture.IsValid()) return false;
    CreateFaces(panorama, 2 * picture.width, picture.format, [&](CubeFace which, Image& face) {
        FillFaceByDirection(
            which, face, picture,
            [&](const DirectionBlock& block, int count, std::int32_t* columns, std::int32_t* rows) {
                pixels(block, count, picture.width, picture.height, columns, rows);
            });
    });
    return true;
}

LayoutGrid DiscGrid(std::uint32_t size, DiscKernels::Directions directions) {
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

bool ExportDisc(Panorama& panorama, const std::wstring& path, DiscKernels::Directions directions,
                std::wstring& infoLog) {
    return ExportSquare(
        panorama, path, [=](std::uint32_t size) { return DiscGrid(size, directions); }, infoLog);
}

}  // namespace skyvault
