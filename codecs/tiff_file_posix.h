// TIFF files through libtiff itself: what a file stores and no more, and nothing of a damaged one.
//
// Grey and colour of 8 and 16 bits and of halves come as they are stored, with the alpha that colours are not
// multiplied by, all else as 32-bit colour (tiff_samples.h). Every strip or tile must lie in the file
// and be large enough for what it unpacks to; the first error of the library refuses the picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "codecs/picture_codec.h"
#include "image/image.h"

namespace skyvault {

class TiffFile {
  public:
    /// A file on disk, or the bytes of one, which must outlive this.
    explicit TiffFile(const std::wstring& path);
    explicit TiffFile(std::span<const std::byte> file);
    ~TiffFile();
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    /// Whether the file starts as a TIFF does: what follows is then nobody else's.
    bool IsTiff() const;

    /// Goes to a page and looks at all about it but its pixels. False for a page that is not there, is cut,
    /// claims more than it can hold, or is of a kind that is not read.
    bool Select(std::uint32_t page);

    /// Of the selected page.
    const PictureFacts& Facts() const;

    /// The pixels of the selected page. False without memory, and for damaged ones.
    bool Read(Image& image);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace skyvault
