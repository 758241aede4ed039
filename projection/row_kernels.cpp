// Compiled once for every set of kernels. Only functions of this file and always-inlined ones may be called
// here, so that no code for one processor hides in an inline function that all share.
#include "projection/row_kernels.h"

#include <cmath>
#include <cstdint>

#include "projection/cube_face.h"
#include "projection/direction.h"
#include "projection/fast_math.h"
#include "projection/matrix4.h"

namespace skyvault::KERNEL_SET {

static void Normalize(float* SKYVAULT_RESTRICT x, float* SKYVAULT_RESTRICT y, float* SKYVAULT_RESTRICT z,
                      int n) {
    for (int i = 0; i < n; ++i) {
        const float s = x[i] * x[i] + y[i] * y[i] + z[i] * z[i];
        // Multiplying by 1 leaves every bit alone, which is what lengths of 0 and 1 ask for.
        const float reciprocal = 1.0f / SquareRoot(s);
        const float scale = s == 0.0f ? 1.0f : reciprocal;
        x[i] *= scale;
        y[i] *= scale;
        z[i] *= scale;
    }
}

static void Absolute(float* v, int n) {
    for (int i = 0; i < n; ++i) v[i] = std::fabs(v[i]);
}

static void Transform(float* SKYVAULT_RESTRICT x, float* SKYVAULT_RESTRICT y, float* SKYVAULT_RESTRICT z,
                      int n, const Matrix4& matrix) {
    const float m00 = matrix.m[0][0], m01 = matrix.m[0][1], m02 = matrix.m[0][2];
    const float m10 = matrix.m[1][0], m11 = matrix.m[1][1], m12 = matrix.m[1][2];
    const float m20 = matrix.m[2][0], m21 = matrix.m[2][1], m22 = matrix.m[2][2];
    const float m30 = matrix.m[3][0], m31 = matrix.m[3][1], m32 = matrix.m[3][2];
    for (int i = 0; i < n; ++i) {
        const float a = x[i], b = y[i], c = z[i];
        x[i] = a * m00 + b * m10 + c * m20 + m30;
        y[i] = a * m01 + b * m11 + c * m21 + m31;
        z[i] = a * m02 + b * m12 + c * m22 + m32;
    }
}

static void LogoDisc(const float* SKYVAULT_RESTRICT x, const float* SKYVAULT_RESTRICT y,
                     const float* SKYVAULT_RESTRICT z, int n, float logoSize,
                     std::uint32_t* SKYVAULT_RESTRICT onDisc) {
    for (int i = 0; i < n; ++i) {
        const float down = -y[i];
        const float u = x[i] / y[i], w = z[i] / y[i];
        const float radius = SquareRoot(u * u + w * w);
        const std::uint32_t below = down > 0.0f ? 1 : 0;
        const std::uint32_t beforeX = down >= std::fabs(x[i]) ? below : 0;
        const std::uint32_t beforeZ = down >= std::fabs(z[i]) ? beforeX : 0;
        onDisc[i] = radius < logoSize ? beforeZ : 0;
    }
}

static void HorizonCurve(float* y, int n, float power) {
    const double wide = static_cast<double>(power);
    for (int i = 0; i < n; ++i) y[i] = 2.0f * PowPositive((y[i] + 1.0f) * 0.5f, wide) - 1.0f;
}

static void PixelOffsets(const std::uint32_t* SKYVAULT_RESTRICT columns,
                         const std::uint32_t* SKYVAULT_RESTRICT rows, int n, std::uint32_t stride,
                         std::uint32_t bytesPerPixel, std::uint64_t origin,
                         std::uint64_t* SKYVAULT_RESTRICT offsets) {
    for (int i = 0; i < n; ++i) {
        offsets[i] = origin + static_cast<std::uint64_t>(rows[i]) * stride +
                     static_cast<std::uint64_t>(columns[i]) * bytesPerPixel;
    }
}

/// x / divisor, correctly rounded. reciprocal: 1 / divisor, correctly rounded. Where the processor multiplies
/// and adds in one step, the remainder is exact and corrects the product by the reciprocal to the very bits
/// of the division (Markstein), at a fraction of its cost.
template <typename Real>
SKYVAULT_INLINE Real DivideBy(Real x, Real divisor, [[maybe_unused]] Real reciprocal) {
    if constexpr (kHasFma) {
        const Real quotient = x * reciprocal;
        return std::fma(std::fma(-quotient, divisor, x), reciprocal, quotient);
    } else {
        return x / divisor;
    }
}

/// Whether both are numbers.
SKYVAULT_INLINE bool AreNumbers(float a, float b) {
    const float sum = a + b;  // never infinities of both signs
    return sum == sum;
}

/// Positions of the directions whose position is NaN, worked out in full. True when some remain NaN.
static bool PlaceRareDirections(const float* x, const float* y, const float* z, int n,
                                const EquirectGrid& grid, float* columnPosition, float* rowPosition) {
    bool missing = false;
    for (int i = 0; i < n; ++i) {
        if (AreNumbers(columnPosition[i], rowPosition[i])) continue;
        const bool onAxis = x[i] == 0.0f && z[i] == 0.0f;
        const float longitude = onAxis ? 0.0f : Atan2(x[i], z[i]);
        const float pole = y[i] > 0.0f ? kPi * 0.5f : -kPi * 0.5f;
        const float latitude = onAxis ? pole : Atan2(y[i], SquareRoot(x[i] * x[i] + z[i] * z[i]));
        columnPosition[i] = (longitude + kPi) * static_cast<float>(grid.width) / kTwoPi;
        rowPosition[i] =
            static_cast<float>((kHalfPiWide - static_cast<double>(latitude)) * grid.height / kPiWide);
        missing = missing || !AreNumbers(columnPosition[i], rowPosition[i]);
    }
    return missing;
}

/// Pixels nearest to positions of 0 .. size along a circle of pixels; 0 for NaN.
static void RoundAround(const float* SKYVAULT_RESTRICT positions, int n, std::uint32_t size,
                        std::uint32_t* SKYVAULT_RESTRICT pixels) {
    for (int i = 0; i < n; ++i) {
        const float position = positions[i] > 0.0f ? positions[i] : 0.0f;
        const std::uint32_t pixel = static_cast<std::uint32_t>(RoundPositive(position));
        const std::uint32_t wrapped = pixel - size;  // huge but for pixel ≥ size
        pixels[i] = wrapped < pixel ? wrapped : pixel;
    }
}

static bool EquirectOffsets(const float* SKYVAULT_RESTRICT x, const float* SKYVAULT_RESTRICT y,
                            const float* SKYVAULT_RESTRICT z, int n, const EquirectGrid& grid,
                            std::uint64_t* SKYVAULT_RESTRICT offsets) {
    const float width = static_cast<float>(grid.width);
    const double height = static_cast<double>(grid.height);

    alignas(64) float columnPosition[kBlockSize], rowPosition[kBlockSize];
    alignas(64) std::uint32_t columns[kBlockSize], rows[kBlockSize];
    // Short loops: the processor overlaps more of their iterations than of one long one.
    for (int i = 0; i < n; ++i) {
        columnPosition[i] = DivideBy((Atan2Apart(x[i], z[i]) + kPi) * width, kTwoPi, 1.0f / kTwoPi);
    }
    for (int i = 0; i < n; ++i) {
        const float across = SquareRoot(x[i] * x[i] + z[i] * z[i]);
        rowPosition[i] = std::copysign(AtanFirstQuadrant(std::fabs(y[i]), across), y[i]);
    }
    for (int i = 0; i < n; ++i) {
        const double fromZenith = kHalfPiWide - static_cast<double>(rowPosition[i]);
        rowPosition[i] = static_cast<float>(DivideBy(fromZenith * height, kPiWide, 1.0 / kPiWide));
    }
    // The zenith, the nadir and what is no direction at all leave NaN.
    std::int32_t rare = 0;
    for (int i = 0; i < n; ++i) rare |= AreNumbers(columnPosition[i], rowPosition[i]) ? 0 : 1;
    bool missing = false;
    if (rare != 0) missing = PlaceRareDirections(x, y, z, n, grid, columnPosition, rowPosition);
    RoundAround(columnPosition, n, grid.width, columns);
    RoundAround(rowPosition, n, grid.height, rows);
    PixelOffsets(columns, rows, n, grid.stride, grid.bytesPerPixel, grid.origin, offsets);
    if (missing) {
        for (int i = 0; i < n; ++i) {
            if (!AreNumbers(columnPosition[i], rowPosition[i])) offsets[i] = kNoPixel;
        }
    }
    return missing;
}

static bool CubeOffsets(const float* SKYVAULT_RESTRICT x, const float* SKYVAULT_RESTRICT y,
                        const float* SKYVAULT_RESTRICT z, int n, const CubeGrid& grid,
                        std::int32_t* SKYVAULT_RESTRICT faces, std::uint64_t* SKYVAULT_RESTRICT offsets) {
    const std::int32_t last = static_cast<std::int32_t>(grid.size) - 1;
    const float h = static_cast<float>(last * 0.5);

    // The face by the dominant component; ties go to z, then x.
    for (int i = 0; i < n; ++i) {
        const float ax = std::fabs(x[i]), ay = std::fabs(y[i]), az = std::fabs(z[i]);
        const float acrossMax = ax > ay ? ax : ay;
        const std::int32_t frontOrBack = z[i] > 0.0f ? 0 : 2;
        const std::int32_t rightOrLeft = x[i] > 0.0f ? 1 : 3;
        const std::int32_t topOrBottom = y[i] > 0.0f ? 4 : 5;
        const std::int32_t across = ax >= ay ? rightOrLeft : topOrBottom;
        faces[i] = az >= acrossMax ? frontOrBack : across;
    }
    // Faces as masks from here on: reading them back keeps the selects apart, or the compiler merges them
    // into boolean arithmetic it cannot turn into vectors.
    alignas(64) std::uint32_t columns[kBlockSize], rows[kBlockSize];
    alignas(64) float sums[kBlockSize];
    for (int i = 0; i < n; ++i) {
        const float dx = x[i], dy = y[i], dz = z[i];
        const std::int32_t face = faces[i];
        const float axisOdd = (face & 1) == 0 ? dz : dx;
        const float axis = face >= 4 ? dy : axisOdd;
        const float alongColumns = (face & 5) == 1 ? dz : dx;
        const float alongRows = face >= 4 ? dz : dy;
        // The quotients carry the sign of the dominant component. Columns run against theirs on Right,
        // Left and Bottom (odd faces), rows on Front and Right.
        const float columnQuotient = h * alongColumns / axis;
        const float rowQuotient = h * alongRows / axis;
        const float columnPosition = h + ((face & 1) == 1 ? -columnQuotient : columnQuotient);
        const float rowPosition = h + (face < 2 ? -rowQuotient : rowQuotient);
        // NaN for the zero vector, for NaN and for infinities: 0/0, NaN/…, ∞/∞.
        sums[i] = columnPosition + rowPosition + (std::fabs(dx) + std::fabs(dy) + std::fabs(dz));
        const std::int32_t column = static_cast<std::int32_t>(columnPosition > 0.0f ? columnPosition : 0.0f);
        const std::int32_t row = static_cast<std::int32_t>(rowPosition > 0.0f ? rowPosition : 0.0f);
        columns[i] = static_cast<std::uint32_t>(column > last ? last : column);
        rows[i] = static_cast<std::uint32_t>(row > last ? last : row);
    }
    std::int32_t missing = 0;
    for (int i = 0; i < n; ++i) missing |= sums[i] == sums[i] ? 0 : 1;
    PixelOffsets(columns, rows, n, grid.stride, grid.bytesPerPixel, 0, offsets);
    if (missing != 0) {
        for (int i = 0; i < n; ++i) {
            if (sums[i] != sums[i]) {
                faces[i] = 0;
                offsets[i] = kNoPixel;
            }
        }
    }
    return missing != 0;
}

static void EquirectDirections(const float* SKYVAULT_RESTRICT sinLongitude,
                               const float* SKYVAULT_RESTRICT cosLongitude, float sinLatitude,
                               float cosLatitude, float* SKYVAULT_RESTRICT x, float* SKYVAULT_RESTRICT y,
                               float* SKYVAULT_RESTRICT z, int n) {
    for (int i = 0; i < n; ++i) {
        x[i] = cosLatitude * sinLongitude[i];
        y[i] = sinLatitude;
        z[i] = cosLatitude * cosLongitude[i];
    }
}

static void SphericalDirections(const float* SKYVAULT_RESTRICT longitude,
                                const float* SKYVAULT_RESTRICT latitude, float* SKYVAULT_RESTRICT x,
                                float* SKYVAULT_RESTRICT y, float* SKYVAULT_RESTRICT z, int n) {
    for (int i = 0; i < n; ++i) {
        const float cosLatitude = Cos(latitude[i]);
        x[i] = cosLatitude * Sin(longitude[i]);
        y[i] = Sin(latitude[i]);
        z[i] = cosLatitude * Cos(longitude[i]);
    }
}

static void FaceVectors(CubeFace face, const float* SKYVAULT_RESTRICT across, float down, int n,
                        float* SKYVAULT_RESTRICT x, float* SKYVAULT_RESTRICT y, float* SKYVAULT_RESTRICT z) {
    // Which way the columns run, −1 or 1, and what stays the same along the row.
    const bool sideways = face == CubeFace::Right || face == CubeFace::Left;
    float* SKYVAULT_RESTRICT along = sideways ? z : x;
    float* SKYVAULT_RESTRICT fixed = sideways ? x : z;
    const bool against = face == CubeFace::Right || face == CubeFace::Back;
    const float direction = against ? -1.0f : 1.0f;
    float fixedValue = 1.0f, height = -down;
    if (face == CubeFace::Back || face == CubeFace::Left) fixedValue = -1.0f;
    if (face == CubeFace::Top) fixedValue = down, height = 1.0f;
    if (face == CubeFace::Bottom) fixedValue = -down, height = -1.0f;
    for (int i = 0; i < n; ++i) {
        along[i] = direction * across[i];
        fixed[i] = fixedValue;
        y[i] = height;
    }
}

const RowKernels kRowKernels = {
    .name = kSetName,
    .normalize = Normalize,
    .absolute = Absolute,
    .transform = Transform,
    .logoDisc = LogoDisc,
    .horizonCurve = HorizonCurve,
    .equirectOffsets = EquirectOffsets,
    .cubeOffsets = CubeOffsets,
    .equirectDirections = EquirectDirections,
    .sphericalDirections = SphericalDirections,
    .faceVectors = FaceVectors,
};

}  // namespace skyvault::KERNEL_SET
