#include "generators/cube_surface.h"

#include <cassert>

#include "projection/cube_face.h"

namespace skyvault {

namespace {

constexpr std::array<FaceLattice, kFaceCount> kLattices = {{
    {{0, 1, 1}, {1, 0, 0}, {0, -1, 0}},   // Front
    {{1, 1, 1}, {0, 0, -1}, {0, -1, 0}},  // Right
    {{1, 1, 0}, {-1, 0, 0}, {0, -1, 0}},  // Back
    {{0, 1, 0}, {0, 0, 1}, {0, -1, 0}},   // Left
    {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}},    // Top
    {{0, 0, 1}, {1, 0, 0}, {0, 0, -1}},   // Bottom
}};

/// Where walking along a side starts (or ends).
CubePoint EndOf(const GridSide& side, bool last) {
    const int along = last != side.backward ? 1 : 0;
    const int across = side.far ? 1 : 0;
    const FaceLattice& lattice = LatticeOf(side.face);
    return side.vertical ? lattice.At(across, along) : lattice.At(along, across);
}

std::array<CubeEdge, 12> FindEdges() {
    std::array<GridSide, 24> sides;
    for (int i = 0; i < 24; ++i) sides[i] = {i / 4, i % 4 >= 2, i % 2 == 1, false};
    std::array<CubeEdge, 12> edges;
    std::size_t found = 0;
    for (int i = 0; i < 24; ++i) {
        for (int j = i + 1; j < 24; ++j) {
            GridSide other = sides[j];
            for (const bool backward : {false, true}) {
                other.backward = backward;
                if (EndOf(sides[i], false) != EndOf(other, false)) continue;
                if (EndOf(sides[i], true) != EndOf(other, true)) continue;
                assert(found < edges.size());
                edges[found++].sides = {sides[i], other};
            }
        }
    }
    assert(found == edges.size());
    return edges;
}

std::array<CubeCorner, 8> FindCorners() {
    std::array<CubeCorner, 8> corners;
    for (int i = 0; i < 8; ++i) {
        const CubePoint point{i & 1, i >> 1 & 1, i >> 2 & 1};
        std::size_t found = 0;
        for (int place = 0; place < 24; ++place) {
            const int face = place / 4, column = place & 1, row = place >> 1 & 1;
            if (LatticeOf(face).At(column, row) != point) continue;
            corners[i][found++] = {face, column == 1, row == 1};
        }
        assert(found == 3);
    }
    return corners;
}

}  // namespace

const FaceLattice& LatticeOf(int face) {
    return kLattices[face];
}

const std::array<CubeEdge, 12>& CubeEdges() {
    static const std::array<CubeEdge, 12> edges = FindEdges();
    return edges;
}

const std::array<CubeCorner, 8>& CubeCorners() {
    static const std::array<CubeCorner, 8> corners = FindCorners();
    return corners;
}

}  // namespace skyvault
