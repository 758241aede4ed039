#include "app/screen_picture.h"

#include <algorithm>

#include "image/pixel_format.h"
#include "image/pixel_rows.h"
#include "platform/parallel_rows.h"
#include "projection/resize_image.h"

namespace skyvault {
namespace {

/// Enough rows to make handing them to another thread worth it.
constexpr std::uint32_t kBandRows = 32;

/// Each colour byte × alpha ÷ 255, halves up.
void MultiplyByAlpha(std::byte* row, std::uint32_t width) {
    auto* pixel = reinterpret_cast<std::uint8_t*>(row);
    for (std::uint32_t x = 0; x < width; ++x, pixel += 4) {
        const std::uint32_t alpha = pixel[3];
        if (alpha == 255) continue;
        for (int channel = 0; channel < 3; ++channel) {
            pixel[channel] = static_cast<std::uint8_t>((pixel[channel] * alpha + 127) / 255);
        }
    }
}

template <typename Work>
void ForEachRow(const Image& picture, const Work& work) {
    const std::uint32_t bands = (picture.height + kBandRows - 1) / kBandRows;
    ParallelBands(static_cast<int>(bands), true, [&](int band) {
        const std::uint32_t first = static_cast<std::uint32_t>(band) * kBandRows;
        const std::uint32_t end = std::min(first + kBandRows, picture.height);
        for (std::uint32_t y = first; y < end; ++y) work(y);
    });
}

}  // namespace

bool ToScreenPicture(const Image& picture, std::uint32_t limit, Image& result) {
    if (!picture.IsValid() || limit == 0) return false;
    if (picture.width > limit || picture.height > limit) {
        result = ReducedToFit(picture, static_cast<float>(limit), static_cast<float>(limit));
        if (!result.IsValid()) return false;
        ForEachRow(result, [&](std::uint32_t y) { MultiplyByAlpha(result.Row(y), result.width); });
        return true;
    }
    if (!result.IsValid() || result.width != picture.width || result.height != picture.height ||
        result.format != PixelFormat::Rgba8) {
        result = Image();  // its memory first: the new one may need it
        result = Image(picture.width, picture.height, PixelFormat::Rgba8);
        if (!result.IsValid()) return false;
    }
    const bool transparent = HasAlpha(picture.format);
    ForEachRow(result, [&](std::uint32_t y) {
        ConvertRow(picture.format, picture.Row(y), PixelFormat::Rgba8, result.Row(y), picture.width);
        if (transparent) MultiplyByAlpha(result.Row(y), result.width);
    });
    return true;
}

Image ReducedToFit(const Image& picture, float width, float height) {
    if (!picture.IsValid()) return {};
    const auto pictureWidth = static_cast<float>(picture.width),
               pictureHeight = static_cast<float>(picture.height);
    const float scale = std::min(width / pictureWidth, height / pictureHeight);
    if (!(scale > 0.0f && scale < 1.0f)) return {};
    // A very long picture keeps at least one row or column.
    const auto newWidth = std::max(1u, static_cast<std::uint32_t>(pictureWidth * scale));
    const auto newHeight = std::max(1u, static_cast<std::uint32_t>(pictureHeight * scale));
    return ResizeImage(picture, newWidth, newHeight, PixelFormat::Rgba8, true, false);
}

PicturePlace FitPicture(const ClientSize& client, std::uint32_t pictureWidth, std::uint32_t pictureHeight) {
    if (client.width <= 0 || client.height <= 0 || pictureWidth == 0 || pictureHeight == 0) return {};
    // In whole numbers: the side that limits is the client area's to the pixel.
    const std::int64_t width = client.width, height = client.height;
    const bool widthLimits = width * pictureHeight <= height * pictureWidth;
    PicturePlace place;
    place.width =
        widthLimits ? client.width : static_cast<std::int32_t>(height * pictureWidth / pictureHeight);
    place.height =
        widthLimits ? static_cast<std::int32_t>(width * pictureHeight / pictureWidth) : client.height;
    place.left = (client.width - place.width) / 2;
    place.top = (client.height - place.height) / 2;
    return place;
}

}  // namespace skyvault
