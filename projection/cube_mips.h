// The mip levels of a cube map.
//
// A texel of a level is the mean of what the full-size face shows within it on the sphere: every pixel counts
// by the solid angle it covers, so that the six texels of the last level together hold the mean of the
// panorama. Texels on both sides of an edge of the cube, and the three around a corner, then get their mean:
// filtered by a renderer face by face, the edges do not show.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "projection/cube_face.h"

namespace skyvault {

class CubeMips {
  public:
    /// Makes the levels of a face, each half as large as the one before, down to 1 × 1; the edges match when
    /// the sixth was added. face: in its own format, its side a power of two, the same for all six.
    /// withAlpha: clear pixels have no share in a colour. False without memory.
    bool Add(CubeFace which, const Image& face, bool withAlpha);

    /// A level of a face, 1 being half as large as the face; each can be had once.
    Image Take(CubeFace which, std::uint32_t level);

  private:
    std::array<std::vector<Image>, kFaceCount> levels_;  ///< of each face, from large to small
    int count_ = 0;                                      ///< of faces added
};

}  // namespace skyvault
