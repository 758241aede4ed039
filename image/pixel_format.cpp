#include "image/pixel_format.h"

#include <iterator>

namespace skyvault {

namespace {

struct FormatRow {
    std::uint32_t bytesPerPixel;
    ChannelKind kind;
    PixelFormat withAlpha;
    bool hasAlpha;
    const wchar_t* name;
};

using enum ChannelKind;

constexpr FormatRow kFormats[] = {
    {0, None, PixelFormat::None, false, L"Unknown format"},
    {1, Int8, PixelFormat::Rgba8, false, L"LDR 8 bpp R int"},
    {2, Int16, PixelFormat::Rgba16, false, L"HDR 16 bpp R int"},
    {2, Half, PixelFormat::RgbaHalf, false, L"HDR 16 bpp R float"},
    {3, Int8, PixelFormat::Rgba8, false, L"LDR 24 bpp RGB int"},
    {6, Int16, PixelFormat::Rgba16, false, L"HDR 48 bpp RGB int"},
    {6, Half, PixelFormat::RgbaHalf, false, L"HDR 48 bpp RGB float"},
    {4, Int8, PixelFormat::Rgba8, true, L"LDR 32 bpp RGBA int"},
    {8, Int16, PixelFormat::Rgba16, true, L"HDR 64 bpp RGBA int"},
    {8, Half, PixelFormat::RgbaHalf, true, L"HDR 64 bpp RGBA float"},
};

const FormatRow& RowOf(PixelFormat format) {
    const auto number = static_cast<std::uint32_t>(format);
    return kFormats[number < std::size(kFormats) ? number : 0];
}

}  // namespace

std::uint32_t BytesPerPixel(PixelFormat format) {
    return RowOf(format).bytesPerPixel;
}
ChannelKind ChannelType(PixelFormat format) {
    return RowOf(format).kind;
}
PixelFormat WithAlpha(PixelFormat format) {
    return RowOf(format).withAlpha;
}
bool HasAlpha(PixelFormat format) {
    return RowOf(format).hasAlpha;
}
const wchar_t* FormatName(PixelFormat format) {
    return RowOf(format).name;
}

}  // namespace skyvault
