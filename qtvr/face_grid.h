// The tiles of a cubic movie's six faces: the cells they lie in, and which cells touch along which edge.
//
// Each face is N × N cells. Unfolded, with A and B counted in cells rightwards and downwards:
//
//          A  0     N     2N    3N    4N
//     B  0    +-----+
//             | Top |              The cells are numbered row by row (B, then A). Corners and edges of a cell
//        N    +-----+-----+-----+-----+        are numbered clockwise as seen from the middle of the cube:
//             |Front|Right|Back |Left |
//       2N    +-----+-----+-----+-----+             0 ---0--- 1
//             |Botto|                               3         1
//       3N    +-----+                               3 ---2--- 2
#pragma once

#include <array>

#include "projection/cube_face.h"

namespace skyvault {

inline constexpr int kMostTilesPerSide = 6;
inline constexpr int kMostTiles = kFaceCount * kMostTilesPerSide * kMostTilesPerSide;

/// The cell across an edge, and the number of the same edge there. −1: none.
struct CellEdge {
    int cell = -1, edge = -1;
};

struct FaceCell {
    CubeFace face = CubeFace::Front;
    int column = 0, row = 0;  ///< within the face, 0 .. N − 1
    /// The cell's centre as face tables give it: −(N − 1) .. N − 1 in steps of 2, rightwards and upwards.
    int centerX = 0, centerY = 0;
    std::array<CellEdge, 4> neighbours;
};

struct FaceGrid {
    int tilesPerSide = 0;  ///< N
    int cellCount = 0;     ///< 6N²
    std::array<FaceCell, kMostTiles> cells;
};

/// The N of 1..6 with 6N² tiles; 0 when there is none.
int TilesPerSide(int tileCount);

/// tilesPerSide: 1..6. A cell without its four neighbours would be told on the debugger channel.
void BuildFaceGrid(int tilesPerSide, FaceGrid& grid);

}  // namespace skyvault
