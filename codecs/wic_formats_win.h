// The Windows Imaging Component's names for our pixel formats, and the way to its factory.
#pragma once

#include <windows.h>

#include <wincodec.h>

#include <string>

#include "codecs/picture_codec.h"
#include "platform/com_ptr_win.h"

namespace skyvault {

/// A WIC pixel format whose memory is one of our nine formats as it stands, or after red and blue are
/// exchanged.
struct WicFormat {
    const GUID* guid;
    PixelFormat format;
    bool swapRedAndBlue;
};

/// Null for formats that must be converted first (palettes, CMYK, fewer than 8 bits …).
const WicFormat* FindWicFormat(const GUID& guid);

/// The WIC format with the same memory; 8bppGray for None and unknown values.
const GUID& WicFormatOf(PixelFormat format);

/// Null for None.
const GUID* WicContainerOf(PictureContainer container);

/// A factory of the caller's own; null when COM is not initialised on this thread or WIC is missing.
ComPtr<IWICImagingFactory> CreateWicFactory();

/// Exchanges the bytes of every 16-bit channel.
void SwapBytesOf16(std::byte* bytes, std::size_t count);

}  // namespace skyvault
