// The nine pixel formats of a picture in memory.
//
//   value  name                      bytes  memory order
//   1      LDR 8 bpp R int           1      grey
//   2      HDR 16 bpp R int          2      grey
//   3      HDR 16 bpp R float        2      grey
//   4      LDR 24 bpp RGB int        3      blue, green, red
//   5      HDR 48 bpp RGB int        6      red, green, blue
//   6      HDR 48 bpp RGB float      6      red, green, blue
//   7      LDR 32 bpp RGBA int       4      blue, green, red, alpha
//   8      HDR 64 bpp RGBA int       8      red, green, blue, alpha
//   9      HDR 64 bpp RGBA float     8      red, green, blue, alpha
//
// "float" always means 16-bit IEEE half floats. Multi-byte channels are little-endian. The 8-bit formats
// store blue first, as Windows bitmaps do; the others store red first.
#pragma once

#include <cstdint>

namespace skyvault {

enum class PixelFormat : std::uint32_t {
    None = 0,
    Grey8 = 1,
    Grey16 = 2,
    GreyHalf = 3,
    Rgb8 = 4,
    Rgb16 = 5,
    RgbHalf = 6,
    Rgba8 = 7,
    Rgba16 = 8,
    RgbaHalf = 9,
};

enum class ChannelKind : std::uint32_t { None = 0, Int8 = 1, Int16 = 2, Half = 3 };

/// Bytes of one pixel; 0 for anything that is not one of the nine formats.
std::uint32_t BytesPerPixel(PixelFormat format);

/// What the channels are made of; None for unknown formats.
ChannelKind ChannelType(PixelFormat format);

/// The four-channel format of the same channel type: Rgba8, Rgba16 or RgbaHalf; None for unknown formats.
PixelFormat WithAlpha(PixelFormat format);

bool HasAlpha(PixelFormat format);

/// The name shown to the user, as in the table above; "Unknown format" for anything else.
const wchar_t* FormatName(PixelFormat format);

}  // namespace skyvault
