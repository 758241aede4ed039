// How a picture gets into a file through WIC. There are four routes, because neither every encoder nor
// every installation can do all that is asked:
//
//   WholeBitmap  an in-memory WIC bitmap in the wanted format is handed to the encoder, which converts
//                it when its container has no such format. WIC's own conversions.
//   OwnRows      the pixels are converted by our own rules to exactly the format the encoder asks for,
//                and written in strips. For where WIC has no such bitmap or no such conversion, and for
//                PNG encoders that store 16-bit channels in the wrong byte order.
//   Palette      GIF: at most 256 colours, which we choose ourselves, for WIC's own choice is not to be
//                had from every format and knows no transparency.
//   OwnFile      GIF where WIC's encoder loses transparency: the whole file is our own.
#pragma once

#include "codecs/wic_formats_win.h"

namespace skyvault {

enum class WicRoute { WholeBitmap, OwnRows, Palette, OwnFile };

/// The route a picture starts on. WholeBitmap turns into OwnRows when WIC cannot do it.
WicRoute FirstWicRoute(PictureContainer container, PixelFormat format);

enum class WicOutcome {
    Written,
    Failed,    ///< nothing to be done: no such codec, no such folder, disk full …
    CannotDo,  ///< no bitmap or conversion for this format: OwnRows may still do it
};

/// Writes the file on that one route. format: one of the nine. quality: as EncodePicture.
WicOutcome WriteOnRoute(WicRoute route, const Image& image, const std::wstring& path,
                        PictureContainer container, PixelFormat format, int quality = 0);

}  // namespace skyvault
