// Radiance pictures (".hdr"): red, green and blue with a common exponent, a byte each.
//
// A text header, a line with the size and the order of the pixels, then scanlines: flat, with the runs of old
// (a pixel 1 1 1 n repeats the one before), or each of the four channels with runs of its own. Read into
// RgbHalf; written top row first, with runs. What was multiplied by an EXPOSURE is divided by it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "codecs/half_values.h"
#include "codecs/picture_codec.h"
#include "image/image.h"
#include "platform/outcome.h"

namespace skyvault {

/// As many bytes of the file as its header may take.
inline constexpr std::size_t kHdrHeaderLimit = std::size_t{64} << 10;

/// Red, green, blue and the exponent: 0, or by 128 more than that of the largest channel as a fraction.
using HdrPixel = std::array<std::byte, 4>;

/// Whether scanlines of that many pixels may have runs of their own for each channel.
constexpr bool HdrHasChannelRuns(std::uint32_t width) {
    return width >= 8 && width <= 32767;
}

/// start: the file's first kHdrHeaderLimit bytes, or all of a shorter file. CannotOpen when they are no
/// header, or one of a picture that a file of fileSize bytes does not hold. The memory is that of the
/// picture, the file and a scanline.
Outcome InspectHdr(std::span<const std::byte> start, std::uint64_t fileSize, PictureFacts& facts);

/// Reads a whole file. CannotOpen, with the image invalid, for one that is cut or contradicts itself.
Outcome ReadHdr(std::span<const std::byte> file, Image& image, HalfLosses& losses);

/// Writes the picture, converted to `format` first. Negative values become 0. False on any failure; a broken
/// file may then be left.
bool WriteHdr(const Image& image, const std::wstring& path, PixelFormat format);

}  // namespace skyvault
