// Reading and writing picture files: the two entry points every picture goes through.
//
// "TGA" files are read by the program's own reader, "DDS" files go through image/dds_cube_map.h; everything
// else is left to the platform's codecs (WIC on Windows, OpenImageIO elsewhere).
#pragma once

#include <cstdint>
#include <string>

#include "image/image.h"
#include "image/picture_size.h"

namespace skyvault {

/// Reads a picture; empty on any failure. frame: which frame of an animated or multi-page file.
/// With both target sizes ≥ 1 the picture is scaled while decoding to fit inside them, aspect ratio kept.
Image LoadPicture(const std::wstring& path, std::uint32_t frame = 0, std::uint32_t targetWidth = 0,
                  std::uint32_t targetHeight = 0);

/// The size a picture file says it has, without reading its pixels; 0 × 0 when it cannot be told.
PictureSize ReadPictureSize(const std::wstring& path);

/// Writes a picture, choosing the codec by the path's extension. format None writes the picture's own.
/// infoLog: when given, on success the four lines Path, Size, Resolution and Format are appended; on
/// failure it is emptied. bleed: spread visible colours into transparent pixels of `image` first
/// (BleedAlpha), when the written format has alpha.
/// The file appears under its name only when whole; on failure an older one stays untouched.
bool SavePicture(Image& image, const std::wstring& path, PixelFormat format = PixelFormat::None,
                 std::wstring* infoLog = nullptr, bool bleed = false);

/// "512 bytes", "3 KB", "3 MB", "2 GB": whole units, truncated.
std::wstring FileSizeText(std::uint64_t bytes);

/// The lines SavePicture appends to its info log.
std::wstring PictureInfo(const std::wstring& path, std::uint32_t width, std::uint32_t height,
                         PixelFormat format);

}  // namespace skyvault
