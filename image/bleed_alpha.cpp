#include "image/bleed_alpha.h"

#include <algorithm>
#include <cstring>

#include "image/pixel_access.h"

namespace skyvault {

namespace {

// Inclusive; empty while right < left.
struct Bounds {
    std::uint32_t left = 0xffffffffu, top = 0xffffffffu, right = 0, bottom = 0;

    bool Empty() const { return right < left; }
    void Add(std::uint32_t x, std::uint32_t y) {
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = std::max(bottom, y);
    }
    Bounds Grown(const Image& image) const {
        return {left > 0 ? left - 1 : 0, top > 0 ? top - 1 : 0, std::min(right + 1, image.width - 1),
                std::min(bottom + 1, image.height - 1)};
    }
};

// One byte per pixel, 1 where a colour may be taken from, inside a frame of zeros that stands for
// "outside the picture".
class Mask {
  public:
    explicit Mask(const Image& image)
        : stride_(std::size_t{image.width} + 2),
          byteCount_(stride_ * (std::size_t{image.height} + 2)),
          bytes_(AllocateBytes(byteCount_)) {}

    bool HasMemory() const { return bytes_ != nullptr; }
    std::size_t Stride() const { return stride_; }
    std::uint8_t* Row(std::uint32_t y) {
        return reinterpret_cast<std::uint8_t*>(bytes_.get()) + stride_ * (std::size_t{y} + 1) + 1;
    }
    void Clear() { std::memset(bytes_.get(), 0, byteCount_); }
    void CopyFrom(const Mask& other) { std::memcpy(bytes_.get(), other.bytes_.get(), byteCount_); }

  private:
    std::size_t stride_, byteCount_;
    ByteBuffer bytes_;
};

template <typename Format>
Bounds MarkVisible(const Image& image, Mask& mask) {
    Bounds bounds;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const std::byte* const row = image.Row(y);
        std::uint8_t* const marks = mask.Row(y);
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const auto alpha = Format::Get(row + std::size_t{x} * Format::kBytes, 3);
            marks[x] = ConvertChannel<std::uint8_t>(alpha) != 0;
        }
        const void* const first = std::memchr(marks, 1, image.width);
        if (!first) continue;
        bounds.Add(static_cast<std::uint32_t>(static_cast<const std::uint8_t*>(first) - marks), y);
        std::uint32_t last = image.width - 1;
        while (!marks[last]) --last;
        bounds.Add(last, y);
    }
    return bounds;
}

// fresh[i] = 1 where the pixel is unmarked and one of its eight neighbours is marked; write becomes the
// marks with the fresh ones. A plain loop over bytes: most pixels are settled here, sixteen at a time.
void FindFresh(const std::uint8_t* marks, std::ptrdiff_t stride, std::uint8_t* write, std::uint8_t* fresh,
               std::uint32_t count) {
    const std::uint8_t* const above = marks - stride;
    const std::uint8_t* const below = marks + stride;
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(count); ++i) {
        const int near = marks[i - 1] | marks[i + 1] | above[i - 1] | above[i] | above[i + 1] | below[i - 1] |
                         below[i] | below[i + 1];
        const int isFresh = near & (marks[i] ^ 1);
        fresh[i] = static_cast<std::uint8_t>(isFresh);
        write[i] = static_cast<std::uint8_t>(marks[i] | isFresh);
    }
}

// The 8-bit colour of the neighbour, as the format stores it; the pixel's alpha is not touched.
template <typename Format>
void TakeColour(std::byte* pixel, const std::byte* neighbour) {
    const Color8 colour = Format::template Read<ChannelKind::Int8>(neighbour);
    using Channel = typename Format::Channel;
    Format::Set(pixel, Format::kRed, ConvertChannel<Channel>(colour.red));
    Format::Set(pixel, Format::kGreen, ConvertChannel<Channel>(colour.green));
    Format::Set(pixel, Format::kBlue, ConvertChannel<Channel>(colour.blue));
}

struct Offset {
    int x, y;
};
// The first marked neighbour in this order gives its colour.
constexpr Offset kNeighbours[] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, 1}, {-1, 1}, {1, -1}};

template <typename Format>
Bounds SpreadOnce(Image& image, const Bounds& area, Mask& read, Mask& write, std::uint8_t* fresh) {
    const std::ptrdiff_t maskStride = static_cast<std::ptrdiff_t>(read.Stride());
    const std::ptrdiff_t rowBytes = image.stride, pixelBytes = Format::kBytes;
    const std::uint32_t count = area.right - area.left + 1;
    Bounds filled;
    for (std::uint32_t y = area.top; y <= area.bottom; ++y) {
        const std::uint8_t* const marks = read.Row(y);
        FindFresh(marks + area.left, maskStride, write.Row(y) + area.left, fresh, count);
        const std::uint8_t* at = fresh;
        const std::uint8_t* const end = fresh + count;
        while ((at = static_cast<const std::uint8_t*>(
                    std::memchr(at, 1, static_cast<std::size_t>(end - at)))) != nullptr) {
            const std::uint32_t x = area.left + static_cast<std::uint32_t>(at - fresh);
            std::byte* const pixel = image.Row(y) + std::size_t{x} * Format::kBytes;
            for (const Offset& offset : kNeighbours) {
                if (!marks[x + offset.y * maskStride + offset.x]) continue;
                TakeColour<Format>(pixel, pixel + offset.y * rowBytes + offset.x * pixelBytes);
                break;
            }
            filled.Add(x, y);
            if (++at == end) break;
        }
    }
    return filled;
}

template <typename Format>
void Bleed(Image& image) {
    Mask first(image), second(image);
    const ByteBuffer fresh = AllocateBytes(image.width);
    if (!first.HasMemory() || !second.HasMemory() || !fresh) return;
    first.Clear();
    Bounds area = MarkVisible<Format>(image, first);
    second.CopyFrom(first);

    // A pass only has to look around what the last one filled: everything else has settled.
    const std::uint32_t limit = std::max(32u, std::max(image.width, image.height) / 64);
    for (std::uint32_t pass = 0; pass <= limit && !area.Empty(); ++pass) {
        Mask& read = pass % 2 == 0 ? first : second;
        Mask& write = pass % 2 == 0 ? second : first;
        area = SpreadOnce<Format>(image, area.Grown(image), read, write,
                                  reinterpret_cast<std::uint8_t*>(fresh.get()));
    }
}

}  // namespace

void BleedAlpha(Image& image) {
    if (!image.HasTransparency()) return;
    WithFormat(image.format, [&](auto tag) {
        using Format = FormatTraits<tag.value>;
        if constexpr (Format::kChannels == 4) Bleed<Format>(image);
    });
}

}  // namespace skyvault
