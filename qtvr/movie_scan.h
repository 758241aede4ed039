// What the import reads out of a movie's bytes. The movie's atoms are not walked: pictures and tables are
// found by their marks, wherever they are, so that movies of any structure and damaged ones are read.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "qtvr/face_grid.h"

namespace skyvault {

using MovieBytes = std::span<const std::byte>;

/// 216 tiles twice: a movie may hold every tile in a second size.
inline constexpr int kMostPictures = 432;

struct ByteRange {
    std::size_t offset = 0, size = 0;
};

struct MoviePictures {
    int count = 0;
    std::array<ByteRange, kMostPictures> ranges;
};

/// Finds the JPEG files in a movie: from a start mark to the next end mark. A start mark inside a picture
/// moves its start; an end mark with no start mark since the last picture gives that picture once more, this
/// far. The first 432 are found, and no more once they add up to four times the movie (a picture can only be
/// counted so often in a movie that means harm). On the debugger channel: where the first one starts, and how
/// many there are.
void FindPictures(MovieBytes movie, MoviePictures& pictures);

/// One tile's place in the face table: which way its face lies, as a quaternion, and where on the face its
/// centre is.
struct FaceTableEntry {
    float w = 0, x = 0, y = 0, z = 0;
    float centerX = 0, centerY = 0;
};

struct FaceTable {
    int count = 0;  ///< 6N²
    std::array<FaceTableEntry, kMostTiles> entries;
};

/// Reads the face table ("cufa"), N tiles per side. A movie without one and with N = 1 has its faces in the
/// order of CubeFace. False when there is none that fits N.
bool ReadFaceTable(MovieBytes movie, int tilesPerSide, FaceTable& table);

/// The face a table entry is on, −1 for none.
int FaceOfEntry(const FaceTableEntry& entry);

/// Which tile lies in each cell of a grid, by the number of its picture among the kept ones; −1: none.
using TilePlaces = std::array<int, kMostTiles>;

/// Places the tiles by the face table and the offsets of the pictures in the file ("stco"). False when there
/// are no offsets of 6N² pictures or a cell is left without a tile.
bool PlaceTiles(MovieBytes movie, const FaceGrid& grid, const FaceTable& table, TilePlaces& places);

}  // namespace skyvault
