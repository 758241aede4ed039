// OpenEXR pictures (".exr"): lines or tiles, uncompressed or packed as RLE, ZIPS, ZIP, PIZ or PXR24.
//
// Read into GreyHalf, RgbHalf or RgbaHalf from the channels R, G, B and A, or Y and A, whatever they are made
// of: halves, floats or integers. Of a file with several resolutions the largest is read. The picture is the
// display window; where the file has no pixels it is black, and transparent with alpha. Colours are stored
// multiplied by alpha, which a picture's are not. Written: lines of halves, as ZIP.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "codecs/half_values.h"
#include "codecs/picture_codec.h"
#include "image/image.h"
#include "platform/outcome.h"

namespace skyvault {

/// start: the file's first kExrHeaderLimit bytes (codecs/exr_header.h), or all of a shorter file. Fails as
/// ReadExrHeader. The memory is that of the picture, the file and the chunks that are unpacked at a time.
Outcome InspectExr(std::span<const std::byte> start, std::uint64_t fileSize, PictureFacts& facts);

/// Reads a whole file. CannotOpen, with the image invalid, for one that is cut or contradicts itself.
Outcome ReadExr(std::span<const std::byte> file, Image& image, HalfLosses& losses);

/// Writes the picture, converted to `format` first, in grey, RGB or RGBA halves. False on any failure; a
/// broken file may then be left.
bool WriteExr(const Image& image, const std::wstring& path, PixelFormat format);

}  // namespace skyvault
