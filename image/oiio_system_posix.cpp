#include "image/oiio_system_posix.h"

#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <string>

#include "image/picture_codec.h"

namespace skyvault {

void PrepareOiio() {
    static const bool prepared = [] {
        // The program's row loops are the only thing that runs on more than one thread.
        OIIO::attribute("threads", 1);
        OIIO::attribute("limits:channels", 64);
        OIIO::attribute("limits:imagesize_MB", 16 * 1024);
        return true;
    }();
    static_cast<void>(prepared);
}

OIIO::TypeDesc OiioChannelType(PixelFormat format) {
    switch (ChannelType(format)) {
        case ChannelKind::Int16:
            return OIIO::TypeDesc::UINT16;
        case ChannelKind::Half:
            return OIIO::TypeDesc::HALF;
        default:
            return OIIO::TypeDesc::UINT8;
    }
}

int ChannelCount(PixelFormat format) {
    const std::uint32_t channelBytes = ChannelType(format) == ChannelKind::Int8 ? 1 : 2;
    return static_cast<int>(BytesPerPixel(format) / channelBytes);
}

std::vector<std::wstring> ReadableExtensions() {
    PrepareOiio();
    struct Row {
        const char* oiioName;
        std::vector<std::wstring> extensions;
    };
    static const Row kRows[] = {
        {"bmp", {L"BMP", L"DIB"}}, {"gif", {L"GIF"}},           {"jpeg", {L"JPG", L"JPEG", L"JPE", L"JFIF"}},
        {"png", {L"PNG"}},         {"tiff", {L"TIF", L"TIFF"}}, {"heif", {L"HEIC", L"HEIF", L"AVIF"}},
        {"webp", {L"WEBP"}},
    };
    const std::vector<std::string> installed =
        OIIO::Strutil::splits(OIIO::get_string_attribute("input_format_list"), ",");
    std::vector<std::wstring> extensions;
    for (const Row& row : kRows) {
        if (std::find(installed.begin(), installed.end(), row.oiioName) == installed.end()) continue;
        extensions.insert(extensions.end(), row.extensions.begin(), row.extensions.end());
    }
    return extensions;
}

}  // namespace skyvault
