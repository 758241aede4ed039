// Compiled once for every set of kernels; see row_kernels.cpp.
//
// Short loops: the processor overlaps more of their iterations than of one long one.
#include "projection/disc_kernels.h"

#include <cmath>
#include <cstdint>

#include "projection/direction.h"
#include "projection/fast_math.h"

namespace skyvault::KERNEL_SET {

static int SphereMapDirections(const SquareSpan& span, int n, DirectionBlock& block,
                               std::uint8_t* SKYVAULT_RESTRICT inside) {
    const std::int32_t half = span.size / 2;
    const std::int32_t left = span.first - half;
    const std::int32_t down = span.row - half;
    const std::int32_t downSquared = down * down;
    const std::int32_t quarter = span.size * span.size / 4;
    const float limit = static_cast<float>(quarter);
    int count = 0;
    for (int i = 0; i < n; ++i) {
        const std::int32_t across = left + i;
        const int within = static_cast<float>(across * across + downSquared) < limit ? 1 : 0;
        inside[i] = static_cast<std::uint8_t>(within);
        count += within;
    }
    if (count == 0) return 0;

    float* SKYVAULT_RESTRICT bx = block.x;
    float* SKYVAULT_RESTRICT by = block.y;
    float* SKYVAULT_RESTRICT bz = block.z;
    const double size = span.size;
    const std::int32_t first = span.first;
    // With u and v from 0 to 1, x = 2u − 1, y = 2v − 1 and n = √(1 − x² − y²): (2n·x, 2n·y, 2n² − 1).
    const double v = 1.0 - span.row / size;
    const double y = 2.0 * v - 1.0;
    if ((span.size & (span.size - 1)) == 0) {
        // Sizes are powers of two as a rule. Then nothing is rounded before the last step, and whole numbers
        // give the same bits at a quarter of the cost.
        const std::int32_t square = span.size * span.size;
        const std::int32_t rest = square / 4 - downSquared;
        const float unit = static_cast<float>(4.0 / size / size);
        const float step = static_cast<float>(2.0 / size);
        const float singleY = static_cast<float>(y);
        for (int i = 0; i < n; ++i) {
            const std::int32_t across = left + i;
            const std::int32_t depth = rest - across * across;  // n²
            const float twice = 2.0f * SquareRoot(static_cast<float>(depth) * unit);
            bx[i] = static_cast<float>(across) * step * twice;
            by[i] = singleY * twice;
            const std::int32_t away = 2 * depth - quarter;
            bz[i] = static_cast<float>(away) * unit;
        }
        return count;
    }
    // Just inside the rim of an odd size n² may come out a hair below zero: the rim itself.
    const double vv4 = 4.0 * v * v, v4 = 4.0 * v;
    for (int i = 0; i < n; ++i) {
        const double u = static_cast<double>(first + i) / size;
        const double a = 4.0 * u - 4.0 * u * u;
        const float nn = static_cast<float>(a - 1.0 - vv4 + v4);
        const double twice = static_cast<double>(2.0f * SquareRoot(nn > 0.0f ? nn : 0.0f));
        bx[i] = static_cast<float>((2.0 * u - 1.0) * twice);
        by[i] = static_cast<float>(y * twice);
        bz[i] = static_cast<float>(2.0 * a - 2.0 * vv4 + 2.0 * v4 - 3.0);
    }
    return count;
}

static int MirrorBallDirections(const SquareSpan& span, int n, DirectionBlock& block,
                                std::uint8_t* SKYVAULT_RESTRICT inside) {
    float* SKYVAULT_RESTRICT bx = block.x;
    float* SKYVAULT_RESTRICT by = block.y;
    float* SKYVAULT_RESTRICT bz = block.z;
    const std::int32_t half = span.size / 2;
    const std::int32_t left = span.first - half;
    const float radius = static_cast<float>(half);
    const float y = static_cast<float>(half - span.row) / radius;
    const float yy = y * y;
    int count = 0;
    for (int i = 0; i < n; ++i) {
        const float x = static_cast<float>(left + i) / radius;
        const float xx = x * x;
        bx[i] = x;
        by[i] = y;
        const float depth = 1.0f - xx - yy;
        bz[i] = SquareRoot(depth > 0.0f ? depth : 0.0f);  // the rim may come out a hair below zero
        const int within = xx + yy <= 1.0f ? 1 : 0;
        inside[i] = static_cast<std::uint8_t>(within);
        count += within;
    }
    return count;
}

constexpr float kHeartPole = HeartShape::kCone + HeartShape::kParallel;

/// Whether all of the span is clearly outside. Below the pole the pixels inside are one stretch around the
/// axis: the longitude, angle · ρ / cos φ, grows with |x|, for so do all three. The pixel nearest to the axis
/// speaks for the span then, with a margin that covers roundings.
SKYVAULT_INLINE bool MissesHeart(float firstX, float lastX, float y) {
    constexpr float kMargin = 0.01f;
    const float x = firstX > 0.0f ? firstX : lastX;
    if (y <= 0.0f || firstX * lastX <= 0.0f) return false;
    const float radius = SquareRoot(x * x + y * y);
    const float latitude = kHeartPole - radius;
    const float cosine = SinCos(latitude).cosine;
    return latitude < -kPi / 2 - kMargin || Atan2(std::fabs(x), y) * radius > (kPi + kMargin) * cosine;
}

static int HeartDirections(const SquareSpan& span, int n, DirectionBlock& block,
                           std::uint8_t* SKYVAULT_RESTRICT inside) {
    constexpr float kHalfPi = 1.5707964f;
    float* SKYVAULT_RESTRICT bx = block.x;
    float* SKYVAULT_RESTRICT by = block.y;
    float* SKYVAULT_RESTRICT bz = block.z;
    const std::int32_t first = span.first;
    const float size = static_cast<float>(span.size);
    const float row = static_cast<float>(span.row);
    const float y = HeartShape::kCone - (HeartShape::kAbove - row * HeartShape::kHeight / size);
    const float yy = y * y;
    alignas(64) float radii[kBlockSize], longitudes[kBlockSize], cosines[kBlockSize];
    for (int i = 0; i < n; ++i) {
        const float x = static_cast<float>(first + i) * HeartShape::kWidth / size - HeartShape::kLeft;
        bx[i] = x;
        radii[i] = SquareRoot(x * x + yy);
    }
    if (MissesHeart(bx[0], bx[n - 1], y)) return 0;
    for (int i = 0; i < n; ++i) longitudes[i] = Atan2(bx[i], y);
    for (int i = 0; i < n; ++i) {
        const SineCosineSingle latitude = SinCos(kHeartPole - radii[i]);
        by[i] = latitude.sine;
        cosines[i] = latitude.cosine;
    }
    int count = 0;
    for (int i = 0; i < n; ++i) {
        const float latitude = kHeartPole - radii[i];
        const float cosine = cosines[i];
        const float longitude = longitudes[i] * (radii[i] / cosine) + kPi;
        const int poles = std::fabs(latitude) <= kHalfPi ? 1 : 0;
        const int apart = cosine == 0.0f ? 0 : 1;
        const int west = longitude >= 0.0f ? 1 : 0;
        const int east = longitude <= kTwoPi ? 1 : 0;
        const int within = poles & apart & west & east;
        longitudes[i] = within != 0 ? longitude + kPi : 0.0f;
        inside[i] = static_cast<std::uint8_t>(within);
        count += within;
    }
    if (count == 0) return 0;
    for (int i = 0; i < n; ++i) {
        const SineCosineSingle longitude = SinCos(longitudes[i]);
        bx[i] = longitude.sine * cosines[i];
        bz[i] = longitude.cosine * cosines[i];
    }
    return count;
}

static void SphereMapPixels(const DirectionBlock& block, int n, std::uint32_t width, std::uint32_t height,
                            std::int32_t* SKYVAULT_RESTRICT columns, std::int32_t* SKYVAULT_RESTRICT rows) {
    const float* SKYVAULT_RESTRICT x = block.x;
    const float* SKYVAULT_RESTRICT y = block.y;
    const float* SKYVAULT_RESTRICT z = block.z;
    const double columnCount = width, rowCount = height;
    // The direction straight back is the whole rim: its rightmost pixel stands for it.
    constexpr float kRim = 0.49999997f;
    alignas(64) float across[kBlockSize], up[kBlockSize];
    for (int i = 0; i < n; ++i) {
        const float forward = z[i] + 1.0f;
        const float m = 2.0f * SquareRoot(x[i] * x[i] + y[i] * y[i] + forward * forward);
        const float columnRatio = x[i] / m;
        const float rowRatio = y[i] / m;
        across[i] = m > 0.0f ? columnRatio : kRim;
        up[i] = m > 0.0f ? rowRatio : 0.0f;
    }
    for (int i = 0; i < n; ++i) {
        columns[i] = static_cast<std::int32_t>(columnCount * (static_cast<double>(across[i]) + 0.5));
        rows[i] = static_cast<std::int32_t>(rowCount * (0.5 - static_cast<double>(up[i])));
    }
}

static void MirrorBallPixels(const DirectionBlock& block, int n, std::uint32_t width, std::uint32_t height,
                             std::int32_t* SKYVAULT_RESTRICT columns, std::int32_t* SKYVAULT_RESTRICT rows) {
    const float* SKYVAULT_RESTRICT x = block.x;
    const float* SKYVAULT_RESTRICT y = block.y;
    const float radius = static_cast<float>(width * 0.5 - 2.0);
    const float middleColumn = static_cast<float>(width) * 0.5f;
    const float middleRow = static_cast<float>(height) * 0.5f;
    for (int i = 0; i < n; ++i) {
        columns[i] = static_cast<std::int32_t>(x[i] * radius + middleColumn);
        rows[i] = static_cast<std::int32_t>(middleRow - y[i] * radius);
    }
}

static void HeartPixels(const DirectionBlock& block, int n, std::uint32_t width, std::uint32_t height,
                        std::int32_t* SKYVAULT_RESTRICT columns, std::int32_t* SKYVAULT_RESTRICT rows) {
    const float* SKYVAULT_RESTRICT x = block.x;
    const float* SKYVAULT_RESTRICT y = block.y;
    const float* SKYVAULT_RESTRICT z = block.z;
    const float lastColumn = static_cast<float>(width - 1);
    const float lastRow = static_cast<float>(height - 1);
    const std::int32_t bottom = static_cast<std::int32_t>(height) - 1;
    alignas(64) float longitudes[kBlockSize], latitudes[kBlockSize], angles[kBlockSize];
    for (int i = 0; i < n; ++i) {
        const float around = Atan2(x[i], z[i]) + kPi;
        longitudes[i] = (around >= kTwoPi ? around - kTwoPi : around) - kPi;
    }
    for (int i = 0; i < n; ++i) latitudes[i] = Atan2(y[i], SquareRoot(x[i] * x[i] + z[i] * z[i]));
    for (int i = 0; i < n; ++i) {
        const float radius = kHeartPole - latitudes[i];
        const float angle = SinCos(latitudes[i]).cosine * longitudes[i] / radius;
        // On the circle of latitude that shrinks to a point every angle will do.
        angles[i] = radius == 0.0f ? 0.0f : angle;
    }
    for (int i = 0; i < n; ++i) {
        const float radius = kHeartPole - latitudes[i];
        const SineCosineSingle angle = SinCos(angles[i]);
        const float across = angle.sine * radius;
        const float up = HeartShape::kCone - angle.cosine * radius;
        columns[i] =
            static_cast<std::int32_t>((across + HeartShape::kLeft) * lastColumn / HeartShape::kWidth);
        rows[i] =
            bottom - static_cast<std::int32_t>((up + HeartShape::kBelow) * lastRow / HeartShape::kHeight);
    }
}

const DiscKernels kDiscKernels = {
    .sphereMapDirections = SphereMapDirections,
    .mirrorBallDirections = MirrorBallDirections,
    .heartDirections = HeartDirections,
    .sphereMapPixels = SphereMapPixels,
    .mirrorBallPixels = MirrorBallPixels,
    .heartPixels = HeartPixels,
};

}  // namespace skyvault::KERNEL_SET
