// How the grids of the six faces of a cube hang together along its twelve edges and eight corners.
//
// A face's grid has cells + 1 points a side, from edge to edge, so that the points of an edge are in two
// grids and a corner is in three. Nothing is written down but where each face's first point is and where its
// columns and rows run to (projection/cube_face.h); the rest follows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace skyvault {

/// A place in or on the cube, 0..1 each way: +X right, +Y up, +Z front. Or a step from one to another.
struct CubePoint {
    int x = 0, y = 0, z = 0;
    friend bool operator==(const CubePoint&, const CubePoint&) = default;
};

/// A face's first point and what a whole row or column of it leads along.
struct FaceLattice {
    CubePoint origin, perColumn, perRow;

    CubePoint At(int column, int row) const {
        return {origin.x + column * perColumn.x + row * perRow.x,
                origin.y + column * perColumn.y + row * perRow.y,
                origin.z + column * perColumn.z + row * perRow.z};
    }
};

/// face: 0..5, in the order of CubeFace.
const FaceLattice& LatticeOf(int face);

/// One of a face's four sides, walked from one corner to another.
struct GridSide {
    int face = 0;
    bool vertical = false;  ///< its left or right side; else its top or bottom one
    bool far = false;       ///< the right or bottom one
    bool backward = false;  ///< walked against the columns' or rows' numbers
};

/// An edge of the cube as the two faces see it; both sides are walked the same way.
struct CubeEdge {
    std::array<GridSide, 2> sides;
};
const std::array<CubeEdge, 12>& CubeEdges();

/// A corner of a face.
struct GridCorner {
    int face = 0;
    bool right = false, bottom = false;
};
using CubeCorner = std::array<GridCorner, 3>;
const std::array<CubeCorner, 8>& CubeCorners();

/// Where the points along a side are in its face's grid.
class GridLine {
  public:
    GridLine(const GridSide& side, std::uint32_t cells) : side_(side), cells_(cells) {}

    /// Index of the point `along` steps along the side and `inward` steps into the face.
    std::size_t Index(std::uint32_t along, std::uint32_t inward) const {
        return Row(along, inward) * (std::size_t{cells_} + 1) + Column(along, inward);
    }
    std::uint32_t Column(std::uint32_t along, std::uint32_t inward = 0) const {
        return side_.vertical ? Across(inward) : Along(along);
    }
    std::uint32_t Row(std::uint32_t along, std::uint32_t inward = 0) const {
        return side_.vertical ? Along(along) : Across(inward);
    }

  private:
    std::uint32_t Along(std::uint32_t along) const { return side_.backward ? cells_ - along : along; }
    std::uint32_t Across(std::uint32_t inward) const { return side_.far ? cells_ - inward : inward; }

    GridSide side_;
    std::uint32_t cells_;
};

}  // namespace skyvault
