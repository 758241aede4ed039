// Hard Voronoi cells painted without asking every seed at every pixel.
//
// Over a small square of a face nearly all seeds can be ruled out at once, and a square in which only one is
// left is of one colour. The squares are cut finer and finer, each asking only the seeds that its parent
// left.
//
// Of two seeds s and t the difference of squared distances to d is linear in d:
//
//     |s − d|² − |t − d|² = |s − c|² − |t − c|² − 2 (d − c)·(s − t)
//
// so within a ball of radius r around c it differs from its value at c by at most 2r |s − t|. A seed whose
// difference to the seed nearest to c stays above 0 is nowhere the nearest in the ball; one that stays above
// the border's width also makes no border. The margin for rounding is so wide that pixels compute the very
// same smallest distances from the seeds left as from all of them.
#pragma once

#include "generators/paint_tiles.h"
#include "generators/voronoi_kernels.h"

namespace skyvault {

/// Paints a square. border: 0 without borders.
void PaintCells(const FaceRect& tile, const SeedArrays& seeds, float border, TileCanvas& canvas);

}  // namespace skyvault
