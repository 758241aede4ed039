// Compiled twice: as part of the library, and with SKYVAULT_KERNELS_AVX2 for AVX2. Only functions of this
// file and always-inlined ones may be called here, so that no AVX2 code hides in a shared inline function.
#include "generators/voronoi_kernels.h"

#include <cstdint>

#include "projection/fast_math.h"

#ifdef SKYVAULT_KERNELS_AVX2
#define KERNEL_SET avx2_voronoi
#else
#define KERNEL_SET baseline_voronoi
#endif

#if defined(_MSC_VER)
#define SKYVAULT_RESTRICT __restrict
#else
#define SKYVAULT_RESTRICT __restrict__
#endif

namespace skyvault::KERNEL_SET {

/// Where the search for the smallest squared distances begins; none comes near it.
static constexpr float kFarAway = 10000.0f;
static constexpr std::uint32_t kBlack = 0xff000000u;  // the bytes of Color8(0, 0, 0, 255)

/// Pixels worked on together: their running values stay in the first-level cache, and loops of a fixed
/// length become vectors without a remainder.
static constexpr int kGroup = 32;

/// The directions of a group; those beyond the last pixel are zero and their results ignored.
struct Group {
    alignas(64) float x[kGroup], y[kGroup], z[kGroup];
    int count;
};

SKYVAULT_INLINE void LoadGroup(const float* x, const float* y, const float* z, int first, int n,
                               Group& group) {
    group.count = n - first < kGroup ? n - first : kGroup;
    if (group.count < kGroup) {
        for (int i = 0; i < kGroup; ++i) group.x[i] = group.y[i] = group.z[i] = 0.0f;
    }
    for (int i = 0; i < group.count; ++i) {
        group.x[i] = x[first + i];
        group.y[i] = y[first + i];
        group.z[i] = z[first + i];
    }
}

SKYVAULT_INLINE float SquaredDistance(float x, float y, float z, float seedX, float seedY, float seedZ) {
    const float dx = x - seedX, dy = y - seedY, dz = z - seedZ;
    return dx * dx + dy * dy + dz * dz;
}

template <bool kBorder>
SKYVAULT_INLINE void NearestOfGroup(const Group& SKYVAULT_RESTRICT group, const SeedArrays& seeds,
                                    float border, std::uint32_t* SKYVAULT_RESTRICT result) {
    alignas(64) float smallest[kGroup], second[kGroup];
    alignas(64) std::uint32_t colour[kGroup];
    for (int i = 0; i < kGroup; ++i) {
        smallest[i] = second[i] = kFarAway;
        colour[i] = 0;
    }
    const int count = seeds.count;
    for (int k = 0; k < count; ++k) {
        const float seedX = seeds.x[k], seedY = seeds.y[k], seedZ = seeds.z[k];
        const std::uint32_t seedColour = seeds.colour[k];
        for (int i = 0; i < kGroup; ++i) {
            const float q = SquaredDistance(group.x[i], group.y[i], group.z[i], seedX, seedY, seedZ);
            const float before = smallest[i];
            if (kBorder) {
                const float larger = q > before ? q : before;
                second[i] = larger < second[i] ? larger : second[i];
            }
            colour[i] = q < before ? seedColour : colour[i];
            smallest[i] = q < before ? q : before;
        }
    }
    for (int i = 0; i < kGroup; ++i) {
        result[i] = kBorder && border > second[i] - smallest[i] ? kBlack : colour[i];
    }
}

template <bool kBorder>
SKYVAULT_INLINE void NearestOfAll(const float* x, const float* y, const float* z, int n,
                                  const SeedArrays& seeds, float border, std::uint32_t* colours) {
    for (int first = 0; first < n; first += kGroup) {
        Group group;
        LoadGroup(x, y, z, first, n, group);
        alignas(64) std::uint32_t result[kGroup];
        NearestOfGroup<kBorder>(group, seeds, border, result);
        for (int i = 0; i < group.count; ++i) colours[first + i] = result[i];
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

/// kPower: the exponent where exact products serve, else kAnyPower. A distance of 0 needs no case of its
/// own: it gives infinity or a large number, which is cut to 100 as well.
template <int kPower>
SKYVAULT_INLINE float Weight(float q, double power) {
    const double base = static_cast<double>(q) * 100.0;
    double weight;
    if constexpr (kPower == kAnyPower) {
        weight = 100.0 * PowWide(base, -power);
    } else if constexpr (kPower == 0) {
        weight = 100.0;
    } else if constexpr (kPower == 1) {
        weight = 100.0 / base;
    } else if constexpr (kPower == 2) {
        weight = 100.0 / (base * base);
    } else if constexpr (kPower == 3) {
        weight = 100.0 / (base * base * base);
    } else {
        weight = 100.0 / (base * base * base * base);
    }
    return static_cast<float>(weight > 100.0 ? 100.0 : weight);
}

/// A channel as a byte. Where all weights vanished there is no number, and black.
SKYVAULT_INLINE std::uint32_t Channel(float value) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(value > 0.0f ? value : 0.0f));
}

template <int kPower, bool kBorder>
SKYVAULT_INLINE void BlendOfAll(const float* x, const float* y, const float* z, int n,
                                const SeedArrays& seeds, const SeedColours& colours, float power,
                                float border, std::uint32_t* SKYVAULT_RESTRICT result) {
    const double wide = static_cast<double>(power);
    const int count = seeds.count;
    alignas(64) float weights[kMostSeeds * kGroup];
    for (int first = 0; first < n; first += kGroup) {
        Group group;
        LoadGroup(x, y, z, first, n, group);
        alignas(64) float sum[kGroup], smallest[kGroup], second[kGroup];
        for (int i = 0; i < kGroup; ++i) {
            sum[i] = 0.0f;
            smallest[i] = second[i] = kFarAway;
        }
        for (int k = 0; k < count; ++k) {
            const float seedX = seeds.x[k], seedY = seeds.y[k], seedZ = seeds.z[k];
            float* SKYVAULT_RESTRICT weight = weights + k * kGroup;
            alignas(64) float q[kGroup];
            for (int i = 0; i < kGroup; ++i) {
                q[i] = SquaredDistance(group.x[i], group.y[i], group.z[i], seedX, seedY, seedZ);
            }
            for (int i = 0; i < kGroup; ++i) weight[i] = Weight<kPower>(q[i], wide);
            for (int i = 0; i < kGroup; ++i) sum[i] += weight[i];
            if (kBorder) {
                for (int i = 0; i < kGroup; ++i) {
                    const float larger = q[i] > smallest[i] ? q[i] : smallest[i];
                    second[i] = larger < second[i] ? larger : second[i];
                    smallest[i] = q[i] < smallest[i] ? q[i] : smallest[i];
                }
            }
        }
        alignas(64) float red[kGroup], green[kGroup], blue[kGroup];
        for (int i = 0; i < kGroup; ++i) red[i] = green[i] = blue[i] = 0.0f;
        for (int k = 0; k < count; ++k) {
            const float seedRed = colours.red[k], seedGreen = colours.green[k], seedBlue = colours.blue[k];
            const float* SKYVAULT_RESTRICT weight = weights + k * kGroup;
            for (int i = 0; i < kGroup; ++i) {
                const float share = weight[i] / sum[i];
                red[i] += share * seedRed;
                green[i] += share * seedGreen;
                blue[i] += share * seedBlue;
            }
        }
        alignas(64) std::uint32_t mixed[kGroup];
        for (int i = 0; i < kGroup; ++i) {
            mixed[i] = Channel(blue[i]) | Channel(green[i]) << 8 | Channel(red[i]) << 16 | 0xff000000u;
        }
        if (kBorder) {
            for (int i = 0; i < kGroup; ++i) {
                mixed[i] = border > second[i] - smallest[i] ? kBlack : mixed[i];
            }
        }
        for (int i = 0; i < group.count; ++i) result[first + i] = mixed[i];
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

extern const VoronoiKernels kKernels;
const VoronoiKernels kKernels = {Nearest, NearestWithBorder, Blend};

}  // namespace skyvault::KERNEL_SET

#ifndef SKYVAULT_KERNELS_AVX2
#include "projection/row_kernels.h"

namespace skyvault {

namespace avx2_voronoi {
extern const VoronoiKernels kKernels;
}

const VoronoiKernels& ChosenVoronoiKernels() {
    return ChosenKernelSet() == KernelSet::Avx2 ? avx2_voronoi::kKernels : baseline_voronoi::kKernels;
}

}  // namespace skyvault
#endif
