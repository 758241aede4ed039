// Compiled once for every set of kernels; see projection/row_kernels.cpp.
#include "generators/voronoi_kernels.h"

#include <cstdint>

#include "projection/fast_math.h"

namespace skyvault::KERNEL_SET {

/// Where the search for the smallest squared distances begins; none comes near it.
static constexpr float kFarAway = 10000.0f;
static constexpr std::uint32_t kBlack = 0xff000000u;  // the bytes of Color8(0, 0, 0, 255)

/// Pixels worked on together: their running values stay in the first-level cache, and loops of a fixed
/// length become vectors without a remainder.
static constexpr int kGroup = 32;

/// The directions of a group.
struct Group {
    const float *x, *y, *z;
};

/// Room for the last group when it is not full; what lies beyond the last pixel is worked on and ignored.
struct PartialGroup {
    alignas(64) float x[kGroup], y[kGroup], z[kGroup];
};

SKYVAULT_INLINE Group GroupAt(const float* x, const float* y, const float* z, int first, int n,
                              PartialGroup& partial) {
    if (n - first >= kGroup) return {x + first, y + first, z + first};
    for (int i = 0; i < kGroup; ++i) partial.x[i] = partial.y[i] = partial.z[i] = 0.0f;
    for (int i = 0; i < n - first; ++i) {
        partial.x[i] = x[first + i];
        partial.y[i] = y[first + i];
        partial.z[i] = z[first + i];
    }
    return {partial.x, partial.y, partial.z};
}

SKYVAULT_INLINE void StoreGroup(const std::uint32_t* SKYVAULT_RESTRICT group, int first, int n,
                                std::uint32_t* SKYVAULT_RESTRICT result) {
    if (n - first >= kGroup) {
        for (int i = 0; i < kGroup; ++i) result[first + i] = group[i];
    } else {
        for (int i = 0; i < n - first; ++i) result[first + i] = group[i];
    }
}

SKYVAULT_INLINE float SquaredDistance(float x, float y, float z, float seedX, float seedY, float seedZ) {
    const float dx = x - seedX, dy = y - seedY, dz = z - seedZ;
    return dx * dx + dy * dy + dz * dz;
}

/// seeds: at least one.
template <bool kBorder>
SKYVAULT_INLINE void NearestOfAll(const float* x, const float* y, const float* z, int n,
                                  const SeedArrays& seeds, float border, std::uint32_t* colours) {
    const int count = seeds.count;
    for (int first = 0; first < n; first += kGroup) {
        PartialGroup partial;
        const Group group = GroupAt(x, y, z, first, n, partial);
        alignas(64) float smallest[kGroup], second[kGroup];
        alignas(64) std::uint32_t colour[kGroup];
        const float firstX = seeds.x[0], firstY = seeds.y[0], firstZ = seeds.z[0];
        const std::uint32_t firstColour = seeds.colour[0];
        for (int i = 0; i < kGroup; ++i) {
            smallest[i] = SquaredDistance(group.x[i], group.y[i], group.z[i], firstX, firstY, firstZ);
            second[i] = kFarAway;
            colour[i] = firstColour;
        }
        for (int k = 1; k < count; ++k) {
            const float seedX = seeds.x[k], seedY = seeds.y[k], seedZ = seeds.z[k];
            const std::uint32_t seedColour = seeds.colour[k];
            for (int i = 0; i < kGroup; ++i) {
                const float q = SquaredDistance(group.x[i], group.y[i], group.z[i], seedX, seedY, seedZ);
                const float before = smallest[i];
                if constexpr (kBorder) {
                    const float larger = q > before ? q : before;
                    second[i] = larger < second[i] ? larger : second[i];
                }
                colour[i] = q < before ? seedColour : colour[i];
                smallest[i] = q < before ? q : before;
            }
        }
        if constexpr (kBorder) {
            for (int i = 0; i < kGroup; ++i) {
                colour[i] = border > second[i] - smallest[i] ? kBlack : colour[i];
            }
        }
        StoreGroup(colour, first, n, colours);
    }
}

static void Nearest(const float* x, const float* y, const float* z, int n, const SeedArrays& seeds,
                    std::uint32_t* colours) {
    NearestOfAll<false>(x, y, z, n, seeds, 0.0f, colours);
}

static void NearestWithBorder(const float* x, const float* y, const float* z, int n, const SeedArrays& seeds,
                              float border, std::uint32_t* colours) {
    NearestOfAll<true>(x, y, z, n, seeds, border, colours);
}

static constexpr int kAnyPower = -1;

/// Seeds weighed together: they share divisions, 1/a and 1/b being b · 1/(ab) and a · 1/(ab).
static constexpr int kSeedGroup = 4;

/// Below this squared distance every weight is at its limit of 100, and at this one still above it.
static constexpr float kLimitDistance = 0.009f;

/// q^kPower; with q above 0.009 products of four of them stay far from what a double holds.
template <int kPower>
SKYVAULT_INLINE double ExactPower(float distance) {
    const double q = static_cast<double>(distance);
    if constexpr (kPower == 1) {
        return q;
    } else if constexpr (kPower == 2) {
        return q * q;
    } else if constexpr (kPower == 3) {
        return q * q * q;
    } else {
        return (q * q) * (q * q);
    }
}

SKYVAULT_INLINE float CutToLimit(double weight) {
    const float w = static_cast<float>(weight);
    return w < 100.0f ? w : 100.0f;
}

/// weights := 100 / (100 q)^kPower in double precision, at most 100, of four seeds. One division serves all
/// four: 1/a and 1/b are b · 1/(ab) and a · 1/(ab).
template <int kPower>
SKYVAULT_INLINE void WeighByProducts(const float (&q)[kSeedGroup][kGroup], float* SKYVAULT_RESTRICT weights) {
    // 100 / (100 q)^n = 100^(1 − n) / q^n
    constexpr double kNumerator = kPower == 1 ? 1.0 : kPower == 2 ? 1e-2 : kPower == 3 ? 1e-4 : 1e-6;
    for (int i = 0; i < kGroup; ++i) {
        const double a = ExactPower<kPower>(q[0][i]), b = ExactPower<kPower>(q[1][i]);
        const double c = ExactPower<kPower>(q[2][i]), d = ExactPower<kPower>(q[3][i]);
        const double ab = a * b, cd = c * d;
        const double all = kNumerator / (ab * cd);
        const double overAb = all * cd, overCd = all * ab;
        weights[i] = CutToLimit(overAb * b);
        weights[i + kGroup] = CutToLimit(overAb * a);
        weights[i + 2 * kGroup] = CutToLimit(overCd * d);
        weights[i + 3 * kGroup] = CutToLimit(overCd * c);
    }
}

/// The same for any power.
SKYVAULT_INLINE void WeighByLogarithm(const float (&q)[kSeedGroup][kGroup], double power,
                                      float* SKYVAULT_RESTRICT weights) {
    // 100 / (100 q)^p = 2^((1 − p) log2(100) − p log2(q)); within 2^±960 for p ≤ 100.
    const double scale = (1.0 - power) * 6.643856189774724;
    alignas(64) double exponent[kSeedGroup][kGroup], numerator[kSeedGroup][kGroup];
    alignas(64) double denominator[kSeedGroup][kGroup];
    for (int s = 0; s < kSeedGroup; ++s) {
        for (int i = 0; i < kGroup; ++i) {
            const Log2Parts parts = SplitForLog2(static_cast<double>(q[s][i]));
            exponent[s][i] = parts.exponent;
            numerator[s][i] = parts.numerator;
            denominator[s][i] = parts.denominator;
        }
    }
    for (int i = 0; i < kGroup; ++i) {
        const double a = denominator[0][i], b = denominator[1][i];
        const double c = denominator[2][i], d = denominator[3][i];
        const double ab = a * b, cd = c * d;
        const double all = 1.0 / (ab * cd);
        const double overAb = all * cd, overCd = all * ab;
        numerator[0][i] *= overAb * b;
        numerator[1][i] *= overAb * a;
        numerator[2][i] *= overCd * d;
        numerator[3][i] *= overCd * c;
    }
    for (int s = 0; s < kSeedGroup; ++s) {
        for (int i = 0; i < kGroup; ++i) {
            exponent[s][i] = scale - power * Log2OfParts(exponent[s][i], numerator[s][i]);
        }
        for (int i = 0; i < kGroup; ++i) weights[s * kGroup + i] = CutToLimit(Exp2Wide(exponent[s][i]));
    }
}

/// A channel as a byte. Where all weights vanished there is no number, and black.
SKYVAULT_INLINE std::uint32_t Channel(float value) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(value > 0.0f ? value : 0.0f));
}

/// Running values of a group of pixels.
struct Running {
    alignas(64) float sum[kGroup], smallest[kGroup], second[kGroup];
};

/// Weighs four seeds, the first `used` of which are counted.
template <int kPower, bool kBorder>
SKYVAULT_INLINE void AddSeeds(const Group& group, const SeedArrays& seeds, int first, int used, double power,
                              float* SKYVAULT_RESTRICT weights, Running& running) {
    alignas(64) float q[kSeedGroup][kGroup];
    for (int s = 0; s < kSeedGroup; ++s) {
        const int k = first + (s < used ? s : 0);
        const float seedX = seeds.x[k], seedY = seeds.y[k], seedZ = seeds.z[k];
        for (int i = 0; i < kGroup; ++i) {
            q[s][i] = SquaredDistance(group.x[i], group.y[i], group.z[i], seedX, seedY, seedZ);
        }
    }
    if constexpr (kBorder) {
        for (int s = 0; s < used; ++s) {
            for (int i = 0; i < kGroup; ++i) {
                const float before = running.smallest[i];
                const float larger = q[s][i] > before ? q[s][i] : before;
                running.second[i] = larger < running.second[i] ? larger : running.second[i];
                running.smallest[i] = q[s][i] < before ? q[s][i] : before;
            }
        }
    }
    for (int s = 0; s < kSeedGroup; ++s) {
        for (int i = 0; i < kGroup; ++i) q[s][i] = q[s][i] > kLimitDistance ? q[s][i] : kLimitDistance;
    }
    if constexpr (kPower == 0) {
        for (int i = 0; i < kSeedGroup * kGroup; ++i) weights[i] = 100.0f;
    } else if constexpr (kPower == kAnyPower) {
        WeighByLogarithm(q, power, weights);
    } else {
        WeighByProducts<kPower>(q, weights);
    }
    for (int s = 0; s < used; ++s) {
        for (int i = 0; i < kGroup; ++i) running.sum[i] += weights[s * kGroup + i];
    }
}

template <int kPower, bool kBorder>
SKYVAULT_INLINE void BlendOfAll(const float* x, const float* y, const float* z, int n,
                                const SeedArrays& seeds, const SeedColours& colours, float power,
                                float border, std::uint32_t* SKYVAULT_RESTRICT result) {
    const double wide = static_cast<double>(power);
    const int count = seeds.count;
    alignas(64) float weights[(kMostSeeds + kSeedGroup) * kGroup];
    for (int first = 0; first < n; first += kGroup) {
        PartialGroup partial;
        const Group group = GroupAt(x, y, z, first, n, partial);
        Running running;
        for (int i = 0; i < kGroup; ++i) {
            running.sum[i] = 0.0f;
            running.smallest[i] = running.second[i] = kFarAway;
        }
        for (int k = 0; k < count; k += kSeedGroup) {
            const int used = count - k < kSeedGroup ? count - k : kSeedGroup;
            AddSeeds<kPower, kBorder>(group, seeds, k, used, wide, weights + k * kGroup, running);
        }
        alignas(64) float red[kGroup], green[kGroup], blue[kGroup];
        for (int i = 0; i < kGroup; ++i) red[i] = green[i] = blue[i] = 0.0f;
        for (int k = 0; k < count; ++k) {
            const float seedRed = colours.red[k], seedGreen = colours.green[k], seedBlue = colours.blue[k];
            const float* SKYVAULT_RESTRICT weight = weights + k * kGroup;
            for (int i = 0; i < kGroup; ++i) {
                const float share = weight[i] / running.sum[i];
                red[i] += share * seedRed;
                green[i] += share * seedGreen;
                blue[i] += share * seedBlue;
            }
        }
        alignas(64) std::uint32_t mixed[kGroup];
        for (int i = 0; i < kGroup; ++i) {
            mixed[i] = Channel(blue[i]) | Channel(green[i]) << 8 | Channel(red[i]) << 16 | 0xff000000u;
        }
        if constexpr (kBorder) {
            for (int i = 0; i < kGroup; ++i) {
                mixed[i] = border > running.second[i] - running.smallest[i] ? kBlack : mixed[i];
            }
        }
        StoreGroup(mixed, first, n, result);
    }
}

template <int kPower>
static void BlendWith(const float* x, const float* y, const float* z, int n, const SeedArrays& seeds,
                      const SeedColours& colours, float power, float border, std::uint32_t* result) {
    if (border > 0.0f && seeds.count > 1) {
        BlendOfAll<kPower, true>(x, y, z, n, seeds, colours, power, border, result);
    } else {
        BlendOfAll<kPower, false>(x, y, z, n, seeds, colours, power, border, result);
    }
}

static void Blend(const float* x, const float* y, const float* z, int n, const SeedArrays& seeds,
                  const SeedColours& colours, float power, float border, std::uint32_t* result) {
    if (power == 0.0f) return BlendWith<0>(x, y, z, n, seeds, colours, power, border, result);
    if (power == 1.0f) return BlendWith<1>(x, y, z, n, seeds, colours, power, border, result);
    if (power == 2.0f) return BlendWith<2>(x, y, z, n, seeds, colours, power, border, result);
    if (power == 3.0f) return BlendWith<3>(x, y, z, n, seeds, colours, power, border, result);
    if (power == 4.0f) return BlendWith<4>(x, y, z, n, seeds, colours, power, border, result);
    BlendWith<kAnyPower>(x, y, z, n, seeds, colours, power, border, result);
}

const VoronoiKernels kVoronoiKernels = {
    .nearest = Nearest, .nearestWithBorder = NearestWithBorder, .blend = Blend};

}  // namespace skyvault::KERNEL_SET
