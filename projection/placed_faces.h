// Square faces laid out in one picture: the grid of every layout that shows the cube's faces side by side.
#pragma once

#include <array>
#include <cstdint>

#include "platform/mvector.h"
#include "projection/cube_face.h"
#include "projection/render_layout.h"

namespace skyvault {

/// How the face's own pixels are spread over a square of `size` pixels.
enum class EdgeSpread {
    Repeat,    ///< pixel i shows face pixel ⌊N · i / size⌋
    EndToEnd,  ///< ⌊(N − 1) · i / (size − 1)⌋: the square's edges show the face's outermost pixels
};

enum class FaceTurn { Upright, HalfTurn, MirroredLeftToRight };

/// Where a face lies: its upper left corner, in the picture's pixels or in cells of a layout's table.
struct PlacedFace {
    CubeFace face = CubeFace::Front;
    std::uint32_t left = 0, top = 0;
    FaceTurn turn = FaceTurn::Upright;
};

/// Six faces of one size, none over another. Every square shows pixels of the panorama's own grid of
/// faceSize, none averaged; their directions do not all meet the pixel they came from, so that of faces
/// written at their own size three quarters of the pixels move by one.
class PlacedFaces {
  public:
    std::array<PlacedFace, kFaceCount> places;

    /// size: edge of a square, ≥ 1. False without memory.
    bool Compute(std::uint32_t faceSize, std::uint32_t size, EdgeSpread spread);

    /// The grid of a picture that holds the squares. Refers to this object.
    LayoutGrid Grid(std::uint32_t width, std::uint32_t height) const;

  private:
    Coverage Directions(std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block,
                        std::uint8_t* inside) const;
    void FillRun(const PlacedFace& place, std::uint32_t column, std::uint32_t row, int count, float* x,
                 float* y, float* z) const;

    std::uint32_t size_ = 0;
    /// A source less than four pixels wide has no grid: every pixel looks along the zero vector.
    bool hasGrid_ = false;
    /// Positions on the face's edge of the square's pixels: as they are, seen from the face's far end, and
    /// in opposite order.
    MVector<float> forward_, turned_, mirrored_;
};

}  // namespace skyvault
