// 16-bit IEEE 754 half floats: 1 sign bit, 5 exponent bits (bias 15), 10 mantissa bits.
#pragma once

#include <bit>
#include <cstdint>

namespace skyvault {

struct Half {
    std::uint16_t bits = 0;
    friend bool operator==(Half, Half) = default;
};

inline constexpr Half kHalfOne{0x3c00};

/// Exact for every half, denormals, infinities and NaN included.
inline float HalfToFloat(Half half) {
    const std::uint32_t magnitude = half.bits & 0x7fffu;
    const std::uint32_t sign = (half.bits & 0x8000u) << 16;
    // The exponent's bias goes from 15 to 127; the all-ones exponent of infinity and NaN stays all ones.
    const std::uint32_t bias = (magnitude < 0x7c00 ? 112u : 224u) << 23;
    const std::uint32_t normal = (magnitude << 13) + bias;
    const std::uint32_t denormal =
        std::bit_cast<std::uint32_t>(static_cast<float>(static_cast<int>(magnitude)) * 0x1p-24f);
    return std::bit_cast<float>(sign | (magnitude < 0x0400 ? denormal : normal));
}

/// Rounds to the nearest half, ties to even; from 65504 + 16 on to infinity; NaN stays NaN.
inline Half FloatToHalf(float value) {
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t magnitude = bits & 0x7fffffffu;
    // Rounding may carry into the exponent, which is the right result, up to infinity.
    const std::uint32_t normal = (magnitude - (112u << 23) + 0xfff + ((magnitude >> 13) & 1)) >> 13;
    // Next to 0.5 a float's last place is 2^-24, as a denormal half's: the addition does the rounding.
    const std::uint32_t denormal =
        std::bit_cast<std::uint32_t>(std::bit_cast<float>(magnitude) + 0.5f) - 0x3f000000u;
    const std::uint32_t special = magnitude > 0x7f800000u ? 0x7e00u | ((magnitude >> 13) & 0x3ffu) : 0x7c00u;
    std::uint32_t half = magnitude < 0x38800000u ? denormal : normal;
    half = magnitude >= 0x47800000u ? special : half;
    return Half{static_cast<std::uint16_t>(half | ((bits >> 16) & 0x8000u))};
}

}  // namespace skyvault
