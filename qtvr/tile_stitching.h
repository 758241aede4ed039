// Finding the places of a cubic movie's tiles by their pictures alone.
#pragma once

#include <span>

#include "platform/feedback.h"
#include "qtvr/face_grid.h"
#include "qtvr/movie_scan.h"

namespace skyvault {

/// Places the tiles so that touching edges are as alike as possible: cell by cell the tile that fits best to
/// those placed before, tried with every tile in the first cell; the try with the smallest sum of differences
/// is taken. Equally good tiles and tries: the first.
/// tiles: one for each cell, square and of one size. Progress: "Stitching tiles...". False without memory.
bool StitchTiles(const FaceGrid& grid, std::span<const Image> tiles, Feedback& feedback, TilePlaces& places);

}  // namespace skyvault
