#include "image/picture_codec.h"

#include <algorithm>

namespace skyvault {

PictureContainer ContainerOfExtension(const std::wstring& upperExtension) {
    struct Row {
        const wchar_t* extension;
        PictureContainer container;
    };
    static constexpr Row kRows[] = {
        {L"BMP", PictureContainer::Bmp},   {L"JPG", PictureContainer::Jpeg},
        {L"JPEG", PictureContainer::Jpeg}, {L"JPE", PictureContainer::Jpeg},
        {L"JFIF", PictureContainer::Jpeg}, {L"PNG", PictureContainer::Png},
        {L"TIF", PictureContainer::Tiff},  {L"TIFF", PictureContainer::Tiff},
        {L"GIF", PictureContainer::Gif},   {L"HEIC", PictureContainer::Heif},
        {L"HEIF", PictureContainer::Heif},
    };
    for (const Row& row : kRows) {
        if (upperExtension == row.extension) return row.container;
    }
    return PictureContainer::None;
}

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
