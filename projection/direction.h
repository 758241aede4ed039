// Viewing directions.
//
// +X points to the viewer's right, +Y up, +Z to the front (the centre of an equirectangular picture).
// Directions need not have unit length: every lookup depends only on ratios.
#pragma once

namespace skyvault {

struct Direction {
    float x = 0, y = 0, z = 0;
};

/// π as the projections use it, in single precision, and its exact value in double precision.
inline constexpr float kPi = 3.1415927f;
inline constexpr float kTwoPi = 6.2831855f;
inline constexpr double kPiWide = 3.1415927410125732;      // kPi
inline constexpr double kHalfPiWide = 1.5707963705062866;  // kPi / 2

/// To unit length, by 1/√(x² + y² + z²). A squared length of exactly 0 or 1 changes nothing.
void Normalize(Direction& d);

/// Radians. longitude −π..π: front 0, right +π/2, back ±π, left −π/2. latitude −π/2..π/2, up positive.
struct Spherical {
    float longitude = 0, latitude = 0;
};

/// x = z = 0 gives longitude 0 and latitude +π/2 for y > 0, −π/2 otherwise (the zero vector included).
Spherical ToSpherical(const Direction& d);

}  // namespace skyvault
