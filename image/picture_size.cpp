#include "image/picture_size.h"

#include <algorithm>

namespace skyvault {

PictureSize FitInto(const PictureSize& size, const PictureSize& target) {
    const float scale = std::min(static_cast<float>(target.width) / static_cast<float>(size.width),
                                 static_cast<float>(target.height) / static_cast<float>(size.height));
    constexpr float kLargest = 4294967040.0f;  // the last float below 2³²
    const auto scaled = [&](std::uint32_t edge) {
        return static_cast<std::uint32_t>(std::min(static_cast<float>(edge) * scale, kLargest));
    };
    return {scaled(size.width), scaled(size.height)};
}

}  // namespace skyvault
