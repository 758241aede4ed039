// BMP files without compression, read and written a few hundred rows at a time, straight into and out of the
// picture: nothing else is copied, allocated or looked at twice.
//
// Read are 24- and 32-bit colour and 8-bit palettes with any of the Windows headers. All that is rarer (run
// lengths, 16 bits and fewer, OS/2 headers, overlapping parts) is no plain BMP, and another codec's. What is
// read is what that codec would give: 24 bits as Rgb8, the others as Rgba8, alpha from files that tell of an
// alpha mask only.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "codecs/picture_codec.h"
#include "image/image.h"

namespace skyvault {

class PlainBmp {
  public:
    /// Opens the file and reads its header.
    explicit PlainBmp(const std::wstring& path);

    /// False when there is no such file or it is no plain BMP; nothing else must be called then.
    bool IsOpen() const { return file_ != nullptr; }

    bool Select(std::uint32_t frame) const { return frame == 0; }

    PictureFacts Facts() const;

    /// False when the file is shorter than its picture, and without memory. To be called once.
    bool Read(Image& image);

  private:
    bool ReadHeader();
    bool ReadPalette(std::uint64_t at, std::uint32_t count);

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    std::uint64_t fileSize_ = 0;
    PictureSize size_;
    std::uint32_t bits_ = 0;
    bool alpha_ = false;
    bool topRowFirst_ = false;
    std::uint64_t pixelStart_ = 0;
    std::uint32_t palette_[256] = {};
};

/// Writes 24 bits per pixel, bottom row first, whatever the format; the picture is first converted to it.
/// False on any failure, also for files of 4 GiB and more; a broken file may then be left.
bool WriteBmp(const Image& image, const std::wstring& path, PixelFormat format);

}  // namespace skyvault
