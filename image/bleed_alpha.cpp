#include "image/bleed_alpha.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "image/pixel_rows.h"

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

// What a mask says of a pixel. A colour may be taken where the lowest bit is set.
constexpr std::uint8_t kUnknown = 0, kVisible = 1, kFilledInThisPass = 2;

// One byte per pixel inside a frame of kUnknown that stands for "outside the picture".
class Mask {
  public:
    explicit Mask(const Image& image)
        : stride_(std::size_t{image.width} + 2),
          bytes_(AllocateBytes(stride_ * (std::size_t{image.height} + 2))) {
        if (bytes_) std::memset(bytes_.get(), kUnknown, stride_ * (std::size_t{image.height} + 2));
    }

    bool HasMemory() const { return bytes_ != nullptr; }
    std::ptrdiff_t Stride() const { return static_cast<std::ptrdiff_t>(stride_); }
    std::uint8_t* Row(std::uint32_t y) {
        return reinterpret_cast<std::uint8_t*>(bytes_.get()) + stride_ * (std::size_t{y} + 1) + 1;
    }

  private:
    std::size_t stride_;
    ByteBuffer bytes_;
};

struct PixelPlace {
    std::uint32_t x, y;
};

// The pixels a pass filled: all of them while they fit, and always the rectangle around them.
class FilledPixels {
  public:
    explicit FilledPixels(std::size_t capacity)
        : places_(AllocateBytes(capacity * sizeof(PixelPlace))), capacity_(places_ ? capacity : 0) {}

    void Clear() {
        count_ = 0;
        bounds_ = {};
    }
    void Add(std::uint32_t x, std::uint32_t y) {
        if (count_ < capacity_) new (places_.get() + count_ * sizeof(PixelPlace)) PixelPlace{x, y};
        ++count_;
        bounds_.Add(x, y);
    }
    bool Empty() const { return count_ == 0; }
    bool Listed() const { return count_ <= capacity_; }
    const PixelPlace* begin() const { return reinterpret_cast<const PixelPlace*>(places_.get()); }
    const PixelPlace* end() const { return begin() + count_; }
    const Bounds& Around() const { return bounds_; }

  private:
    ByteBuffer places_;
    std::size_t capacity_, count_ = 0;
    Bounds bounds_;
};

struct Offset {
    int x, y;
};
// The first visible neighbour in this order gives its colour.
constexpr Offset kNeighbours[] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, 1}, {-1, 1}, {1, -1}};

// fresh[i] = 1 where the pixel is unknown and one of its eight neighbours is visible. A plain loop over
// bytes: most pixels are settled here, sixteen at a time.
void FindFresh(const std::uint8_t* marks, std::ptrdiff_t stride, std::uint8_t* fresh, std::uint32_t count) {
    const std::uint8_t* const above = marks - stride;
    const std::uint8_t* const below = marks + stride;
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(count); ++i) {
        const int near = marks[i - 1] | marks[i + 1] | above[i - 1] | above[i] | above[i + 1] | below[i - 1] |
                         below[i] | below[i + 1];
        fresh[i] = static_cast<std::uint8_t>(near & (marks[i] == kUnknown));
    }
}

// A pass fills the unknown pixels beside visible ones. Only neighbours of what the last pass filled can
// be meant, since all others had their chance. While those are few they are walked one by one; while they
// are many, the rectangle around them is swept row by row, which is cheaper per pixel and can happen only
// a few times before the picture is full.
template <typename Format>
class Bleeding {
  public:
    explicit Bleeding(Image& image)
        : image_(image),
          mask_(image),
          fresh_(AllocateBytes(image.width)),
          last_(ListCapacity()),
          now_(ListCapacity()) {}

    void Run() {
        if (!mask_.HasMemory() || !fresh_) return;
        const Bounds visible = MarkVisible();
        if (visible.Empty()) return;
        Sweep(visible.Grown(image_));
        const std::uint32_t limit = std::max(32u, std::max(image_.width, image_.height) / 64);
        for (std::uint32_t pass = 1; pass <= limit && !now_.Empty(); ++pass) {
            Settle();
            std::swap(last_, now_);
            now_.Clear();
            if (last_.Listed()) {
                Walk();
            } else {
                Sweep(last_.Around().Grown(image_));
            }
        }
    }

  private:
    std::size_t ListCapacity() const { return std::size_t{image_.width} * image_.height / 256 + 16; }

    Bounds MarkVisible() {
        Bounds bounds;
        for (std::uint32_t y = 0; y < image_.height; ++y) {
            const std::byte* const row = image_.Row(y);
            std::uint8_t* const marks = mask_.Row(y);
            for (std::uint32_t x = 0; x < image_.width; ++x) {
                const auto alpha = Format::Get(row + std::size_t{x} * Format::kBytes, 3);
                marks[x] = ConvertChannel<std::uint8_t>(alpha) != 0 ? kVisible : kUnknown;
            }
            const void* const first = std::memchr(marks, kVisible, image_.width);
            if (!first) continue;
            bounds.Add(static_cast<std::uint32_t>(static_cast<const std::uint8_t*>(first) - marks), y);
            std::uint32_t last = image_.width - 1;
            while (!marks[last]) --last;
            bounds.Add(last, y);
        }
        return bounds;
    }

    void Sweep(const Bounds& area) {
        const std::uint32_t count = area.right - area.left + 1;
        auto* const fresh = reinterpret_cast<std::uint8_t*>(fresh_.get());
        for (std::uint32_t y = area.top; y <= area.bottom; ++y) {
            FindFresh(mask_.Row(y) + area.left, mask_.Stride(), fresh, count);
            std::uint32_t i = 0;
            while (i < count) {
                const void* const found = std::memchr(fresh + i, 1, count - i);
                if (!found) break;
                i = static_cast<std::uint32_t>(static_cast<const std::uint8_t*>(found) - fresh);
                Fill(area.left + i, y);
                ++i;
            }
        }
    }

    void Walk() {
        for (const PixelPlace& place : last_) {
            const std::uint8_t* const marks = mask_.Row(place.y) + place.x;
            for (const Offset& offset : kNeighbours) {
                const std::uint32_t x = place.x + static_cast<std::uint32_t>(offset.x);
                const std::uint32_t y = place.y + static_cast<std::uint32_t>(offset.y);
                // One step beyond the left or top edge wraps to a large number.
                if (x >= image_.width || y >= image_.height) continue;
                if (marks[offset.y * mask_.Stride() + offset.x] == kUnknown) Fill(x, y);
            }
        }
    }

    void Fill(std::uint32_t x, std::uint32_t y) {
        std::uint8_t* const marks = mask_.Row(y) + x;
        std::byte* const pixel = image_.Row(y) + std::size_t{x} * Format::kBytes;
        const std::ptrdiff_t rowBytes = image_.stride, pixelBytes = Format::kBytes;
        for (const Offset& offset : kNeighbours) {
            if (!(marks[offset.y * mask_.Stride() + offset.x] & kVisible)) continue;
            TakeColour(pixel, pixel + offset.y * rowBytes + offset.x * pixelBytes);
            break;
        }
        *marks = kFilledInThisPass;
        now_.Add(x, y);
    }

    // The 8-bit colour of the neighbour, as the format stores it; the pixel's alpha is not touched.
    static void TakeColour(std::byte* pixel, const std::byte* neighbour) {
        const Color8 colour = Format::template Read<ChannelKind::Int8>(neighbour);
        using Channel = typename Format::Channel;
        Format::Set(pixel, Format::kRed, ConvertChannel<Channel>(colour.red));
        Format::Set(pixel, Format::kGreen, ConvertChannel<Channel>(colour.green));
        Format::Set(pixel, Format::kBlue, ConvertChannel<Channel>(colour.blue));
    }

    // What this pass filled may give its colour from the next one on.
    void Settle() {
        if (now_.Listed()) {
            for (const PixelPlace& place : now_) mask_.Row(place.y)[place.x] = kVisible;
            return;
        }
        const Bounds& area = now_.Around();
        const int count = static_cast<int>(area.right - area.left + 1);
        for (std::uint32_t y = area.top; y <= area.bottom; ++y) {
            std::uint8_t* const marks = mask_.Row(y) + area.left;
            for (int i = 0; i < count; ++i) {
                marks[i] = static_cast<std::uint8_t>((marks[i] | marks[i] >> 1) & kVisible);
            }
        }
    }

    Image& image_;
    Mask mask_;
    ByteBuffer fresh_;
    FilledPixels last_, now_;
};

}  // namespace

void BleedAlpha(Image& image) {
    if (!image.HasTransparency()) return;
    WithFormat(image.format, [&](auto tag) {
        using Format = FormatTraits<tag.value>;
        if constexpr (Format::kChannels == 4) Bleeding<Format>(image).Run();
    });
}

}  // namespace skyvault
