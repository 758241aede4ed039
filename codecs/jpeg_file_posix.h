// JPEG files straight through libjpeg: rows are decoded into and encoded from the picture's own memory.
//
// Grey comes as Grey8, three components as Rgb8, four (CMYK, inverted as everybody writes it) as Rgba8.
// Nothing is printed. What the library only warns of, damaged data among it, refuses the file; a file that
// lacks its end marker and nothing else is read.
#pragma once

#include <string>

#include "codecs/file_source_posix.h"
#include "codecs/picture_codec.h"
#include "codecs/picture_header.h"
#include "image/image.h"

namespace skyvault {

class JpegFile {
  public:
    /// file: must outlive this.
    explicit JpegFile(const FileSource& file) : file_(file) {}

    /// Walks the markers: the size, and whether the file can hold what it claims. False for all frames but 0.
    /// Of a file larger than the memory that may be used, only how much memory it takes.
    bool Select(std::uint32_t frame);

    const PictureFacts& Facts() const { return facts_; }

    /// False for damaged files, and without memory.
    bool Read(Image& image);

  private:
    const FileSource& file_;
    ByteBuffer bytes_;  // the whole file
    JpegStructure structure_;
    PictureFacts facts_;
};

/// The quality that pictures are written with where none is asked for.
inline constexpr int kJpegQuality = 92;

/// Writes grey formats as grey, all others as colour: up to a quality of 90 with a quarter of the chroma,
/// above it with all. quality: 1 to 100; 0: kJpegQuality. False on any failure; a broken file may then be
/// left.
bool WriteJpeg(const Image& image, const std::wstring& path, PixelFormat format, int quality);

}  // namespace skyvault
