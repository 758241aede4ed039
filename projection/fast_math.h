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

namespace skyvault {

SKYVAULT_INLINE float SquareRoot(float x) {
    return ::sqrtf(x);
}

/// Arc tangent of y/x in the right quadrant, radians, −π..π (π in single precision).
/// (0, 0) gives 0; x = −0 counts as +0; NaN in, NaN out.
/// atan(q) = q + q·z·P(z), z = q², for q ≤ tan(π/8); larger ratios go through (a − b)/(a + b) and the
/// octants. P interpolates at Chebyshev nodes; its error is below 4e-9 of the result.
SKYVAULT_INLINE float Atan2(float y, float x) {
    constexpr float kTanPi8 = 0.41421357f;
    constexpr float kPiHigh = 3.1415927f, kPiLow = -8.742278e-8f;  // π = high + low
    const float ax = std::fabs(x);
    const float ay = std::fabs(y);
    const bool steep = ay > ax;
    const float small = steep ? ax : ay;
    const float large = steep ? ay : ax;
    const bool beyond = small > kTanPi8 * large;
    const float numerator = beyond ? small - large : small;
    const float sum = beyond ? small + large : large;
    const float denominator = sum == 0.0f ? 1.0f : sum;
    const float q = numerator / denominator;
    const float z = q * q;
    // Not Horner's way: fewer steps wait for each other.
    const float zz = z * z;
    const float p =
        (0.1999954f * z - 0.33333331f) + zz * ((0.10743258f * z - 0.14263912f) - 0.06450364f * zz);
    const float tail = q * z * p;
    // The constants' second parts keep the octants' offsets from costing accuracy.
    const float octant = beyond ? kPiHigh * 0.25f : 0.0f;
    const float octantLow = beyond ? kPiLow * 0.25f : 0.0f;
    float angle = octant + (q + (tail + octantLow));
    angle = steep ? kPiHigh * 0.5f - (angle - kPiLow * 0.5f) : angle;
    angle = x < 0.0f ? kPiHigh - (angle - kPiLow) : angle;
    return std::copysign(angle, y);
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

/// base^exponent in double precision for a finite exponent and a normal base > 0, within 2^±1000: results
/// beyond are one of these two. log2 by the series of the inverse hyperbolic tangent, then 2^f by a
/// polynomial on −½..½; each is good to about 1e-14, and log2's error grows with the exponent.
/// A base of 0 counts as about 2^−1023. A negative or NaN base gives any number.
SKYVAULT_INLINE double PowWide(double base, double exponent) {
    constexpr double kRoundToInteger = 6755399441055744.0;
    // log2(base): split into 2^e · m with m in √½..√2.
    std::uint64_t bits;
    std::memcpy(&bits, &base, sizeof bits);
    constexpr std::uint64_t kSqrtHalfBits = 0x3fe6a09e667f3bcd;
    constexpr std::uint64_t kOneBits = 0x3ff0000000000000;
    constexpr std::uint64_t kMantissa = 0x000fffffffffffff;
    const std::uint64_t shiftedBits = bits + (kOneBits - kSqrtHalfBits);
    // The exponent as a double, through the mantissa of 2^52: vectors of 64-bit integers cannot be converted.
    constexpr std::uint64_t kTwo52Bits = 0x4330000000000000;
    const std::uint64_t exponentBits = (shiftedBits >> 52) | kTwo52Bits;
    double exponentOfBase;
    std::memcpy(&exponentOfBase, &exponentBits, sizeof exponentOfBase);
    exponentOfBase -= 4503599627370496.0 + 1023.0;
    const std::uint64_t mantissaBits = (shiftedBits & kMantissa) + kSqrtHalfBits;
    double m;
    std::memcpy(&m, &mantissaBits, sizeof m);
    const double t = (m - 1.0) / (m + 1.0);
    const double u = t * t;
    const double log2m =
        t * (((((((0.2136687803743096 * u + 0.2209121446816957) * u + 0.26233438759537775) * u +
                 0.3205985342686444) *
                    u +
                0.4121985858469412) *
                   u +
               0.5770780163454936) *
                  u +
              0.9617966939259898) *
                 u +
             2.8853900817779268);
    const double product = exponent * (exponentOfBase + log2m);
    // 2^product, kept within what a double holds.
    const double low = product < -1000.0 ? -1000.0 : product;
    const double y = low > 1000.0 ? 1000.0 : low;
    const double shifted = y + kRoundToInteger;
    std::uint64_t whole;
    std::memcpy(&whole, &shifted, sizeof whole);
    const double f = y - (shifted - kRoundToInteger);
    const double p =
        ((((((((((4.4558179083360645e-10 * f + 7.074194297288521e-09) * f + 1.0178057087733941e-07) * f +
                1.3215432535912375e-06) *
                   f +
               1.5252733841556773e-05) *
                  f +
              0.00015403530463724353) *
                 f +
             0.001333355814640647) *
                f +
            0.009618129107587256) *
               f +
           0.055504108664821625) *
              f +
          0.24022650695910158) *
             f +
         0.6931471805599453) *
            f +
        1.0;
    std::uint64_t powerBits;
    std::memcpy(&powerBits, &p, sizeof powerBits);
    powerBits += whole << 52;
    double power;
    std::memcpy(&power, &powerBits, sizeof power);
    return power;
}

/// base^exponent for a finite exponent > 0, base up to the largest float. 0 gives 0, a negative or NaN base
/// NaN. Worked out in double precision; single precision overflows or vanishes long before PowWide does.
SKYVAULT_INLINE float PowPositive(float base, double exponent) {
    const double power = PowWide(static_cast<double>(base), exponent);
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
SKYVAULT_INLINE std::int32_t RoundPositive(float value) {
    const std::int32_t whole = static_cast<std::int32_t>(value);
    return whole + (value - static_cast<float>(whole) >= 0.5f ? 1 : 0);
}

}  // namespace skyvault
