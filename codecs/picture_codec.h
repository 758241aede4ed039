// The platform's picture codecs behind one interface: WIC on Windows; elsewhere OpenImageIO, and the
// program itself for plain BMP files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image/image.h"

namespace skyvault {

/// File kinds that can be written, chosen by upper-case extension.
enum class PictureContainer { None, Bmp, Jpeg, Png, Tiff, Gif, Heif };

/// "JPG", "JPEG", "JPE", "JFIF" → Jpeg and so on; None for anything that cannot be written.
PictureContainer ContainerOfExtension(const std::wstring& upperExtension);

/// What a file tells about one of its frames before any of its pixels are decoded.
struct PictureFacts {
    PictureSize size;
    PixelFormat format = PixelFormat::None;  ///< as the frame is decoded
    std::uint32_t frameCount = 1;
    std::uint64_t memory = 0;  ///< bytes that decoding takes at most, the picture among them
};

/// Decodes one frame; arguments as LoadPicture. False on any failure.
bool DecodePicture(const std::wstring& path, std::uint32_t frame, std::uint32_t targetWidth,
                   std::uint32_t targetHeight, Image& image);

/// The size of the first frame as far as the codec tells it without decoding. False when it cannot open the
/// file or does not believe its header.
bool MeasurePicture(const std::wstring& path, PictureSize& size);

/// Encodes the picture in (or as near as the container allows to) the format, straight to `path`, whose
/// extension need not match. False on any failure; a broken file may then be left, which the caller
/// removes.
bool EncodePicture(const Image& image, const std::wstring& path, PictureContainer container,
                   PixelFormat format);

/// Upper-case extensions the codecs of this machine can read ("PNG", "JPG" …); empty when there is no
/// codec system at all.
std::vector<std::wstring> ReadableExtensions();

/// Why the codecs themselves could not be used since the program began, for the user; empty when they could
/// or were not needed.
std::wstring CodecTrouble();

}  // namespace skyvault
