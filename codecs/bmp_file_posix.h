// BMP files, read and written a few hundred rows at a time, straight into and out of the picture: nothing
// else is copied, allocated or looked at twice.
//
// Read is every kind that OS/2 and Windows know but those that are a JPEG or PNG inside, Huffman codes and
// runs of 24-bit pixels: 24 bits as Rgb8, all else as Rgba8, with alpha from files that tell of an alpha mask
// only.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "codecs/bmp_header.h"
#include "codecs/file_source_posix.h"
#include "codecs/picture_codec.h"
#include "image/image.h"

namespace skyvault {

class BmpFile {
  public:
    /// file: must outlive this.
    explicit BmpFile(const FileSource& file) : file_(file) {}

    /// Reads header and palette. False for what is no BMP, for a picture larger than the file can hold, and
    /// for all frames but 0.
    bool Select(std::uint32_t frame);

    const PictureFacts& Facts() const { return facts_; }

    /// False when the file is shorter than its picture, for runs that leave it, and without memory.
    bool Read(Image& image);

  private:
    bool ReadPalette();
    void ConvertRow(const std::byte* from, std::byte* to) const;
    bool ReadRows(Image& image) const;
    bool ReadRuns(Image& image) const;

    const FileSource& file_;
    BmpHeader header_;
    PictureFacts facts_;
    std::array<std::uint32_t, 256> palette_ = {};  // as pixels are in memory
};

/// Writes 24 bits per pixel, bottom row first, whatever the format; the picture is first converted to it.
/// False on any failure, also for files of 4 GiB and more; a broken file may then be left.
bool WriteBmp(const Image& image, const std::wstring& path, PixelFormat format);

}  // namespace skyvault
