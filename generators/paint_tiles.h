// Faces painted in squares instead of rows, for generators that know much about a whole square at once: what
// is one colour is filled without looking at its pixels.
#pragma once

#include <cstdint>
#include <functional>

#include "generators/paint_faces.h"
#include "projection/face_rows.h"

namespace skyvault {

/// A rectangle of pixels of one face.
struct FaceRect {
    CubeFace face = CubeFace::Front;
    std::uint32_t column = 0, row = 0, width = 0, height = 0;
};

/// The edge of the squares; those at the right and lower edges of a face may be smaller.
inline constexpr std::uint32_t kTileSize = 256;

/// What the painter of a square paints on.
class TileCanvas {
  public:
    TileCanvas(Image& face, std::uint32_t faceSize)
        : face_(face), scale_(static_cast<std::int32_t>(faceSize)) {}

    /// The unit directions of a rectangle of at most kBlockSize pixels, row by row.
    void Directions(const FaceRect& rect, DirectionBlock& directions) const;
    /// The unit directions of a rectangle's four corner pixels and of its middle, in this order.
    void CornersAndMiddle(const FaceRect& rect, float* x, float* y, float* z) const;
    /// A rectangle of one colour, at most kTileSize wide.
    void Fill(const FaceRect& rect, const Color8& colour);
    /// A rectangle pixel by pixel, row by row.
    void Store(const FaceRect& rect, const Color8* colours);

  private:
    std::byte* Address(const FaceRect& rect, std::uint32_t row);

    Image& face_;
    EdgeScale scale_;
};

/// Paints a square through the canvas, every pixel of it. Called from several threads at once: only for
/// reading what the generator prepared.
using PaintTile = std::function<void(const FaceRect& tile, TileCanvas& canvas)>;

/// PaintFaces in squares: the same faces, formats, memory rules and progress.
void PaintFaceTiles(const FacePainting& painting, const PaintTile& paint, ProgressShare share = {});

}  // namespace skyvault
