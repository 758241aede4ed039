// Heights on the surface of a cube, rough as land is: the ground of the fractal planet.
//
// The lie of the land, down to squares of 1.4°, is a smooth function of the direction (sphere_waves.h), so
// that coasts do not bend where the faces' grids do. Finer detail is midpoint displacement: level by level a
// new point in the middle of every square and of every side of a square, at the mean of the four points
// around it and a random step up or down, and the steps are half as high at every level. Every point that was
// there before moves to where the smooth surface through its neighbours has it:
//
//      P───E───P      F  middle of a square      mean of its four corners P, and a step
//      │   │   │      E  middle of a side        mean of its two ends P and the two F beside it, and a step
//      E───F───E      P' old point               mean of the E around it and (P − mean of the F around it)/4
//      │   │   │
//      P───E───P
//
// Without the last rule the squares of the first levels would show as straight creases. With it (subdivision
// after Catmull and Clark) the surface without steps has no creases at all, the cube's corners included,
// where three squares meet instead of four.
//
// Each face has its own grid, and the rows and columns along the cube's edges are in both faces' grids. Their
// points see the neighbours in both faces, are worked out once and written twice, so that nothing of the cube
// shows in the heights.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/memory.h"
#include "projection/cube_face.h"

namespace skyvault {

class CubeHeights {
  public:
    /// How far along the building is, 0..1.
    using Report = std::function<void(float done)>;

    /// Makes the heights. cells: squares along an edge, a power of two, 1 .. kMostCells. roughness: how much
    /// of the small steps there is, 0 (none, gentle hills) .. 1. seed: a seed gives the same land whatever
    /// the number of cells, more of them only add detail; and for any number of threads. False without
    /// memory for them; there are no heights then.
    bool Build(std::uint32_t cells, float roughness, std::uint32_t seed, const Report& report = {});

    static constexpr std::uint32_t kMostCells = 65536;

    std::uint32_t Cells() const { return cells_; }

    /// Cells() + 1 heights from a face's left edge to its right one; row 0..Cells() from its top edge to its
    /// bottom one. Faces lie as in projection/cube_face.h.
    const float* Row(CubeFace face, std::uint32_t row) const {
        return Grid(static_cast<int>(face)) + row * Pitch();
    }

    /// Mean of all heights and standard deviation from it.
    struct Statistics {
        float mean = 0, deviation = 0;
    };
    Statistics Measure() const;

  private:
    std::size_t Pitch() const { return std::size_t{cells_} + 1; }
    std::size_t GridSize() const { return Pitch() * Pitch(); }
    float* Grid(int face) { return reinterpret_cast<float*>(heights_.get()) + GridSize() * face; }
    const float* Grid(int face) const {
        return reinterpret_cast<const float*>(heights_.get()) + GridSize() * face;
    }

    struct Level;
    /// The points `spacing` cells apart, out of waves; gives the level they stand for.
    int MakeLand(std::uint32_t spacing, float roughness, std::uint32_t seed);
    void SquareRow(const Level& level, int face, std::uint32_t row);
    void SideRow(const Level& level, int face, std::uint32_t row);
    void OldPointRow(const Level& level, int face, std::uint32_t row);
    void CubeEdgeSides(const Level& level);
    void CubeEdgeOldPoints(const Level& level);

    std::uint32_t cells_ = 0;
    ByteBuffer heights_;  ///< six grids of Pitch() × Pitch() floats
};

}  // namespace skyvault
