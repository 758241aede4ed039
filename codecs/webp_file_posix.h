// Still WebP files straight through libwebp: colours as they are stored, not multiplied by alpha.
#pragma once

#include "codecs/file_source_posix.h"
#include "codecs/picture_codec.h"
#include "image/image.h"

namespace skyvault {

class WebpFile {
  public:
    /// file: must outlive this.
    explicit WebpFile(const FileSource& file) : file_(file) {}

    /// Whether the file is an animation, which is not read here.
    bool IsAnimated() const;

    /// False for what contradicts itself or is larger than the file can hold, and for all frames but 0.
    bool Select(std::uint32_t frame);

    const PictureFacts& Facts() const { return facts_; }

    /// Rgb8, or Rgba8 from files with alpha. False for damaged files, and without memory.
    bool Read(Image& image);

  private:
    const FileSource& file_;
    ByteBuffer bytes_;  // the whole file
    PictureFacts facts_;
};

}  // namespace skyvault
