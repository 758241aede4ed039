#include "projection/resize_image.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "image/pixel_rows.h"
#include "platform/memory.h"
#include "platform/numeric.h"

namespace skyvault {

namespace {

/// Sums of one box; channels as the source's own type, alpha where it has one.
template <typename Sum>
struct BoxSums {
    Sum red = 0, green = 0, blue = 0, alpha = 0;
    std::uint32_t visible = 0, all = 0;

    void Add(Sum r, Sum g, Sum b, Sum a, bool withAlpha) {
        if (withAlpha) {
            ++all;
            alpha += a;
            if (!(a > 0)) return;
        }
        red += r;
        green += g;
        blue += b;
        ++visible;
    }
};

/// Runs add(pixel) for every source pixel of the box of result pixel (x, y).
template <typename Add>
void ForBox(const Image& source, const BoxGrid& grid, std::uint32_t x, std::uint32_t y, Add add) {
    const std::uint32_t startRow = static_cast<std::uint32_t>(std::uint64_t{y} * source.height / grid.height);
    const std::uint32_t startColumn =
        static_cast<std::uint32_t>(std::uint64_t{x} * source.width / grid.width);
    const std::uint32_t bytes = BytesPerPixel(source.format);
    for (std::uint32_t j = 0; j < grid.box; ++j) {
        const std::uint32_t row = startRow + j * grid.rowStep;
        if (row >= source.height) break;
        const std::byte* line = source.Row(row);
        for (std::uint32_t i = 0; i < grid.box; ++i) {
            const std::uint32_t column = startColumn + i * grid.columnStep;
            if (column >= source.width) break;
            add(line + std::size_t{column} * bytes);
        }
    }
}

PixelValue AverageOfBox(const Image& source, const BoxGrid& grid, std::uint32_t x, std::uint32_t y,
                        bool withAlpha) {
    PixelValue value(Color8(0, 0, 0, 0));
    switch (ChannelType(source.format)) {
        case ChannelKind::Int8: {
            BoxSums<std::uint32_t> s;
            ForBox(source, grid, x, y, [&](const std::byte* p) {
                const Color8 c = ReadColor8(source.format, p);
                s.Add(c.red, c.green, c.blue, c.alpha, withAlpha);
            });
            if (s.visible == 0) return value;
            const std::uint32_t n = s.visible;
            value.color8 =
                Color8(static_cast<std::uint8_t>(s.red / n), static_cast<std::uint8_t>(s.green / n),
                       static_cast<std::uint8_t>(s.blue / n),
                       static_cast<std::uint8_t>(s.all ? s.alpha / s.all : 255));
            return value;
        }
        case ChannelKind::Int16: {
            BoxSums<std::uint32_t> s;
            ForBox(source, grid, x, y, [&](const std::byte* p) {
                const Color16 c = ReadColor16(source.format, p);
                s.Add(c.red, c.green, c.blue, c.alpha, withAlpha);
            });
            if (s.visible == 0) return value;
            const std::uint32_t n = s.visible;
            value.format = PixelFormat::Rgba16;
            value.color16 = {static_cast<std::uint16_t>(s.red / n), static_cast<std::uint16_t>(s.green / n),
                             static_cast<std::uint16_t>(s.blue / n),
                             static_cast<std::uint16_t>(s.all ? s.alpha / s.all : 65535)};
            return value;
        }
        case ChannelKind::Half: {
            BoxSums<float> s;
            ForBox(source, grid, x, y, [&](const std::byte* p) {
                const ColorHalf c = ReadColorHalf(source.format, p);
                s.Add(HalfToFloat(c.red), HalfToFloat(c.green), HalfToFloat(c.blue), HalfToFloat(c.alpha),
                      withAlpha);
            });
            if (s.visible == 0) return value;
            const float n = static_cast<float>(s.visible);
            const float alpha = s.all ? s.alpha / static_cast<float>(s.all) : 1.0f;
            value.format = PixelFormat::RgbaHalf;
            value.colorHalf = {FloatToHalf(s.red / n), FloatToHalf(s.green / n), FloatToHalf(s.blue / n),
                               FloatToHalf(alpha)};
            return value;
        }
        case ChannelKind::None:
            break;
    }
    return value;
}

/// Integer formats without alpha, halved exactly: the four pixels of each 2 × 2 box, channel by channel.
template <typename Channel, int kChannels>
void HalveRow(const std::byte* upper, const std::byte* lower, std::uint32_t width, std::byte* destination) {
    const Channel* a = reinterpret_cast<const Channel*>(upper);
    const Channel* b = reinterpret_cast<const Channel*>(lower);
    Channel* d = reinterpret_cast<Channel*>(destination);
    for (std::uint32_t x = 0; x < width; ++x) {
        for (int c = 0; c < kChannels; ++c) {
            const std::uint32_t sum =
                static_cast<std::uint32_t>(a[c]) + a[c + kChannels] + b[c] + b[c + kChannels];
            d[c] = static_cast<Channel>(sum / 4);
        }
        a += 2 * kChannels;
        b += 2 * kChannels;
        d += kChannels;
    }
}

/// The same for three channels of 8 bits, eight bytes at a time: a quarter of the loads.
void HalveRowRgb8(const std::byte* upper, const std::byte* lower, std::uint32_t width,
                  std::byte* destination) {
    // Bytes 0, 2, 4, 6 of two pixels (and what follows them), each with 16 bits to itself.
    constexpr std::uint64_t kEven = 0x00ff00ff00ff00ff;
    static_assert(std::endian::native == std::endian::little && kReadableBehind >= 2);
    for (std::uint32_t x = 0; x < width; ++x) {
        std::uint64_t a = 0, b = 0;
        std::memcpy(&a, upper + std::size_t{x} * 6, sizeof a);
        std::memcpy(&b, lower + std::size_t{x} * 6, sizeof b);
        const std::uint64_t even = (a & kEven) + (b & kEven);
        const std::uint64_t odd = (a >> 8 & kEven) + (b >> 8 & kEven);
        // The first pixel's channels are bytes 0, 1 and 2, the second's 3, 4 and 5.
        std::byte* const d = destination + std::size_t{x} * 3;
        d[0] = static_cast<std::byte>(static_cast<std::uint16_t>(even + (odd >> 16)) / 4);
        d[1] = static_cast<std::byte>(static_cast<std::uint16_t>(odd + (even >> 32)) / 4);
        d[2] = static_cast<std::byte>(static_cast<std::uint16_t>((even >> 16) + (odd >> 32)) / 4);
    }
}

/// Four channels, alpha last. False, and nothing written, unless something of all four pixels is visible.
template <typename Channel>
bool HalveVisible(const std::byte* upper, const std::byte* lower, std::byte* destination) {
    Channel a[8], b[8], d[4];
    std::memcpy(a, upper, sizeof a);
    std::memcpy(b, lower, sizeof b);
    if (a[3] == 0 || a[7] == 0 || b[3] == 0 || b[7] == 0) return false;
    for (int c = 0; c < 4; ++c) {
        const std::uint32_t sum = static_cast<std::uint32_t>(a[c]) + a[c + 4] + b[c] + b[c + 4];
        d[c] = static_cast<Channel>(sum / 4);
    }
    std::memcpy(destination, d, sizeof d);
    return true;
}

/// Whether every box is of 2 × 2 pixels within the source, without a change of format.
bool HalvesExactly(const Image& source, const BoxGrid& grid, PixelFormat format) {
    return source.format == format && grid.box == 2 && grid.rowStep != 0 && grid.columnStep != 0 &&
           source.width == 2 * grid.width && source.height == 2 * grid.height;
}

Image CropOrPad(const Image& source, Image result) {
    const PixelValue nothing(Color8(0, 0, 0, 0));
    result.Fill(nothing);
    const std::uint32_t width = std::min(source.width, result.width);
    const std::uint32_t height = std::min(source.height, result.height);
    for (std::uint32_t y = 0; y < height; ++y) {
        ConvertRow(source.format, source.Row(y), result.format, result.Row(y), width);
    }
    return result;
}

}  // namespace

BoxGrid MakeBoxGrid(std::uint32_t sourceWidth, std::uint32_t sourceHeight, std::uint32_t width,
                    std::uint32_t height) {
    const float ratio = std::max(static_cast<float>(sourceWidth) / static_cast<float>(width),
                                 static_cast<float>(sourceHeight) / static_cast<float>(height));
    const float box = std::clamp(std::ceil(ratio), 2.0f, 32.0f);
    return {width, height, static_cast<std::uint32_t>(box), height == 1 ? 0u : 1u, width == 1 ? 0u : 1u};
}

void AverageRow(const Image& source, const BoxGrid& grid, std::uint32_t y, PixelFormat format,
                std::byte* destination) {
    const bool exact = HalvesExactly(source, grid, format);
    const std::byte* const upper = exact ? source.Row(2 * y) : nullptr;
    const std::byte* const lower = exact ? source.Row(2 * y + 1) : nullptr;
    if (exact) {
        switch (format) {
            case PixelFormat::Grey8:
                return HalveRow<std::uint8_t, 1>(upper, lower, grid.width, destination);
            case PixelFormat::Rgb8:
                return HalveRowRgb8(upper, lower, grid.width, destination);
            case PixelFormat::Grey16:
                return HalveRow<std::uint16_t, 1>(upper, lower, grid.width, destination);
            case PixelFormat::Rgb16:
                return HalveRow<std::uint16_t, 3>(upper, lower, grid.width, destination);
            default:
                break;
        }
    }
    const bool withAlpha = HasAlpha(format);
    const std::size_t bytes = BytesPerPixel(format);
    for (std::uint32_t x = 0; x < grid.width; ++x) {
        std::byte* const target = destination + x * bytes;
        const std::size_t box = 2 * x * bytes;
        if (exact && format == PixelFormat::Rgba8 &&
            HalveVisible<std::uint8_t>(upper + box, lower + box, target)) {
            continue;
        }
        if (exact && format == PixelFormat::Rgba16 &&
            HalveVisible<std::uint16_t>(upper + box, lower + box, target)) {
            continue;
        }
        WritePixel(format, target, AverageOfBox(source, grid, x, y, withAlpha));
    }
}

Image ResizeImage(const Image& source, std::uint32_t width, std::uint32_t height, PixelFormat format,
                  bool average, bool keepAspect) {
    if (!source.IsValid()) return {};
    if (keepAspect) {
        const float k = std::min(static_cast<float>(width) / static_cast<float>(source.width),
                                 static_cast<float>(height) / static_cast<float>(source.height));
        width = static_cast<std::uint32_t>(RoundHalfAway(static_cast<float>(source.width) * k));
        height = static_cast<std::uint32_t>(RoundHalfAway(static_cast<float>(source.height) * k));
    }
    Image result(width, height, format);
    if (!result.IsValid()) return result;
    if ((width == source.width && height == source.height) || !average)
        return CropOrPad(source, std::move(result));
    const BoxGrid grid = MakeBoxGrid(source.width, source.height, width, height);
    for (std::uint32_t y = 0; y < height; ++y) AverageRow(source, grid, y, format, result.Row(y));
    return result;
}

}  // namespace skyvault
