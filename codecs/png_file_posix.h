// PNG files straight through libpng: rows are decoded into and encoded from the picture's own memory.
//
// 8 and 16 bits a channel come as they are stored, grey with alpha as colour with alpha, palettes and fewer
// bits as 32-bit colour. Nothing is turned, corrected by gamma or multiplied by alpha, and nothing is
// printed. A wrong checksum of what the picture is made of refuses the file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "codecs/file_source_posix.h"
#include "codecs/picture_codec.h"
#include "image/image.h"

namespace skyvault {

class PngFile {
  public:
    /// file: must outlive this.
    explicit PngFile(const FileSource& file);
    ~PngFile();
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    /// Reads all that stands before the pixels. False for damage there, for a picture larger than the file
    /// can hold, and for all frames but 0.
    bool Select(std::uint32_t frame);

    const PictureFacts& Facts() const { return facts_; }

    /// False for damaged files, and without memory. To be called once for each Select.
    bool Read(Image& image);

  private:
    struct Reader;
    const FileSource& file_;
    std::unique_ptr<Reader> reader_;
    PictureFacts facts_;
};

/// Writes 8 and 16 bits as they are, halves as 16 bits. False on any failure; a broken file may then be left.
bool WritePng(const Image& image, const std::wstring& path, PixelFormat format);

}  // namespace skyvault
