// One pixel between memory and colour records: every read and write rule of the nine formats.
//
// Reading and writing are not each other's inverse: an 8-bit value v is written as 16 bits v × 256 + 255
// and as a half v / 256, while a half is read as trunc(h × 255). The rules hold for files made long ago.
// A channel converts the same way whether its pixel is read as another type or written from one:
//
//   to 8 bits:  from 16 the high byte; from a half trunc(h × 255), clamped, NaN 0
//   to 16 bits: from 8 v × 256 + 255; from a half trunc(h × 65535), clamped, NaN 0
//   to half:    from 8 and from 16 alike v / 256, rounded to nearest even
#pragma once

#include <cstddef>

#include "image/colour.h"

namespace skyvault {

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

/// count pixels from one format to another: the same bytes as ReadPixel and WritePixel for each.
/// The two rows must not overlap.
void ConvertRow(PixelFormat from, const std::byte* source, PixelFormat to, std::byte* destination,
                std::size_t count);

}  // namespace skyvault
