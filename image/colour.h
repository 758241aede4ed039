// Colour records: one per channel type, and the tagged value that carries all three.
#pragma once

#include <cstdint>

#include "image/half.h"
#include "image/pixel_format.h"

namespace skyvault {

/// Constructed from (red, green, blue, alpha), stored blue, green, red, alpha. Default: opaque black.
struct Color8 {
    std::uint8_t blue = 0, green = 0, red = 0, alpha = 255;

    constexpr Color8() = default;
    constexpr Color8(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a)
        : blue(b), green(g), red(r), alpha(a) {}
    friend bool operator==(const Color8&, const Color8&) = default;
};

/// Default: black with alpha 65535.
struct Color16 {
    std::uint16_t red = 0, green = 0, blue = 0, alpha = 65535;
    friend bool operator==(const Color16&, const Color16&) = default;
};

/// Default: black with alpha 255.0, not 1.0; every conversion clamps it to opaque.
struct ColorHalf {
    Half red, green, blue, alpha{0x5bf8};
    friend bool operator==(const ColorHalf&, const ColorHalf&) = default;
};

/// A pixel in the channel type of its format: ChannelType(format) says which of the three members holds
/// the value, the others are ignored. Default: format None and three default colours.
struct PixelValue {
    PixelFormat format = PixelFormat::None;
    Color8 color8;
    Color16 color16;
    ColorHalf colorHalf;

    PixelValue() = default;
    /// An 8-bit colour, tagged Rgba8.
    explicit PixelValue(const Color8& colour) : format(PixelFormat::Rgba8), color8(colour) {}
};

inline constexpr Color8 kOpaqueWhite{255, 255, 255, 255};

}  // namespace skyvault
