// GIF files: each frame as it is stored, without those before it, as the desktop's codec gives it.
#pragma once

#include "codecs/file_source_posix.h"
#include "codecs/gif_frames.h"
#include "codecs/picture_codec.h"
#include "image/image.h"

namespace skyvault {

class GifFile {
  public:
    /// file: must outlive this.
    explicit GifFile(const FileSource& file) : file_(file) {}

    /// Walks the frames. False for one that is not there, has no colours, or is larger than the file can
    /// hold.
    bool Select(std::uint32_t frame);

    const PictureFacts& Facts() const { return facts_; }

    /// Rgba8; a transparent pixel keeps its colour. False for a frame of too few pixels, and without memory.
    bool Read(Image& image);

  private:
    const FileSource& file_;
    ByteBuffer bytes_;  // the whole file
    GifFrame frame_;
    PictureFacts facts_;
};

}  // namespace skyvault
