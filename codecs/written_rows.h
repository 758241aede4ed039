// The rows of a picture as a file stores them.
#pragma once

#include "image/image.h"
#include "image/pixel_rows.h"

namespace skyvault {

/// The picture is first converted to the format the caller wants written and from there to the file's, so
/// that a picture asked for in grey stays grey in a file that only knows colour.
class WrittenRows {
  public:
    /// image: valid, and outlives this. wanted, file: two of the nine formats.
    WrittenRows(const Image& image, PixelFormat wanted, PixelFormat file)
        : image_(image), wanted_(wanted), file_(file) {
        if (wanted != image.format && wanted != file) {
            between_ = AllocateBytes(std::size_t{BytesPerPixel(wanted)} * image.width);
            ready_ = between_ != nullptr;
        }
    }

    /// False without memory for a row; Get must not be called then.
    bool Ready() const { return ready_; }

    /// Row y in the file's format, its channels in the order the format has in memory.
    void Get(std::uint32_t y, std::byte* row) const {
        if (!between_) {
            ConvertRow(image_.format, image_.Row(y), file_, row, image_.width);
        } else {
            ConvertRow(image_.format, image_.Row(y), wanted_, between_.get(), image_.width);
            ConvertRow(wanted_, between_.get(), file_, row, image_.width);
        }
    }

  private:
    const Image& image_;
    PixelFormat wanted_, file_;
    ByteBuffer between_;
    bool ready_ = true;
};

}  // namespace skyvault
