#include "generators/sphere_waves.h"

#include <algorithm>

#include "generators/random_bits.h"
#include "projection/direction.h"
#include "projection/fast_math.h"

namespace skyvault {

namespace {

/// Enough for heights that are spread nearly as those of infinitely many.
constexpr std::uint32_t kWavesPerLevel = 16;

}  // namespace

SphereWaves::SphereWaves(std::span<const float> heights, std::uint32_t seed) {
    float frequency = 2.0f;
    for (std::uint32_t level = 0; level < heights.size(); ++level, frequency *= 2.0f) {
        if (heights[level] == 0.0f) continue;
        for (std::uint32_t i = 0; i < kWavesPerLevel; ++i) {
            std::uint32_t number = Scramble(seed) + (level * kWavesPerLevel + i) * 4;
            // Equal shares of height are equal shares of the sphere's surface (Archimedes).
            const float along = NoiseOf(number), around = kPi * NoiseOf(number + 1);
            const float across = SquareRoot(std::max(0.0f, 1.0f - along * along));
            // Not all of one length, lest their crests meet in a pattern.
            const float length = frequency * (1.0f + 0.3f * NoiseOf(number + 2));
            waves_.push_back({length * across * Cos(around), length * along, length * across * Sin(around),
                              kPi * NoiseOf(number + 3),
                              // The sum of n waves of height a deviates by a · √(n / 2), even noise by 1/√3.
                              heights[level] * SquareRoot(2.0f / (3.0f * kWavesPerLevel))});
        }
    }
}

void SphereWaves::At(const float* x, const float* y, const float* z, int count, float* heights) const {
    std::fill_n(heights, count, 0.0f);
    for (const Wave& wave : waves_) {
        for (int i = 0; i < count; ++i) {
            const float angle = (x[i] * wave.x + y[i] * wave.y) + (z[i] * wave.z + wave.phase);
            heights[i] += wave.height * SinCos(angle).cosine;
        }
    }
}

}  // namespace skyvault
