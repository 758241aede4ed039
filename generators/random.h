// The program's own random generator. Its sequence is part of what the generators draw.
//
// seed ← seed × 214013 + 2531011 (mod 2^32); a draw uses bits 16..30.
#pragma once

#include <cstdint>

namespace skyvault {

struct RandomXyz {
    float x = 0, y = 0, z = 0;
};

/// Seeds from the clock.
void SeedRandom();

/// While set, SeedRandom() takes this value instead of the clock (the console's --seed; tests).
void SetFixedSeed(std::uint32_t seed);
void ClearFixedSeed();

std::uint32_t RandomState();
void SetRandomState(std::uint32_t state);

/// 0 .. n − 1; for n < 2 the generator steps and 0 is returned; from n = 32767 on RandomFloat(n) truncated.
std::int32_t RandomInt(std::int32_t n);

/// 0 ≤ result < x in 10000 steps; for x ≤ 0 (and NaN) the generator steps and 0 is returned.
float RandomFloat(float x);

/// Between the two bounds, which may come in either order.
float RandomFloat(float a, float b);

/// Each component in −|size|/2 .. |size|/2, drawn z, y, x. Size 0 gives zeros and advances as much.
RandomXyz RandomVector(float size);

}  // namespace skyvault
