// One pixel: half floats, colour records, and every rule of reading and writing the nine formats.
//
// Reading and writing are not each other's inverse: an 8-bit value v is written as 16 bits v × 256 + 255
// and as a half v / 256, while a half is read as trunc(h × 255). The rules hold for files made long ago.
// A channel converts the same way whether its pixel is read as another type or written from one:
//
//   to 8 bits:  from 16 the high byte; from a half trunc(h × 255), clamped, NaN 0
//   to 16 bits: from 8 v × 256 + 255; from a half trunc(h × 65535), clamped, NaN 0
//   to half:    from 8 and from 16 alike v / 256, rounded to nearest even
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "image/pixel_format.h"

namespace skyvault {

/// A 16-bit IEEE 754 float: 1 sign bit, 5 exponent bits (bias 15), 10 mantissa bits.
struct Half {
    std::uint16_t bits = 0;
    friend bool operator==(Half, Half) = default;
};

inline constexpr Half kHalfOne{0x3c00};

/// Exact for every half, denormals, infinities and NaN included.
inline float HalfToFloat(Half half) {
    const std::uint32_t magnitude = half.bits & 0x7fffu;
    const std::uint32_t sign = (half.bits & 0x8000u) << 16;
    // The exponent's bias goes from 15 to 127; the all-ones exponent of infinity and NaN stays all ones.
    const std::uint32_t bias = (magnitude < 0x7c00 ? 112u : 224u) << 23;
    const std::uint32_t normal = (magnitude << 13) + bias;
    const std::uint32_t denormal =
        std::bit_cast<std::uint32_t>(static_cast<float>(static_cast<int>(magnitude)) * 0x1p-24f);
    return std::bit_cast<float>(sign | (magnitude < 0x0400 ? denormal : normal));
}

/// Rounds to the nearest half, ties to even; from 65504 + 16 on to infinity; NaN stays NaN.
inline Half FloatToHalf(float value) {
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t magnitude = bits & 0x7fffffffu;
    // Rounding may carry into the exponent, which is the right result, up to infinity.
    const std::uint32_t normal = (magnitude - (112u << 23) + 0xfff + ((magnitude >> 13) & 1)) >> 13;
    // Next to 0.5 a float's last place is 2^-24, as a denormal half's: the addition does the rounding.
    const std::uint32_t denormal =
        std::bit_cast<std::uint32_t>(std::bit_cast<float>(magnitude) + 0.5f) - 0x3f000000u;
    const std::uint32_t special = magnitude > 0x7f800000u ? 0x7e00u | ((magnitude >> 13) & 0x3ffu) : 0x7c00u;
    std::uint32_t half = magnitude < 0x38800000u ? denormal : normal;
    half = magnitude >= 0x47800000u ? special : half;
    return Half{static_cast<std::uint16_t>(half | ((bits >> 16) & 0x8000u))};
}

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

/// Channel by channel trunc(b × t + a × (1 − t)); equal channels are kept as they are.
Color8 LerpColor8(const Color8& a, const Color8& b, float t);

/// Reads the pixel at p (BytesPerPixel(format) bytes). Grey goes to red, green and blue; alpha of formats
/// without alpha is full in the asked type: 255, 65535, half 1.0. Unknown formats and a null p give an
/// all-zero record.
Color8 ReadColor8(PixelFormat format, const std::byte* p);
Color16 ReadColor16(PixelFormat format, const std::byte* p);
ColorHalf ReadColorHalf(PixelFormat format, const std::byte* p);

/// Reads the pixel in its own channel type, tagged with its format.
PixelValue ReadPixel(PixelFormat format, const std::byte* p);

/// Writes one pixel. Does nothing for unknown formats or a null p. A PixelValue is written from the member
/// its format selects; with format None nothing is written.
void WriteColor8(PixelFormat format, std::byte* p, const Color8& colour);
void WriteColor16(PixelFormat format, std::byte* p, const Color16& colour);
void WriteColorHalf(PixelFormat format, std::byte* p, const ColorHalf& colour);
void WritePixel(PixelFormat format, std::byte* p, const PixelValue& value);

}  // namespace skyvault
