// A picture file being encoded through WIC, and what this machine's encoders get wrong.
#pragma once

#include <windows.h>

#include <objidl.h>

#include "codecs/indexed_picture.h"
#include "codecs/wic_formats_win.h"

namespace skyvault {

/// A file with one frame. Every step reports failure; the object is then only fit to be destroyed.
struct WicOutput {
    ComPtr<IStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;

    /// container: not None. target: null fails.
    bool Begin(IWICImagingFactory& factory, PictureContainer container, ComPtr<IStream> target);

    /// Up to the frame's size; the pixel format is next. quality: of a JPEG, 1 to 100; 0: the encoder's
    /// default. An encoder that does not know the option does without.
    bool BeginFrame(std::uint32_t width, std::uint32_t height, int quality = 0);

    bool Finish();
};

/// A new or emptied file; null when there is no writing to it.
ComPtr<IStream> CreateWicFileStream(IWICImagingFactory& factory, const std::wstring& path);

/// All of a file with a palette, from Begin to Finish.
bool WriteWicIndexed(IWICImagingFactory& factory, PictureContainer container, const ComPtr<IStream>& target,
                     const IndexedPicture& indexed, std::uint32_t width, std::uint32_t height);

/// True when the PNG encoder stores 16-bit channels with their bytes exchanged. Tried out once, in memory.
bool PngEncoderSwapsBytes();

/// True when the GIF encoder makes the palette's transparent colour opaque. Tried out once, in memory.
bool GifEncoderLosesTransparency();

/// False when the JPEG encoder writes the same whatever the quality. Tried out once, in memory.
bool JpegEncoderKnowsQuality();

}  // namespace skyvault
