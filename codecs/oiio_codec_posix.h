// The codecs of OpenImageIO, through its module (oiio/oiio_interface.h), in the manner of picture_codec.h.
#pragma once

#include <string>

#include "codecs/oiio/oiio_interface.h"
#include "codecs/picture_codec.h"
#include "image/image.h"

namespace skyvault {

/// The module, loaded by the first call; null when that failed (CodecTrouble tells why).
const OiioFunctions* Oiio();

/// DecodePicture and InspectPicture for HEIF and WebP, EncodePicture for HEIF. The module throws
/// nothing; a lack of memory in the program's own part may be thrown.
Outcome DecodeWithOiio(const std::wstring& path, std::uint32_t frame, const PictureSize& target,
                       Image& image);
Outcome InspectWithOiio(const std::wstring& path, PictureFacts& facts);
bool EncodeHeifWithOiio(const Image& image, const std::wstring& path, PixelFormat format);

/// The channels of a format as the module takes them.
OiioChannel OiioChannelOf(PixelFormat format);

/// 1, 3 or 4.
int ChannelCount(PixelFormat format);

}  // namespace skyvault
