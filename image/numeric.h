// Small numeric helpers shared by the whole program.
#pragma once

#include <cstdint>

#include "image/colour.h"

namespace skyvault {

/// 2 for n < 3, otherwise the smallest power of two ≥ n; 2^30, the largest an int holds, beyond that.
std::int32_t NextPowerOfTwo(std::int32_t n);

// A value below `low` gives low, one above `high` gives high; NaN stays NaN.

constexpr std::int32_t ClampInt(std::int32_t value, std::int32_t low, std::int32_t high) {
    return value < low ? low : value > high ? high : value;
}
constexpr std::uint32_t ClampUnsigned(std::uint32_t value, std::uint32_t low, std::uint32_t high) {
    return value < low ? low : value > high ? high : value;
}
constexpr float ClampFloat(float value, float low, float high) {
    return value < low ? low : value > high ? high : value;
}
constexpr float Clamp01(float value) {
    return ClampFloat(value, 0.0f, 1.0f);
}

/// Channel by channel trunc(b × t + a × (1 − t)); equal channels are kept as they are.
Color8 LerpColor8(const Color8& a, const Color8& b, float t);

/// base^exponent: products for 0..4, powf otherwise.
float IntegerPower(float base, std::int32_t exponent);

/// Rounds halves away from zero to an integer; the caller keeps the value within int.
constexpr std::int32_t RoundHalfAway(float value) {
    const std::int32_t whole = static_cast<std::int32_t>(value);
    const float rest = value - static_cast<float>(whole);  // exact
    return whole + (rest >= 0.5f) - (rest <= -0.5f);
}

}  // namespace skyvault
