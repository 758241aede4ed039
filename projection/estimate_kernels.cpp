// Compiled once for every set of kernels; see row_kernels.cpp.
#include "projection/estimate_kernels.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "projection/direction.h"
#include "projection/fast_math.h"

namespace skyvault::KERNEL_SET {

/// With one rounding or two, whichever is quicker here.
SKYVAULT_INLINE float MultiplyAdd(float a, float b, float c) {
    if constexpr (kHasFma) return std::fma(a, b, c);
    return a * b + c;
}

/// Seven coefficients of an odd polynomial near the arc tangent of −1..1, 2.5e-7 off (minimax), times a
/// factor.
struct AtanPolynomial {
    float c0, c1, c2, c3, c4, c5, c6;

    explicit AtanPolynomial(float factor)
        : c0(factor * 0.99999611f),
          c1(factor * -0.33317368f),
          c2(factor * 0.19807816f),
          c3(factor * -0.13233342f),
          c4(factor * 0.079623672f),
          c5(factor * -0.033604220f),
          c6(factor * 0.0068117930f) {}
};

SKYVAULT_INLINE float EstimateAtan(float q, const AtanPolynomial& c) {
    const float z = q * q;
    float p = MultiplyAdd(c.c6, z, c.c5);
    p = MultiplyAdd(p, z, c.c4);
    p = MultiplyAdd(p, z, c.c3);
    p = MultiplyAdd(p, z, c.c2);
    p = MultiplyAdd(p, z, c.c1);
    p = MultiplyAdd(p, z, c.c0);
    return p * q;
}

/// value with its sign changed where the highest bit of `sign` is set.
SKYVAULT_INLINE float SignChanged(float value, std::uint32_t sign) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    bits ^= sign & 0x80000000u;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// value with its sign changed where `sign` is negative.
SKYVAULT_INLINE float TimesSign(float value, float sign) {
    std::uint32_t bits;
    std::memcpy(&bits, &sign, sizeof bits);
    return SignChanged(value, bits);
}

/// Fractions cut off a position of 0 .. most; at the limits what lies beyond, and 0 for NaN.
SKYVAULT_INLINE std::int32_t WholePart(float position, float most) {
    const float atLeast0 = position > 0.0f ? position : 0.0f;
    return static_cast<std::int32_t>(atLeast0 < most ? atLeast0 : most);
}

/// value with the sign bit cleared where the mask has it clear.
SKYVAULT_INLINE float Masked(float value, std::uint32_t mask) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    bits &= mask;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// The block's directions after mirrors and the turn; without either, the block itself.
template <bool kMoved>
struct MovedDirections {
    const float* x;
    const float* y;
    const float* z;
    DirectionBlock moved;

    MovedDirections(const DirectionBlock& block, int n, const EstimateTurn& turn) {
        if (!kMoved) {
            x = block.x, y = block.y, z = block.z;
            return;
        }
        const std::uint32_t yMask = turn.absoluteY ? 0x7fffffffu : 0xffffffffu;
        const std::uint32_t zMask = turn.absoluteZ ? 0x7fffffffu : 0xffffffffu;
        const float* SKYVAULT_RESTRICT fromX = turn.exchangeXz ? block.z : block.x;
        const float* SKYVAULT_RESTRICT fromY = block.y;
        const float* SKYVAULT_RESTRICT fromZ = turn.exchangeXz ? block.x : block.z;
        const auto& m = turn.m;
        const float m00 = m[0][0], m01 = m[0][1], m02 = m[0][2];
        const float m10 = m[1][0], m11 = m[1][1], m12 = m[1][2];
        const float m20 = m[2][0], m21 = m[2][1], m22 = m[2][2];
        for (int i = 0; i < n; ++i) {
            const float a = fromX[i], b = Masked(fromY[i], yMask), c = Masked(fromZ[i], zMask);
            moved.x[i] = MultiplyAdd(a, m00, MultiplyAdd(b, m10, c * m20));
            moved.y[i] = MultiplyAdd(a, m01, MultiplyAdd(b, m11, c * m21));
            moved.z[i] = MultiplyAdd(a, m02, MultiplyAdd(b, m12, c * m22));
        }
        x = moved.x, y = moved.y, z = moved.z;
    }
};

/// Lists the lanes whose flag is 1. Flags of lanes n .. kBlockSize − 1 are changed.
SKYVAULT_INLINE void ListLanes(std::uint32_t* SKYVAULT_RESTRICT flags, int n, LanesNearEdges& nearEdges) {
    // Eight lanes share a byte, one bit each: word w's bit 8b + k is lane 32k + 8w + b.
    constexpr int kBytes = kBlockSize / 8, kWords = kBytes / 8;
    for (int i = n; i < kBlockSize; ++i) flags[i] = 0;
    std::uint8_t bytes[kBytes];
    for (int j = 0; j < kBytes; ++j) {
        std::uint32_t bits = 0;
        for (int k = 0; k < 8; ++k) bits |= flags[k * kBytes + j] << k;
        bytes[j] = static_cast<std::uint8_t>(bits);
    }
    int count = 0;
    for (int w = 0; w < kWords; ++w) {
        std::uint64_t word;
        std::memcpy(&word, bytes + 8 * w, sizeof word);
        for (; word != 0; word &= word - 1) {
            const int bit = std::countr_zero(word);
            nearEdges.lanes[count++] = static_cast<std::uint8_t>((bit % 8) * kBytes + 8 * w + bit / 8);
        }
    }
    nearEdges.count = count;
}

template <bool kMoved>
static void FindInEquirect(const DirectionBlock& block, int n, const EquirectGrid& grid,
                           const EstimateTurn& turn, std::uint64_t* SKYVAULT_RESTRICT addresses,
                           LanesNearEdges& nearEdges) {
    const float width = static_cast<float>(grid.width), height = static_cast<float>(grid.height);
    // Half a pixel more, to round by cutting off.
    const float left = 0.5f, middle = 0.5f * width + 0.5f, right = width + 0.5f;
    const float halfHeight = 0.5f * height, horizon = halfHeight + 0.5f;
    const AtanPolynomial aroundPolynomial(2.0f * width / kTwoPi), upPolynomial(height / kPi);
    const float columnMargin = kColumnMargin * width, rowMargin = kRowMargin * height;
    const float poleMargin = kPoleMargin * width;

    // Short loops: the processor overlaps more of their iterations than of one long one.
    const MovedDirections<kMoved> source(block, n, turn);
    alignas(64) float acrosses[kBlockSize], arounds[kBlockSize], ups[kBlockSize];
    for (int i = 0; i < n; ++i) {
        acrosses[i] = SquareRoot(MultiplyAdd(source.x[i], source.x[i], source.z[i] * source.z[i]));
    }
    for (int i = 0; i < n; ++i) {
        const float across = acrosses[i], ay = std::fabs(source.y[i]);
        // Half the longitude, from the front or from the back, is the arc tangent of x / (across + |z|).
        const float besides = across + std::fabs(source.z[i]);
        const float smallUp = ay < across ? ay : across, largeUp = ay < across ? across : ay;
        // One division for both quotients.
        const float reciprocal = 1.0f / (besides * largeUp);
        arounds[i] = source.x[i] * (largeUp * reciprocal);
        ups[i] = smallUp * (besides * reciprocal);
    }
    alignas(64) float columns[kBlockSize], rows[kBlockSize];
    for (int i = 0; i < n; ++i) {
        const float back = source.x[i] < 0.0f ? left : right;
        const float from = source.z[i] < 0.0f ? back : middle;
        // Adding 0 makes +0 of −0, which is no further back.
        columns[i] = from + TimesSign(EstimateAtan(arounds[i], aroundPolynomial), source.z[i] + 0.0f);
    }
    for (int i = 0; i < n; ++i) {
        const float up = EstimateAtan(ups[i], upPolynomial);
        const float fromHorizon = std::fabs(source.y[i]) > acrosses[i] ? halfHeight - up : up;
        rows[i] = horizon - TimesSign(fromHorizon, source.y[i]);
    }
    alignas(64) std::uint32_t flags[kBlockSize];
    const float columnReach = 0.5f - columnMargin, rowReach = 0.5f - rowMargin;
    for (int i = 0; i < n; ++i) {
        const std::int32_t column = WholePart(columns[i], width + 1.0f);
        const std::int32_t row = WholePart(rows[i], height + 1.0f);
        const float columnOff = std::fabs(columns[i] - static_cast<float>(column) - 0.5f);
        const float rowOff = std::fabs(rows[i] - static_cast<float>(row) - 0.5f);
        const float columnRoom =
            MultiplyAdd(columnReach - columnOff, acrosses[i], -poleMargin * std::fabs(source.y[i]));
        // NaN leaves no room.
        flags[i] = ((columnRoom > 0.0f) & (rowReach > rowOff)) ? 0 : 1;
        // One past the last is the first again.
        const std::uint32_t c = static_cast<std::uint32_t>(column), r = static_cast<std::uint32_t>(row);
        const std::uint32_t wrappedColumn = c == grid.width ? 0 : c, wrappedRow = r == grid.height ? 0 : r;
        addresses[i] = grid.origin + (wrappedRow * grid.stride + wrappedColumn * grid.bytesPerPixel);
    }
    ListLanes(flags, n, nearEdges);
}

template <bool kMoved>
static void FindInFaces(const DirectionBlock& block, int n, const FacesInMemory& faces,
                        const EstimateTurn& turn, std::uint64_t* SKYVAULT_RESTRICT addresses,
                        LanesNearEdges& nearEdges) {
    const float size = static_cast<float>(faces.grid.size), h = (size - 1.0f) * 0.5f;
    // One select finds both: a face's number in the low bits, which are free, and where its pixels begin.
    const std::uint32_t front = faces.bases[0], right = faces.bases[1] | 1, back = faces.bases[2] | 2,
                        left = faces.bases[3] | 3, top = faces.bases[4] | 4, bottom = faces.bases[5] | 5;
    const MovedDirections<kMoved> source(block, n, turn);
    alignas(64) std::uint32_t flags[kBlockSize], bases[kBlockSize];
    for (int i = 0; i < n; ++i) {
        const float x = source.x[i], y = source.y[i], z = source.z[i];
        const float ax = std::fabs(x), ay = std::fabs(y), az = std::fabs(z);
        const float larger = ax > ay ? ax : ay;
        const std::uint32_t frontOrBack = z > 0.0f ? front : back;
        const std::uint32_t rightOrLeft = x > 0.0f ? right : left;
        const std::uint32_t topOrBottom = y > 0.0f ? top : bottom;
        const std::uint32_t other = ax >= ay ? rightOrLeft : topOrBottom;
        bases[i] = az >= larger ? frontOrBack : other;
    }
    const float reach = 0.5f - kFacePixelMargin * size;
    for (int i = 0; i < n; ++i) {
        const std::uint32_t face = bases[i] & 7;
        const float x = source.x[i], y = source.y[i], z = source.z[i];
        const float axisOdd = (face & 1) == 0 ? z : x;
        const float axis = face >= 4 ? y : axisOdd;
        const float alongColumns = (face & 5) == 1 ? z : x;
        const float alongRows = face >= 4 ? z : y;
        // As in the exact lookup, the quotients carry the sign of the axis.
        const float reciprocal = h / axis;
        const float columnPosition = MultiplyAdd(alongColumns, SignChanged(reciprocal, face << 31), h);
        const float rowPosition = MultiplyAdd(alongRows, SignChanged(reciprocal, face - 2), h);
        const std::int32_t column = WholePart(columnPosition, size);
        const std::int32_t row = WholePart(rowPosition, size);
        const float columnOff = std::fabs(columnPosition - static_cast<float>(column) - 0.5f);
        const float rowOff = std::fabs(rowPosition - static_cast<float>(row) - 0.5f);
        // NaN leaves no room.
        flags[i] = ((columnOff < reach) & (rowOff < reach)) ? 0 : 1;
        const std::uint32_t offset = static_cast<std::uint32_t>(row) * faces.grid.stride +
                                     static_cast<std::uint32_t>(column) * faces.grid.bytesPerPixel;
        addresses[i] = faces.origin + ((bases[i] - face) + offset);
    }
    ListLanes(flags, n, nearEdges);
}

static bool Moves(const EstimateTurn& turn) {
    return turn.exchangeXz || turn.absoluteY || turn.absoluteZ || turn.turned;
}

static void Equirect(const DirectionBlock& block, int n, const EquirectGrid& grid, const EstimateTurn& turn,
                     std::uint64_t* addresses, LanesNearEdges& nearEdges) {
    if (Moves(turn)) {
        FindInEquirect<true>(block, n, grid, turn, addresses, nearEdges);
    } else {
        FindInEquirect<false>(block, n, grid, turn, addresses, nearEdges);
    }
}

static void Faces(const DirectionBlock& block, int n, const FacesInMemory& faces, const EstimateTurn& turn,
                  std::uint64_t* addresses, LanesNearEdges& nearEdges) {
    if (Moves(turn)) {
        FindInFaces<true>(block, n, faces, turn, addresses, nearEdges);
    } else {
        FindInFaces<false>(block, n, faces, turn, addresses, nearEdges);
    }
}

static bool NearNadir(const DirectionBlock& block, int n, float radius) {
    const float* SKYVAULT_RESTRICT x = block.x;
    const float* SKYVAULT_RESTRICT y = block.y;
    const float* SKYVAULT_RESTRICT z = block.z;
    // x² + z² < radius²·y², with more room than roundings need.
    const float wide = radius * radius * 1.0001f;
    std::uint32_t near = 0;
    for (int i = 0; i < n; ++i) {
        const float down = y[i] < 0.0f ? y[i] : 0.0f;
        near |= x[i] * x[i] + z[i] * z[i] <= wide * (down * down) ? 1 : 0;
    }
    return near != 0;
}

const EstimateKernels kEstimateKernels = {.equirect = Equirect, .faces = Faces, .nearNadir = NearNadir};

}  // namespace skyvault::KERNEL_SET
