#include "app/screen_picture.h"

#include <algorithm>

#include "image/pixel_convert.h"
#include "projection/resize_image.h"

namespace skyvault {
namespace {

/// Each colour byte × alpha ÷ 255, halves up.
void MultiplyByAlpha(Image& picture) {
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        auto* pixel = reinterpret_cast<std::uint8_t*>(picture.Row(y));
        for (std::uint32_t x = 0; x < picture.width; ++x, pixel += 4) {
            const std::uint32_t alpha = pixel[3];
            if (alpha == 255) continue;
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = static_cast<std::uint8_t>((pixel[channel] * alpha + 127) / 255);
            }
        }
    }
}

}  // namespace

Image ToScreenPicture(const Image& picture, std::uint32_t limit) {
    if (!picture.IsValid() || limit == 0) return {};
    Image result;
    if (picture.width > limit || picture.height > limit) {
        result = ReducedToFit(picture, static_cast<float>(limit), static_cast<float>(limit));
    } else {
        result = Image(picture.width, picture.height, PixelFormat::Rgba8);
        if (!result.IsValid()) return {};
        for (std::uint32_t y = 0; y < picture.height; ++y) {
            ConvertRow(picture.format, picture.Row(y), PixelFormat::Rgba8, result.Row(y), picture.width);
        }
    }
    if (result.IsValid()) MultiplyByAlpha(result);
    return result;
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

}  // namespace skyvault
