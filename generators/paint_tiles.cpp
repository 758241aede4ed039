#include "generators/paint_tiles.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "image/pixel_rows.h"

namespace skyvault {

void TileCanvas::Directions(const FaceRect& rect, DirectionBlock& directions) const {
    assert(std::uint64_t{rect.width} * rect.height <= kBlockSize);
    const int width = static_cast<int>(rect.width);
    float across[kBlockSize];
    for (int i = 0; i < width; ++i) across[i] = scale_(std::int64_t{rect.column} + i);
    int done = 0;
    for (std::uint32_t row = 0; row < rect.height; ++row, done += width) {
        FaceRowVectors(rect.face, across, scale_(std::int64_t{rect.row} + row), width, directions.x + done,
                       directions.y + done, directions.z + done);
    }
    Kernels().normalize(directions.x, directions.y, directions.z, done);
}

void TileCanvas::CornersAndMiddle(const FaceRect& rect, float* x, float* y, float* z) const {
    const float left = scale_(rect.column), right = scale_(std::int64_t{rect.column} + rect.width - 1);
    const float top = scale_(rect.row), bottom = scale_(std::int64_t{rect.row} + rect.height - 1);
    const float corners[2] = {left, right};
    const float middle = (left + right) * 0.5f;
    FaceRowVectors(rect.face, corners, top, 2, x, y, z);
    FaceRowVectors(rect.face, corners, bottom, 2, x + 2, y + 2, z + 2);
    FaceRowVectors(rect.face, &middle, (top + bottom) * 0.5f, 1, x + 4, y + 4, z + 4);
    Kernels().normalize(x, y, z, 5);
}

void TileCanvas::Fill(const FaceRect& rect, const Color8& colour) {
    assert(rect.width <= kTileSize);
    if (rect.width == 0 || rect.height == 0) return;
    Color8 colours[kTileSize];
    std::fill_n(colours, rect.width, colour);
    FaceRect row = rect;
    row.height = 1;
    Store(row, colours);
    const std::byte* first = Address(rect, 0);
    const std::size_t bytes = std::size_t{rect.width} * BytesPerPixel(face_.format);
    for (std::uint32_t i = 1; i < rect.height; ++i) std::memcpy(Address(rect, i), first, bytes);
}

void TileCanvas::Store(const FaceRect& rect, const Color8* colours) {
    for (std::uint32_t row = 0; row < rect.height; ++row, colours += rect.width) {
        ConvertRow(PixelFormat::Rgba8, reinterpret_cast<const std::byte*>(colours), face_.format,
                   Address(rect, row), rect.width);
    }
}

std::byte* TileCanvas::Address(const FaceRect& rect, std::uint32_t row) {
    return face_.Row(rect.row + row) + std::size_t{rect.column} * BytesPerPixel(face_.format);
}

void PaintFaceTiles(const FacePainting& painting, const PaintTile& paint, ProgressShare share) {
    MakeFaces(painting);
    const std::uint32_t size = painting.size;
    CubeFaces& faces = painting.panorama.faces;
    const std::uint32_t tilesPerEdge = (size + kTileSize - 1) / kTileSize;
    const std::uint32_t tilesPerFace = tilesPerEdge * tilesPerEdge;
    const int tileCount = static_cast<int>(tilesPerFace * kFaceCount);
    PaintBands(painting, tileCount, true, share, [&](int number) {
        const std::uint32_t face = static_cast<std::uint32_t>(number) / tilesPerFace;
        const std::uint32_t inFace = static_cast<std::uint32_t>(number) % tilesPerFace;
        if (!faces[face].IsValid()) return;
        FaceRect tile;
        tile.face = static_cast<CubeFace>(face);
        tile.column = inFace % tilesPerEdge * kTileSize;
        tile.row = inFace / tilesPerEdge * kTileSize;
        tile.width = std::min(kTileSize, size - tile.column);
        tile.height = std::min(kTileSize, size - tile.row);
        TileCanvas canvas(faces[face], size);
        paint(tile, canvas);
    });
}

}  // namespace skyvault
