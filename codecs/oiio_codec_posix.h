// The codecs of OpenImageIO, through its module (oiio/oiio_interface.h), in the manner of picture_codec.h.
#pragma once

#include <string>

#include "codecs/oiio/oiio_interface.h"
#include "codecs/picture_codec.h"
#include "image/image.h"

namespace skyvault {

/// The module, loaded by the first call; null when that failed (CodecTrouble tells why).
const OiioFunctions* Oiio();

/// DecodePicture, MeasurePicture and EncodePicture for every kind of file OpenImageIO knows. The module
/// throws nothing; a lack of memory in the program's own part may be thrown.
bool DecodeWithOiio(const std::wstring& path, std::uint32_t frame, const PictureSize& target, Image& image);
bool MeasureWithOiio(const std::wstring& path, PictureSize& size);
bool EncodeWithOiio(const Image& image, const std::wstring& path, PictureContainer container,
                    PixelFormat format);

/// The channels of a format as the module takes them.
OiioChannel OiioChannelOf(PixelFormat format);

/// 1, 3 or 4.
int ChannelCount(PixelFormat format);

}  // namespace skyvault
