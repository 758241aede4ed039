#include "codecs/bmp_runs.h"

#include <cstring>

namespace skyvault {
namespace {

/// Where the next pixel goes; y counts from the bottom.
class Place {
  public:
    Place(std::span<const std::uint32_t> palette, Image& image) : palette_(palette), image_(image) {
        for (std::uint32_t row = 0; row < image.height; ++row) {
            for (std::uint32_t column = 0; column < image.width; ++column) Set(row, column, 0);
        }
    }

    bool Put(std::uint32_t index) {
        if (x_ >= image_.width || y_ >= image_.height) return false;
        Set(y_, x_++, index);
        return true;
    }
    bool NextRow() {
        x_ = 0;
        return ++y_ <= image_.height;
    }
    bool Move(std::uint32_t right, std::uint32_t up) {
        x_ += right;
        y_ += up;
        return x_ <= image_.width && y_ < image_.height;
    }
    /// Whether nothing is missing where a file ends without saying so.
    bool IsFull() const { return y_ >= image_.height || (y_ + 1 == image_.height && x_ == image_.width); }

  private:
    void Set(std::uint32_t fromBottom, std::uint32_t column, std::uint32_t index) {
        std::memcpy(image_.Row(image_.height - 1 - fromBottom) + std::size_t{column} * 4, &palette_[index],
                    4);
    }

    std::span<const std::uint32_t> palette_;
    Image& image_;
    std::uint32_t x_ = 0, y_ = 0;
};

}  // namespace

bool ReadBmpRuns(const NextByte& next, std::uint32_t bits, std::span<const std::uint32_t> palette,
                 Image& image) {
    enum Escape { kEndOfRow = 0, kEndOfPicture = 1, kMove = 2 };
    Place place(palette, image);
    // Of four bits, a byte's upper ones are the first, third … pixel.
    const auto indexOf = [&](int byte, int i) {
        const auto value = static_cast<std::uint32_t>(byte);
        return bits == 8 ? value : i % 2 == 0 ? value >> 4 : value & 15;
    };
    for (;;) {
        const int count = next(), value = next();
        if (count < 0) return place.IsFull();
        if (value < 0) return false;
        if (count > 0) {
            for (int i = 0; i < count; ++i) {
                if (!place.Put(indexOf(value, i))) return false;
            }
        } else if (value == kEndOfRow) {
            if (!place.NextRow()) return false;
        } else if (value == kEndOfPicture) {
            return true;
        } else if (value == kMove) {
            const int right = next(), up = next();
            if (up < 0 || !place.Move(static_cast<std::uint32_t>(right), static_cast<std::uint32_t>(up)))
                return false;
        } else {
            // So many pixels one by one, filled up to whole pairs of bytes.
            const int bytes = bits == 8 ? value : (value + 1) / 2;
            int byte = 0;
            for (int i = 0; i < value; ++i) {
                if (bits == 8 || i % 2 == 0) byte = next();
                if (byte < 0 || !place.Put(indexOf(byte, i))) return false;
            }
            if (bytes % 2 != 0) next();
        }
    }
}

}  // namespace skyvault
