// Elementary functions for row loops: plain arithmetic that the compiler turns into vectors, with the same
// bits for one value or a row of them, on every compiler and instruction set.
//
// The C library's functions do not vectorise and differ between platforms. Measured against correctly
// rounded results, each function here is at most 2 units in the last place off (fast_math_test).
//
// No early exits and no calls: only selects. Multiplications and additions must not be contracted
// (-ffp-contract=off).
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

// Kernels are compiled more than once, for different instruction sets. Always inlined, these functions
// leave no shared copy behind that a linker could pick for a processor that cannot run it.
#if defined(_MSC_VER)
#define SKYVAULT_INLINE static __forceinline
#else
#define SKYVAULT_INLINE static inline __attribute__((always_inline))
#endif

// A promise that an array is reached through no other pointer.
#if defined(_MSC_VER)
#define SKYVAULT_RESTRICT __restrict
#else
#define SKYVAULT_RESTRICT __restrict__
#endif

namespace skyvault {

SKYVAULT_INLINE float SquareRoot(float x) {
    return ::sqrtf(x);
}

/// Arc tangent of y/x for y, x ≥ 0, radians, 0..π/2. (0, 0) gives NaN; NaN in, NaN out.
/// atan(q) = q + q·z·P(z), z = q², for q ≤ 1, and the complement beyond. P is a minimax polynomial whose
/// error is below 2e-8 of the result.
SKYVAULT_INLINE float AtanFirstQuadrant(float y, float x) {
    constexpr float kHalfPiHigh = 1.5707964f, kHalfPiLow = -4.371139e-8f;  // π/2 = high + low
    // Written as the processor's minimum and maximum are, and so that NaN stays.
    const float small = y < x ? y : x;
    const float large = y < x ? x : y;
    const float q = small / large;
    const float z = q * q;
    // Not Horner's way: fewer steps wait for each other.
    const float zz = z * z;
    const float p0 = (0.19993767f * z - 0.33333153f) + zz * (0.10665884f * z - 0.14211008f);
    const float p4 = (0.043213706f * z - 0.07552159f) + zz * (0.0029216404f * z - 0.01637049f);
    const float angle = q + q * z * (p0 + zz * zz * p4);
    // Without π/2's second part its rounding would show just above π/4.
    return y > x ? kHalfPiHigh - (angle - kHalfPiLow) : angle;
}

/// Arc tangent of y/x in the right quadrant, radians, −π..π (π in single precision). (0, 0) gives NaN;
/// x = −0 counts as +0; NaN in, NaN out.
SKYVAULT_INLINE float Atan2Apart(float y, float x) {
    const float angle = AtanFirstQuadrant(std::fabs(y), std::fabs(x));
    return std::copysign(x < 0.0f ? 3.1415927f - angle : angle, y);
}

/// The same with 0 for (0, 0).
SKYVAULT_INLINE float Atan2(float y, float x) {
    return std::fabs(y) + std::fabs(x) == 0.0f ? y : Atan2Apart(y, x);
}

/// Sine and cosine in double precision, for single-precision arguments up to 1e5: then below 1e-15 off.
struct SineCosine {
    double sine, cosine;
};

SKYVAULT_INLINE SineCosine SinCosWide(double x) {
    // π/2 in two parts; the first has 33 bits, so that its multiples below 2^20 are exact.
    constexpr double kHalfPiHigh = 1.570796326734125614166259765625;
    constexpr double kHalfPiLow = 6.077100506506192e-11;
    constexpr double kRoundToInteger = 6755399441055744.0;  // 1.5 · 2^52
    const double shifted = x * 0.6366197723675814 + kRoundToInteger;
    std::int64_t bits;
    std::memcpy(&bits, &shifted, sizeof bits);
    const double k = shifted - kRoundToInteger;
    const double r = (x - k * kHalfPiHigh) - k * kHalfPiLow;
    const double u = r * r;
    const double sine =
        r + r * u *
                (((((1.5918095213923302e-10 * u - 2.5051131371832213e-08) * u + 2.755731610028131e-06) * u -
                   0.00019841269836754193) *
                      u +
                  0.008333333333330946) *
                     u -
                 0.16666666666666666);
    const double cosine =
        (1.0 - 0.5 * u) +
        u * u *
            (((((-1.1382596874259135e-11 * u + 2.08761457309099e-09) * u - 2.7557317268818837e-07) * u +
               2.4801587298758923e-05) *
                  u -
              0.001388888888888739) *
                 u +
             0.041666666666666664);
    const bool odd = (bits & 1) != 0;
    const bool negateSine = (bits & 2) != 0;
    const bool negateCosine = ((bits + 1) & 2) != 0;
    const double s = odd ? cosine : sine;
    const double c = odd ? sine : cosine;
    return {negateSine ? -s : s, negateCosine ? -c : c};
}

/// Single-precision sine and cosine, correctly rounded but for rare ties. |x| ≤ 1e5; NaN in, NaN out.
SKYVAULT_INLINE float Sin(float x) {
    return static_cast<float>(SinCosWide(static_cast<double>(x)).sine);
}
SKYVAULT_INLINE float Cos(float x) {
    return static_cast<float>(SinCosWide(static_cast<double>(x)).cosine);
}

/// Sine and cosine together in single precision, a quarter of the cost of Sin and Cos: at most 2 units off
/// for |x| ≤ 100, off by up to |x| · 2^-23 more beyond that. |x| ≤ 1e5; NaN in, NaN out. The polynomials
/// interpolate at Chebyshev nodes.
struct SineCosineSingle {
    float sine, cosine;
};

SKYVAULT_INLINE SineCosineSingle SinCos(float x) {
    constexpr float kRoundToInteger = 12582912.0f;  // 1.5 · 2^23
    // π/2 in three parts; the first two have 18 bits, so that their multiples below 2^6 are exact.
    constexpr float kHalfPiHigh = 1.5707932f, kHalfPiMiddle = 3.1749369e-06f, kHalfPiLow = 2.563344e-12f;
    const float shifted = x * 0.63661975f + kRoundToInteger;
    std::int32_t bits;
    std::memcpy(&bits, &shifted, sizeof bits);
    const float k = shifted - kRoundToInteger;
    const float r = ((x - k * kHalfPiHigh) - k * kHalfPiMiddle) - k * kHalfPiLow;
    const float u = r * r;
    const float sine = r + r * u * ((-0.00019581439f * u + 0.008332718f) * u - 0.16666664f);
    const float cosine =
        (1.0f - 0.5f * u) + u * u * ((2.4541477e-05f * u - 0.0013888273f) * u + 0.041666664f);
    const bool odd = (bits & 1) != 0;
    float s = odd ? cosine : sine;
    float c = odd ? sine : cosine;
    // The signs by their bits: the second bit of the quadrant, and of the next one.
    std::uint32_t sineBits, cosineBits;
    std::memcpy(&sineBits, &s, sizeof sineBits);
    std::memcpy(&cosineBits, &c, sizeof cosineBits);
    sineBits ^= static_cast<std::uint32_t>(bits & 2) << 30;
    cosineBits ^= static_cast<std::uint32_t>((bits + 1) & 2) << 30;
    std::memcpy(&s, &sineBits, sizeof s);
    std::memcpy(&c, &cosineBits, sizeof c);
    return {s, c};
}

/// log2 in double precision, in two steps so that a loop can share one division among several logarithms:
/// x = 2^exponent · (1 + t)/(1 − t) with t = numerator/denominator.
/// x: normal, > 0. 0 counts as about 2^−1023; a negative or NaN x gives any number.
struct Log2Parts {
    double exponent, numerator, denominator;  ///< denominator in 1.7 .. 2.42
};

SKYVAULT_INLINE Log2Parts SplitForLog2(double x) {
    // x = 2^e · m with m in √½..√2.
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    constexpr std::uint64_t kSqrtHalfBits = 0x3fe6a09e667f3bcd;
    constexpr std::uint64_t kOneBits = 0x3ff0000000000000;
    constexpr std::uint64_t kMantissa = 0x000fffffffffffff;
    const std::uint64_t shiftedBits = bits + (kOneBits - kSqrtHalfBits);
    // The exponent as a double, through the mantissa of 2^52: vectors of 64-bit integers cannot be converted.
    constexpr std::uint64_t kTwo52Bits = 0x4330000000000000;
    const std::uint64_t exponentBits = (shiftedBits >> 52) | kTwo52Bits;
    double exponent;
    std::memcpy(&exponent, &exponentBits, sizeof exponent);
    const std::uint64_t mantissaBits = (shiftedBits & kMantissa) + kSqrtHalfBits;
    double m;
    std::memcpy(&m, &mantissaBits, sizeof m);
    return {exponent - (4503599627370496.0 + 1023.0), m - 1.0, m + 1.0};
}

/// The series of the inverse hyperbolic tangent; good to the last places of a double.
SKYVAULT_INLINE double Log2OfParts(double exponent, double t) {
    const double u = t * t;
    const double v = u * u;
    // Not Horner's way: fewer steps wait for each other.
    const double p4 = (0.2614442493522915 * u + 0.32061638813224547) + 0.2429160853987535 * v;
    const double p2 = 0.4121984020482752 * u + 0.5770780172463286;
    const double p0 = 0.9617966939243345 * u + 2.885390081777927;
    return exponent + t * ((p4 * v + p2) * v + p0);
}

/// 2^y in double precision for |y| ≤ 1000, good to 4e-15: 2^(f/4) by a polynomial on −½..½, to the fourth.
SKYVAULT_INLINE double Exp2Wide(double y) {
    constexpr double kRoundToInteger = 6755399441055744.0;
    const double shifted = y + kRoundToInteger;
    std::uint64_t whole;
    std::memcpy(&whole, &shifted, sizeof whole);
    const double f = y - (shifted - kRoundToInteger);
    const double g = f * f;
    const double p4 = (9.311471407728417e-10 * f + 3.761635914719913e-08) * g +
                      (1.3021052574003661e-06 * f + 3.7570815251028396e-05);
    const double p0 = (0.000867251697889354 * f + 0.015014156685022578) * g + (0.17328679513998632 * f + 1.0);
    const double root = p4 * (g * g) + p0;
    const double square = root * root;
    const double p = square * square;
    std::uint64_t powerBits;
    std::memcpy(&powerBits, &p, sizeof powerBits);
    powerBits += whole << 52;
    double power;
    std::memcpy(&power, &powerBits, sizeof power);
    return power;
}

/// base^exponent for a finite exponent > 0, base up to the largest float. 0 gives 0, a negative or NaN base
/// NaN. Worked out in double precision; single precision overflows or vanishes long before 2^±1000.
SKYVAULT_INLINE float PowPositive(float base, double exponent) {
    const Log2Parts parts = SplitForLog2(static_cast<double>(base));
    const double log2 = Log2OfParts(parts.exponent, parts.numerator / parts.denominator);
    const double y = exponent * log2;
    const double low = y < -1000.0 ? -1000.0 : y;
    const double power = Exp2Wide(low > 1000.0 ? 1000.0 : low);
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    const float atMostZero = base == 0.0f ? 0.0f : kNan;
    return base > 0.0f ? static_cast<float>(power) : atMostZero;
}

/// base^exponent for base ≥ 0 and any finite exponent; a negative or NaN base gives NaN.
SKYVAULT_INLINE float Pow(float base, float exponent) {
    if (exponent == 0.0f) return 1.0f;
    if (base == 0.0f && exponent < 0.0f) return std::numeric_limits<float>::infinity();
    return PowPositive(base, static_cast<double>(exponent));
}

/// Halves away from zero, for 0 ≤ value < 2^31. NaN and anything outside gives an unspecified integer.
/// The addend is the largest float below ½: with ½ itself the float below n + ½ would round up to n + 1.
SKYVAULT_INLINE std::int32_t RoundPositive(float value) {
    return static_cast<std::int32_t>(value + 0.49999997f);
}

}  // namespace skyvault
