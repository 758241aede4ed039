// Small numeric helpers shared by the whole program.
#pragma once

#include <cstdint>

#include "image/colour.h"

namespace skyvault {

/// 2 for n < 3, otherwise the smallest power of two ≥ n (2^31 for anything above that).
std::int32_t NextPowerOfTwo(std::int32_t n);

std::int32_t ClampInt(std::int32_t value, std::int32_t low, std::int32_t high);
std::uint32_t ClampUnsigned(std::uint32_t value, std::uint32_t low, std::uint32_t high);
float ClampFloat(float value, float low, float high);
float Clamp01(float value);

/// Channel by channel trunc(b × t + a × (1 − t)); equal channels are kept as they are.
Color8 LerpColor8(const Color8& a, const Color8& b, float t);

/// base^exponent: products for 0..4, powf otherwise.
float IntegerPower(float base, std::int32_t exponent);

/// Rounds halves away from zero to an integer; the caller keeps the value within int.
std::int32_t RoundHalfAway(float value);

}  // namespace skyvault
