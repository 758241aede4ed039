#include "codecs/wic_formats_win.h"

#include <algorithm>
#include <cwchar>
#include <string_view>

#include "platform/system_text.h"

namespace skyvault {
namespace {

// The 8-bit formats are blue first and the deeper ones red first, in memory as in the first entry of each.
const WicFormat kFormats[] = {
    {&GUID_WICPixelFormat8bppGray, PixelFormat::Grey8, false},
    {&GUID_WICPixelFormat16bppGray, PixelFormat::Grey16, false},
    {&GUID_WICPixelFormat16bppGrayHalf, PixelFormat::GreyHalf, false},
    {&GUID_WICPixelFormat24bppBGR, PixelFormat::Rgb8, false},
    {&GUID_WICPixelFormat24bppRGB, PixelFormat::Rgb8, true},
    {&GUID_WICPixelFormat48bppRGB, PixelFormat::Rgb16, false},
    {&GUID_WICPixelFormat48bppBGR, PixelFormat::Rgb16, true},
    {&GUID_WICPixelFormat48bppRGBHalf, PixelFormat::RgbHalf, false},
    {&GUID_WICPixelFormat32bppBGRA, PixelFormat::Rgba8, false},
    {&GUID_WICPixelFormat32bppRGBA, PixelFormat::Rgba8, true},
    {&GUID_WICPixelFormat64bppRGBA, PixelFormat::Rgba16, false},
    {&GUID_WICPixelFormat64bppBGRA, PixelFormat::Rgba16, true},
    {&GUID_WICPixelFormat64bppRGBAHalf, PixelFormat::RgbaHalf, false},
};

}  // namespace

const WicFormat* FindWicFormat(const GUID& guid) {
    for (const WicFormat& entry : kFormats) {
        if (IsEqualGUID(*entry.guid, guid)) return &entry;
    }
    return nullptr;
}

const GUID& WicFormatOf(PixelFormat format) {
    for (const WicFormat& entry : kFormats) {
        if (entry.format == format && !entry.swapRedAndBlue) return *entry.guid;
    }
    return GUID_WICPixelFormat8bppGray;
}

const GUID* WicContainerOf(PictureContainer container) {
    switch (container) {
        case PictureContainer::Bmp:
            return &GUID_ContainerFormatBmp;
        case PictureContainer::Jpeg:
            return &GUID_ContainerFormatJpeg;
        case PictureContainer::Png:
            return &GUID_ContainerFormatPng;
        case PictureContainer::Tiff:
            return &GUID_ContainerFormatTiff;
        case PictureContainer::Gif:
            return &GUID_ContainerFormatGif;
        case PictureContainer::Heif:
            return &GUID_ContainerFormatHeif;
        case PictureContainer::Exr:
        case PictureContainer::Hdr:
        case PictureContainer::None:
            break;
    }
    return nullptr;
}

void SwapBytesOf16(std::byte* bytes, std::size_t count) {
    for (std::size_t i = 0; i + 1 < count; i += 2) std::swap(bytes[i], bytes[i + 1]);
}

ComPtr<IWICImagingFactory> CreateWicFactory() {
    ComPtr<IWICImagingFactory> factory;
    CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                     factory.PutVoid());
    return factory;
}

std::vector<std::wstring> ReadableExtensions() {
    std::vector<std::wstring> extensions;
    const ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    ComPtr<IEnumUnknown> decoders;
    if (!factory || FAILED(factory->CreateComponentEnumerator(WICDecoder, WICComponentEnumerateDefault,
                                                              decoders.Put()))) {
        return extensions;
    }
    ComPtr<IUnknown> component;
    ULONG fetched = 0;
    while (decoders->Next(1, component.Put(), &fetched) == S_OK && fetched == 1) {
        const auto info = component.As<IWICBitmapCodecInfo>(IID_IWICBitmapCodecInfo);
        UINT length = 0;  // with the closing zero
        if (!info || FAILED(info->GetFileExtensions(0, nullptr, &length)) || length < 2) continue;
        std::wstring list(length, L'\0');
        if (FAILED(info->GetFileExtensions(length, list.data(), &length))) continue;
        list.resize(std::wcslen(list.c_str()));

        // ".jpeg,.jpe,.jpg"; some systems part them with semicolons.
        std::size_t start = 0;
        while (start < list.size()) {
            const std::size_t end = std::min(list.find_first_of(L",;", start), list.size());
            std::wstring_view one(list.data() + start, end - start);
            one.remove_prefix(std::min(one.find_first_not_of(L" ."), one.size()));
            const std::wstring upper = UpperCase(one);
            if (!upper.empty() &&
                std::find(extensions.begin(), extensions.end(), upper) == extensions.end()) {
                extensions.push_back(upper);
            }
            start = end + 1;
        }
    }
    return extensions;
}

std::wstring CodecTrouble() {
    return {};
}

}  // namespace skyvault
