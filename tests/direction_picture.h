// A panorama whose colour tells the direction it lies in.
#pragma once

#include <algorithm>
#include <cmath>

#include "image/image.h"
#include "projection/direction.h"

namespace skyvault::test {

/// Equirectangular; red, green and blue are the direction's x, y and z, from −1..1 to 0..65535.
inline Image DirectionPicture(std::int32_t width) {
    const std::int32_t height = width / 2;
    Image image(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), PixelFormat::Rgb16);
    const auto channel = [](double v) { return static_cast<std::uint16_t>((v + 1) * 32767.5); };
    PixelValue value;
    value.format = PixelFormat::Rgb16;
    for (std::int32_t at = 0; at < width * height; ++at) {
        const double longitude = 2 * kPiWide * (at % width) / width - kPiWide;
        const double latitude = kHalfPiWide - kPiWide * (at / width) / height;
        value.color16 = {channel(std::cos(latitude) * std::sin(longitude)), channel(std::sin(latitude)),
                         channel(std::cos(latitude) * std::cos(longitude)), 65535};
        image.SetPixel(at % width, at / width, value);
    }
    return image;
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
