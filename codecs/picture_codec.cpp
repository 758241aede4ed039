#include "codecs/picture_codec.h"

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
        {L"HEIF", PictureContainer::Heif}, {L"EXR", PictureContainer::Exr},
        {L"HDR", PictureContainer::Hdr},
    };
    for (const Row& row : kRows) {
        if (upperExtension == row.extension) return row.container;
    }
    return PictureContainer::None;
}

}  // namespace skyvault
