#include "image/image.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "image/pixel_rows.h"

namespace skyvault {

namespace {

// A coordinate brought into 0 .. size − 1; anything within is the common case.
std::uint32_t Wrap(std::int32_t coordinate, std::uint32_t size) {
    if (static_cast<std::uint32_t>(coordinate) < size && coordinate >= 0) {
        return static_cast<std::uint32_t>(coordinate);
    }
    const std::int64_t rest = std::int64_t{coordinate} % std::int64_t{size};
    return static_cast<std::uint32_t>(rest < 0 ? rest + size : rest);
}

// Calls function(std::integral_constant<bytes per pixel>) for the sizes the formats have.
template <typename Function>
void WithPixelSize(PixelFormat format, Function&& function) {
    WithFormat(format, [&](auto tag) {
        function(std::integral_constant<std::size_t, FormatTraits<tag.value>::kBytes>{});
    });
}

// A block of bytes that is copied as one.
template <std::size_t size>
struct PixelBytes {
    std::byte bytes[size];
};

template <std::size_t size>
void SwapPixels(std::byte* a, std::byte* b) {
    PixelBytes<size> first, second;
    std::memcpy(&first, a, size);
    std::memcpy(&second, b, size);
    std::memcpy(a, &second, size);
    std::memcpy(b, &first, size);
}

bool RowHasTransparency8(const std::byte* row, std::uint32_t width) {
    std::uint32_t all = 0xff;
    for (std::uint32_t x = 0; x < width; ++x) {
        all &= std::to_integer<std::uint32_t>(row[std::size_t{x} * 4 + 3]);
    }
    return all != 0xff;
}

template <typename Format>
bool RowHasTransparency(const std::byte* row, std::uint32_t width) {
    std::uint32_t below = 0;
    for (std::uint32_t x = 0; x < width; ++x) {
        const auto alpha = Format::Get(row + std::size_t{x} * Format::kBytes, 3);
        below |= ConvertChannel<std::uint8_t>(alpha) < 255;
    }
    return below != 0;
}

}  // namespace

PictureSize FitInto(const PictureSize& size, const PictureSize& target) {
    const float scale = std::min(static_cast<float>(target.width) / static_cast<float>(size.width),
                                 static_cast<float>(target.height) / static_cast<float>(size.height));
    constexpr float kLargest = 4294967040.0f;  // the last float below 2³²
    const auto scaled = [&](std::uint32_t edge) {
        return static_cast<std::uint32_t>(std::min(static_cast<float>(edge) * scale, kLargest));
    };
    return {scaled(size.width), scaled(size.height)};
}

Image::Image(std::uint32_t imageWidth, std::uint32_t imageHeight, PixelFormat imageFormat)
    : width(imageWidth), height(imageHeight), format(imageFormat) {
    const std::uint64_t rowBytes = std::uint64_t{BytesPerPixel(format)} * width;
    if (rowBytes > std::numeric_limits<std::uint32_t>::max()) return;
    stride = static_cast<std::uint32_t>(rowBytes);
    pixels = AllocateBytes(ByteCount());
}

bool Image::IsValid() const {
    if (width == 0 || height == 0 || format == PixelFormat::None || !pixels || stride == 0) return false;
    if (format == PixelFormat::Rgb8) return stride >= std::uint64_t{3} * width;
    if (format == PixelFormat::Rgba8) return stride >= std::uint64_t{4} * width;
    return true;
}

const std::byte* Image::PixelAddress(std::int32_t x, std::int32_t y) const {
    if (!IsValid()) return nullptr;
    return Row(Wrap(y, height)) + std::size_t{BytesPerPixel(format)} * Wrap(x, width);
}

std::byte* Image::PixelAddress(std::int32_t x, std::int32_t y) {
    return const_cast<std::byte*>(static_cast<const Image*>(this)->PixelAddress(x, y));
}

Color8 Image::GetPixel8(std::int32_t x, std::int32_t y) const {
    const std::byte* p = PixelAddress(x, y);
    return p && BytesPerPixel(format) ? ReadColor8(format, p) : Color8();
}

Color16 Image::GetPixel16(std::int32_t x, std::int32_t y) const {
    const std::byte* p = PixelAddress(x, y);
    return p && BytesPerPixel(format) ? ReadColor16(format, p) : Color16();
}

ColorHalf Image::GetPixelHalf(std::int32_t x, std::int32_t y) const {
    const std::byte* p = PixelAddress(x, y);
    return p && BytesPerPixel(format) ? ReadColorHalf(format, p) : ColorHalf();
}

PixelValue Image::GetPixel(std::int32_t x, std::int32_t y) const {
    const std::byte* p = PixelAddress(x, y);
    return p && BytesPerPixel(format) ? ReadPixel(format, p) : PixelValue();
}

void Image::SetPixel(std::int32_t x, std::int32_t y, const PixelValue& value) {
    WritePixel(format, PixelAddress(x, y), value);
}

void Image::SetPixel(std::int32_t x, std::int32_t y, const Color8& colour) {
    WriteColor8(format, PixelAddress(x, y), colour);
}

void Image::Fill(const PixelValue& value) {
    const std::size_t pixelBytes = BytesPerPixel(format);
    if (!IsValid() || pixelBytes == 0 || ChannelType(value.format) == ChannelKind::None) return;
    // The first row grows from one pixel by doubling, the others are copies of it.
    const std::size_t rowBytes = pixelBytes * width;
    std::byte* const first = Row(0);
    WritePixel(format, first, value);
    for (std::size_t done = pixelBytes; done < rowBytes;) {
        const std::size_t step = std::min(done, rowBytes - done);
        std::memcpy(first + done, first, step);
        done += step;
    }
    for (std::uint32_t y = 1; y < height; ++y) std::memcpy(Row(y), first, rowBytes);
}

Image Image::CopyRect(const std::optional<PixelRect>& rect) const {
    const std::size_t pixelBytes = BytesPerPixel(format);
    if (!IsValid() || pixelBytes == 0) return {};
    const auto clamped = [](std::int64_t value, std::uint32_t size) {
        return std::clamp<std::int64_t>(value, 0, std::int64_t{size} - 1);
    };
    std::int64_t left = 0, top = 0, right = std::int64_t{width} - 1, bottom = std::int64_t{height} - 1;
    if (rect) {
        left = clamped(rect->left, width);
        right = clamped(rect->right, width);
        top = clamped(rect->top, height);
        bottom = clamped(rect->bottom, height);
    }
    if (right < left || bottom < top) return {};

    Image copy(static_cast<std::uint32_t>(right - left + 1), static_cast<std::uint32_t>(bottom - top + 1),
               format);
    if (!copy.pixels) return {};
    copy.topDown = topDown;
    for (std::uint32_t y = 0; y < copy.height; ++y) {
        const std::byte* const source =
            Row(static_cast<std::uint32_t>(top) + y) + pixelBytes * static_cast<std::size_t>(left);
        std::memcpy(copy.Row(y), source, copy.stride);
    }
    return copy;
}

bool Image::FlipVertical() {
    if (!IsValid()) return false;
    const ByteBuffer row = AllocateBytes(stride);
    if (!row) return false;
    for (std::uint32_t y = 0; y < height / 2; ++y) {
        std::byte* const upper = Row(y);
        std::byte* const lower = Row(height - 1 - y);
        std::memcpy(row.get(), upper, stride);
        std::memcpy(upper, lower, stride);
        std::memcpy(lower, row.get(), stride);
    }
    topDown = topDown ? 0 : 1;
    return true;
}

void Image::Rotate180() {
    if (!IsValid()) return;
    WithPixelSize(format, [&](auto size) {
        constexpr std::size_t kBytes = size.value;
        for (std::uint32_t y = 0; y < height / 2; ++y) {
            std::byte* forward = Row(y);
            std::byte* backward = Row(height - 1 - y) + kBytes * (width - 1);
            for (std::uint32_t x = 0; x < width; ++x, forward += kBytes, backward -= kBytes) {
                SwapPixels<kBytes>(forward, backward);
            }
        }
        if (height % 2 == 0) return;
        std::byte* const middle = Row(height / 2);
        for (std::uint32_t x = 0; x < width / 2; ++x) {
            SwapPixels<kBytes>(middle + kBytes * x, middle + kBytes * (width - 1 - x));
        }
    });
}

bool Image::HasTransparency() const {
    if (!IsValid() || !HasAlpha(format)) return false;
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::byte* const row = Row(y);
        const bool found = format == PixelFormat::Rgba8 ? RowHasTransparency8(row, width)
                           : format == PixelFormat::Rgba16
                               ? RowHasTransparency<FormatTraits<PixelFormat::Rgba16>>(row, width)
                               : RowHasTransparency<FormatTraits<PixelFormat::RgbaHalf>>(row, width);
        if (found) return true;
    }
    return false;
}

void Image::FlattenAlpha(const Color8& background) {
    if (!HasTransparency()) return;
    for (std::uint32_t y = 0; y < height; ++y) FlattenRow(format, Row(y), width, background);
}

void Image::SwapRedAndBlue() {
    if (!IsValid()) return;
    for (std::uint32_t y = 0; y < height; ++y) SwapRedAndBlueRow(format, Row(y), width);
}

}  // namespace skyvault
