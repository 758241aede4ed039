// A panorama whose colour tells the direction it lies in.
#pragma once

#include <algorithm>
#include <cmath>

#include "projection/direction.h"
#include "tests/test_panorama.h"

namespace skyvault::test {

/// Equirectangular; red, green and blue are the direction's x, y and z, from −1..1 to 0..65535.
inline Image DirectionPicture(std::int32_t width) {
    const auto channel = [](double v) { return static_cast<std::uint16_t>((v + 1) * 32767.5); };
    return Drawn(width, width / 2, PixelFormat::Rgb16, [&](int column, int row) {
        const double longitude = 2 * kPiWide * column / width - kPiWide;
        const double latitude = kHalfPiWide - kPiWide * row / (width / 2);
        return Color16{channel(std::cos(latitude) * std::sin(longitude)), channel(std::sin(latitude)),
                       channel(std::cos(latitude) * std::cos(longitude)), 65535};
    });
}

/// How far a pixel of it is from a direction, in degrees.
inline double DegreesFrom(Direction d, const PixelValue& seen) {
    Image one(1, 1, PixelFormat::Rgb16);
    one.SetPixel(0, 0, seen);
    const Color16 c = one.GetPixel16(0, 0);
    Direction s{c.red / 32767.5f - 1, c.green / 32767.5f - 1, c.blue / 32767.5f - 1};
    Normalize(d);
    Normalize(s);
    return std::acos(std::min(1.0f, s.x * d.x + s.y * d.y + s.z * d.z)) * 57.29578;
}

}  // namespace skyvault::test
