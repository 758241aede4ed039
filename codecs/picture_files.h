// Reading and writing picture files: the two entry points every picture goes through.
//
// "TGA" files are read by the program's own reader, "DDS" files go through codecs/dds_cube_map.h; everything
// else is left to the platform's codecs (WIC on Windows, OpenImageIO elsewhere).
#pragma once

#include <cstdint>
#include <string>

#include "codecs/picture_codec.h"
#include "image/image.h"
#include "platform/outcome.h"

namespace skyvault {

/// Which part of a picture file is wanted, and how large.
struct PictureRequest {
    std::uint32_t frame = 0;  ///< of an animated or multi-page file
    PictureSize target = {};  ///< both sizes ≥ 1: scaled while decoding to fit inside, aspect ratio kept
};

/// Reads a picture. NeedsMemory when that takes more than the program may use, CannotOpen, and the
/// cause as far as it is found, on any other failure; the image is then invalid.
Outcome LoadPicture(const std::wstring& path, Image& image, const PictureRequest& request = {});

/// What a picture file tells about itself, as far as its kind allows without reading its pixels. CannotOpen
/// when it cannot be told.
Outcome ReadPictureFacts(const std::wstring& path, PictureFacts& facts);

/// The size a picture file says it has, without reading its pixels; 0 × 0 when it cannot be told.
PictureSize ReadPictureSize(const std::wstring& path);

/// How a picture is written.
struct PictureOptions {
    PixelFormat format = PixelFormat::None;  ///< None: the picture's own
    /// Spread visible colours into transparent pixels of the picture first (BleedAlpha), when the written
    /// format has alpha.
    bool bleed = false;
};

/// Writes a picture, choosing the codec by the path's extension. The outcome describes the file in the four
/// lines Path, Size, Resolution and Format. CannotWrite on any failure: the file appears under its name only
/// when whole, and an older one stays untouched.
Outcome SavePicture(Image& image, const std::wstring& path, const PictureOptions& options = {});

/// "512 bytes", "3 KB", "3 MB", "2 GB": whole units, truncated.
std::wstring FileSizeText(std::uint64_t bytes);

/// The lines SavePicture appends to its info log: Path, Size, Resolution and Format of a written file.
std::wstring PictureInfo(const std::wstring& path, std::uint32_t width, std::uint32_t height,
                         PixelFormat format);

/// The same of a file of six faces, which also tells its Projection.
std::wstring CubeMapInfo(const std::wstring& path, std::uint32_t faceSize, PixelFormat format);

}  // namespace skyvault
