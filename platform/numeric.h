// Small numeric helpers shared by the whole program.
#pragma once

#include <cstdint>

namespace skyvault {

/// 2 for n < 3, otherwise the smallest power of two ≥ n; 2^30, the largest an int holds, beyond that.
constexpr std::int32_t NextPowerOfTwo(std::int32_t n) {
    std::int32_t power = 2;
    while (power < n && power < (1 << 30)) power *= 2;
    return power;
}

// A value below `low` gives low, one above `high` gives high; NaN stays NaN.

constexpr std::int32_t ClampInt(std::int32_t value, std::int32_t low, std::int32_t high) {
    return value < low ? low : value > high ? high : value;
}
constexpr float ClampFloat(float value, float low, float high) {
    return value < low ? low : value > high ? high : value;
}
constexpr float Clamp01(float value) {
    return ClampFloat(value, 0.0f, 1.0f);
}

/// Rounds halves away from zero to an integer; the caller keeps the value within int.
constexpr std::int32_t RoundHalfAway(float value) {
    const std::int32_t whole = static_cast<std::int32_t>(value);
    const float rest = value - static_cast<float>(whole);  // exact
    return whole + (rest >= 0.5f) - (rest <= -0.5f);
}

}  // namespace skyvault
