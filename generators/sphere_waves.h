// Smooth random heights on a sphere: the lie of the land under the fractal planet.
//
// A height is a sum of waves, each with a wave vector k of random direction: a · cos(k · d + phase) at the
// unit vector d. So it is a smooth function of the direction alone, and nothing of any grid shows in it.
// Level l has waves of about 180° / 2^l from crest to crest.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace skyvault {

class SphereWaves {
  public:
    /// heights: for each level, how high its land is (the standard deviation is 0.58 of it); levels of no
    /// height cost nothing. A seed gives the same waves at a level whatever the others.
    SphereWaves(std::span<const float> heights, std::uint32_t seed);

    /// The heights at `count` unit vectors, the same bits on every machine.
    void At(const float* x, const float* y, const float* z, int count, float* heights) const;

  private:
    struct Wave {
        float x, y, z, phase, height;
    };
    std::vector<Wave> waves_;
};

}  // namespace skyvault
