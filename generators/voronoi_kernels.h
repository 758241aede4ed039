// The passes over pixels of the Voronoi generator: plain loops, one table of them for every set of kernels
// (projection/kernel_choice.h).
#pragma once

#include <bit>
#include <cstdint>

#include "image/pixel.h"
#include "projection/kernel_choice.h"

namespace skyvault {

inline constexpr int kMostSeeds = 2000;

/// Colours as the kernels select and mix them.
inline std::uint32_t PackColour(const Color8& colour) {
    return std::bit_cast<std::uint32_t>(colour);
}
inline void UnpackColours(const std::uint32_t* packed, int n, Color8* colours) {
    for (int i = 0; i < n; ++i) colours[i] = std::bit_cast<Color8>(packed[i]);
}

/// Seeds as arrays, in ascending order of their numbers.
struct SeedArrays {
    const float *x, *y, *z;
    const std::uint32_t* colour;  ///< packed, opaque
    int count;                    ///< 1 .. kMostSeeds
};

/// Colours of the seeds as the blend weighs them, 0..255.
struct SeedColours {
    const float *red, *green, *blue;
};

struct VoronoiKernels {
    /// The colour of the seed nearest to each of n directions; of equals the first.
    void (*nearest)(const float* x, const float* y, const float* z, int n, const SeedArrays& seeds,
                    std::uint32_t* colours);
    /// The same with black where the two smallest squared distances differ by less than border.
    void (*nearestWithBorder)(const float* x, const float* y, const float* z, int n, const SeedArrays& seeds,
                              float border, std::uint32_t* colours);
    /// The blend of all seeds' colours, weighed with 100 / (100 · squared distance)^power, at most 100.
    /// border > 0 as above. The seeds' own colours are not read.
    void (*blend)(const float* x, const float* y, const float* z, int n, const SeedArrays& seeds,
                  const SeedColours& colours, float power, float border, std::uint32_t* result);
};

SKYVAULT_KERNEL_TABLE(VoronoiKernels, VoronoiPasses)

}  // namespace skyvault
