// 16-bit IEEE 754 half floats: 1 sign bit, 5 exponent bits (bias 15), 10 mantissa bits.
#pragma once

#include <cstdint>

namespace skyvault {

struct Half {
    std::uint16_t bits = 0;
    friend bool operator==(Half, Half) = default;
};

/// Exact for every half, denormals, infinities and NaN included.
float HalfToFloat(Half half);

/// Rounds to the nearest half, ties to even; beyond 65504 + 16 to infinity; NaN stays NaN.
Half FloatToHalf(float value);

}  // namespace skyvault
