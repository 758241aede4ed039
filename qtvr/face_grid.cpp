#include "qtvr/face_grid.h"

#include <algorithm>
#include <cassert>

#include "platform/debug_line.h"

namespace skyvault {

namespace {

/// A point of the cube's surface, coordinates −N .. N.
struct CubePoint {
    int x, y, z;
    friend bool operator==(const CubePoint&, const CubePoint&) = default;
};

/// u and v count cells rightwards and downwards from the face's top left corner, 0..N.
CubePoint PointOnFace(CubeFace face, int n, int u, int v) {
    const int right = 2 * u - n, down = 2 * v - n;
    switch (face) {
        case CubeFace::Front:
            return {right, -down, n};
        case CubeFace::Right:
            return {n, -down, -right};
        case CubeFace::Back:
            return {-right, -down, -n};
        case CubeFace::Left:
            return {-n, -down, right};
        case CubeFace::Top:
            return {right, n, down};
        case CubeFace::Bottom:
            return {right, -n, -down};
    }
    return {};
}

/// The two ends of an edge, clockwise.
struct EdgePoints {
    CubePoint from, to;
};

EdgePoints EdgeOf(const FaceCell& cell, int n, int edge) {
    constexpr int kCornerColumn[] = {0, 1, 1, 0}, kCornerRow[] = {0, 0, 1, 1};
    const auto corner = [&](int k) {
        return PointOnFace(cell.face, n, cell.column + kCornerColumn[k], cell.row + kCornerRow[k]);
    };
    return {corner(edge), corner((edge + 1) % 4)};
}

bool SameEdge(const EdgePoints& a, const EdgePoints& b) {
    return (a.from == b.from && a.to == b.to) || (a.from == b.to && a.to == b.from);
}

CellEdge EdgeAcross(const FaceGrid& grid, int cell, int edge) {
    const int n = grid.tilesPerSide;
    const EdgePoints own = EdgeOf(grid.cells[static_cast<std::size_t>(cell)], n, edge);
    for (int other = 0; other < grid.cellCount; ++other) {
        if (other == cell) continue;
        for (int k = 0; k < 4; ++k) {
            if (SameEdge(own, EdgeOf(grid.cells[static_cast<std::size_t>(other)], n, k))) return {other, k};
        }
    }
    return {};
}

}  // namespace

int TilesPerSide(int tileCount) {
    for (int n = 1; n <= kMostTilesPerSide; ++n) {
        if (tileCount == kFaceCount * n * n) return n;
    }
    return 0;
}

void BuildFaceGrid(int tilesPerSide, FaceGrid& grid) {
    assert(tilesPerSide >= 1 && tilesPerSide <= kMostTilesPerSide);
    const int n = tilesPerSide;
    grid = {};
    grid.tilesPerSide = n;
    for (int b = 0; b < 3 * n; ++b) {
        const bool sides = b >= n && b < 2 * n;
        for (int a = 0; a < (sides ? 4 * n : n); ++a) {
            FaceCell& cell = grid.cells[static_cast<std::size_t>(grid.cellCount++)];
            cell.face = b < n ? CubeFace::Top : b >= 2 * n ? CubeFace::Bottom : static_cast<CubeFace>(a / n);
            cell.column = a % n;
            cell.row = b % n;
            cell.centerX = 2 * cell.column - (n - 1);
            cell.centerY = -(2 * cell.row - (n - 1));
        }
    }
    bool whole = true;
    for (int c = 0; c < grid.cellCount; ++c) {
        for (int k = 0; k < 4; ++k) {
            CellEdge& across =
                grid.cells[static_cast<std::size_t>(c)].neighbours[static_cast<std::size_t>(k)];
            across = EdgeAcross(grid, c, k);
            if (across.cell < 0) whole = false;
        }
    }
    if (!whole) DebugLine(L"WARNING: datastruct is not valid...\n");
}

}  // namespace skyvault
