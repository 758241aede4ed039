// Numbers of floating point as bytes of a picture, for files that none of the picture's formats holds.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace skyvault {

/// Linear light, full at 1, as sRGB; NaN is dark.
inline std::uint8_t DisplayByte(float linear) {
    if (!(linear > 0.0f)) return 0;
    const float encoded =
        linear <= 0.0031308f ? linear * 12.92f : 1.055f * std::pow(linear, 1.0f / 2.4f) - 0.055f;
    return static_cast<std::uint8_t>(std::min(encoded, 1.0f) * 255.0f + 0.5f);
}

/// Full at 1; NaN is nothing.
inline std::uint8_t PlainByte(float value) {
    return value == value ? static_cast<std::uint8_t>(std::clamp(value, 0.0f, 1.0f) * 255.0f + 0.5f) : 0;
}

}  // namespace skyvault
