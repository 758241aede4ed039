// The platform's picture codecs behind one interface: WIC on Windows; elsewhere the program itself, the
// reference libraries of the common kinds, and OpenImageIO for the rest.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image/image.h"
#include "platform/outcome.h"

namespace skyvault {

/// File kinds that can be written, chosen by upper-case extension. Exr and Hdr are written without a codec,
/// by SavePicture.
enum class PictureContainer { None, Bmp, Jpeg, Png, Tiff, Gif, Heif, Exr, Hdr };

/// "JPG", "JPEG", "JPE", "JFIF" → Jpeg and so on; None for anything that cannot be written.
PictureContainer ContainerOfExtension(const std::wstring& upperExtension);

/// What a file tells about one of its frames before any of its pixels are decoded.
struct PictureFacts {
    PictureSize size;
    PixelFormat format = PixelFormat::None;  ///< as the frame is decoded
    std::uint32_t frameCount = 1;
    std::uint64_t memory = 0;  ///< bytes that decoding takes at most, the picture among them
};

/// Decodes one frame; arguments as LoadPicture. NeedsMemory when that takes more than the program may use
/// (platform/memory_budget.h), CannotOpen on any other failure.
Outcome DecodePicture(const std::wstring& path, std::uint32_t frame, std::uint32_t targetWidth,
                      std::uint32_t targetHeight, Image& image);

/// What the file tells about its first frame, as far as possible without decoding. CannotOpen when it cannot
/// be opened or its header is not believed; a codec that decodes as soon as it opens may say NeedsMemory.
Outcome InspectPicture(const std::wstring& path, PictureFacts& facts);

/// Encodes the picture in (or as near as the container allows to) the format, straight to `path`, whose
/// extension need not match. quality: of a JPEG, 1 to 100; 0: the encoder's default. False on any failure; a
/// broken file may then be left, which the caller removes.
bool EncodePicture(const Image& image, const std::wstring& path, PictureContainer container,
                   PixelFormat format, int quality = 0);

/// Whether the encoder of this machine writes JPEG files of another quality when asked for one.
bool CanChooseQuality();

/// Upper-case extensions the codecs of this machine can read ("PNG", "JPG" …); empty when there is no
/// codec system at all.
std::vector<std::wstring> ReadableExtensions();

/// Why the codecs themselves could not be used since the program began, for the user; empty when they could
/// or were not needed.
std::wstring CodecTrouble();

}  // namespace skyvault
