#include "codecs/gif_pixels.h"

#include <array>
#include <cstring>

namespace skyvault {
namespace {

constexpr std::uint32_t kMostCodes = 4096;

/// Codes of varying length, lowest bit first, from blocks of up to 255 bytes that are led by their size.
class Codes {
  public:
    Codes(std::span<const std::byte> file, std::size_t at) : file_(file), at_(at) {}

    /// Negative at the end of the blocks or of the file.
    int Next(int bits) {
        for (; pendingBits_ < bits; pendingBits_ += 8) {
            if (left_ == 0) {
                if (at_ >= file_.size() || file_[at_] == std::byte{0}) return -1;
                left_ = std::to_integer<std::uint32_t>(file_[at_++]);
            }
            if (at_ >= file_.size()) return -1;
            pending_ |= std::to_integer<std::uint32_t>(file_[at_++]) << pendingBits_;
            --left_;
        }
        const auto code = static_cast<int>(pending_ & ((1u << bits) - 1));
        pending_ >>= bits;
        pendingBits_ -= bits;
        return code;
    }

  private:
    std::span<const std::byte> file_;
    std::size_t at_;
    std::uint32_t left_ = 0, pending_ = 0;
    int pendingBits_ = 0;
};

/// Where the next pixel goes: row by row, or every eighth row first.
class Places {
  public:
    Places(bool interlaced, Image& image) : interlaced_(interlaced), image_(image) {}

    bool Done() const { return y_ >= image_.height; }
    void Put(std::uint32_t pixel) {
        std::memcpy(image_.Row(y_) + std::size_t{x_} * 4, &pixel, 4);
        if (++x_ == image_.width) NextRow();
    }

  private:
    void NextRow() {
        static constexpr std::uint32_t kFirst[] = {0, 4, 2, 1}, kStep[] = {8, 8, 4, 2};
        x_ = 0;
        y_ += interlaced_ ? kStep[pass_] : 1;
        while (interlaced_ && y_ >= image_.height && pass_ < 3) y_ = kFirst[++pass_];
    }

    bool interlaced_;
    Image& image_;
    std::uint32_t x_ = 0, y_ = 0, pass_ = 0;
};

std::array<std::uint32_t, 256> ColoursOf(std::span<const std::byte> file, const GifFrame& frame) {
    std::array<std::uint32_t, 256> colours;
    colours.fill(0xff000000u);
    for (std::size_t i = 0; i < frame.colourCount; ++i) {
        const std::size_t at = frame.coloursAt + 3 * i;
        if (at + 3 > file.size()) break;
        const auto byte = [&](std::size_t channel) {
            return std::to_integer<std::uint32_t>(file[at + channel]);
        };
        colours[i] = 0xff000000u | byte(0) << 16 | byte(1) << 8 | byte(2);
    }
    if (frame.transparent >= 0) colours[static_cast<std::size_t>(frame.transparent)] &= 0xffffffu;
    return colours;
}

}  // namespace

bool ReadGifPixels(std::span<const std::byte> file, const GifFrame& frame, Image& image) {
    if (frame.codesAt >= file.size()) return false;
    const int indexBits = std::to_integer<int>(file[frame.codesAt]);
    if (indexBits < 1 || indexBits > 8) return false;
    const std::uint32_t clear = 1u << indexBits, end = clear + 1;
    const std::array<std::uint32_t, 256> colours = ColoursOf(file, frame);
    // A code is an index, or a shorter string and one more index.
    std::array<std::uint16_t, kMostCodes> shorter{};
    std::array<std::uint8_t, kMostCodes> last{}, string;
    for (std::uint32_t i = 0; i < clear; ++i) last[i] = static_cast<std::uint8_t>(i);

    Codes codes(file, frame.codesAt + 1);
    Places places(frame.interlaced, image);
    std::uint32_t count = end + 1, before = kMostCodes, firstBefore = 0;
    int bits = indexBits + 1;
    while (!places.Done()) {
        const int next = codes.Next(bits);
        if (next < 0) return false;
        const auto code = static_cast<std::uint32_t>(next);
        if (code == end) return false;
        if (code == clear) {
            count = end + 1;
            bits = indexBits + 1;
            before = kMostCodes;
            continue;
        }
        const bool known = code < count;
        if (before == kMostCodes ? code >= clear : code > count) return false;
        // The string backwards; one not known yet is the string before and its own first index.
        std::size_t length = 0;
        std::uint32_t part = known ? code : before;
        if (!known) string[length++] = static_cast<std::uint8_t>(firstBefore);
        while (part >= clear) {
            string[length++] = last[part];
            part = shorter[part];
        }
        string[length++] = static_cast<std::uint8_t>(part);
        if (before != kMostCodes && count < kMostCodes) {
            shorter[count] = static_cast<std::uint16_t>(before);
            last[count++] = static_cast<std::uint8_t>(part);
            if (count == 1u << bits && bits < 12) ++bits;
        }
        before = code;
        firstBefore = part;
        while (length > 0 && !places.Done()) places.Put(colours[string[--length]]);
    }
    return true;
}

}  // namespace skyvault
