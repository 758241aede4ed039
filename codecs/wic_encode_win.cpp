#include "codecs/wic_encode_win.h"

#include <algorithm>

#include "codecs/gif_writer.h"
#include "codecs/wic_output_win.h"
#include "codecs/written_rows.h"

namespace skyvault {
namespace {

constexpr std::size_t kStripBytes = 1 << 20;

/// An in-memory WIC bitmap of the rows; null when WIC has no such bitmaps or no memory.
ComPtr<IWICBitmap> MakeBitmap(IWICImagingFactory& factory, const Image& image, const WrittenRows& rows,
                              PixelFormat format) {
    ComPtr<IWICBitmap> bitmap;
    if (FAILED(factory.CreateBitmap(image.width, image.height, WicFormatOf(format), WICBitmapCacheOnLoad,
                                    bitmap.Put()))) {
        return nullptr;
    }
    const WICRect all{0, 0, static_cast<INT>(image.width), static_cast<INT>(image.height)};
    ComPtr<IWICBitmapLock> lock;
    UINT stride = 0, size = 0;
    BYTE* memory = nullptr;
    if (FAILED(bitmap->Lock(&all, WICBitmapLockWrite, lock.Put())) || FAILED(lock->GetStride(&stride)) ||
        FAILED(lock->GetDataPointer(&size, &memory)) || !memory) {
        return nullptr;
    }
    for (std::uint32_t y = 0; y < image.height; ++y) {
        rows.Get(y, reinterpret_cast<std::byte*>(memory) + std::size_t{stride} * y);
    }
    return bitmap;
}

WicOutcome WriteWholeBitmap(IWICImagingFactory& factory, const Image& image, const std::wstring& path,
                            PictureContainer container, PixelFormat format, int quality) {
    const WrittenRows rows(image, format, format);
    if (!rows.Ready()) return WicOutcome::Failed;
    const ComPtr<IWICBitmap> bitmap = MakeBitmap(factory, image, rows, format);
    if (!bitmap) return WicOutcome::CannotDo;
    WicOutput file;
    if (!file.Begin(factory, container, CreateWicFileStream(factory, path)) ||
        !file.BeginFrame(image.width, image.height, quality)) {
        return WicOutcome::Failed;
    }
    WICPixelFormatGUID answer = WicFormatOf(format);
    if (FAILED(file.frame->SetPixelFormat(&answer))) return WicOutcome::CannotDo;
    if (FAILED(file.frame->WriteSource(bitmap.Get(), nullptr))) {
        // With nothing to convert, it is the file that failed.
        return IsEqualGUID(answer, WicFormatOf(format)) ? WicOutcome::Failed : WicOutcome::CannotDo;
    }
    return file.Finish() ? WicOutcome::Written : WicOutcome::Failed;
}

/// Which format to ask the encoder for on our own, best first, at most three.
struct Wishes {
    PixelFormat formats[3] = {};
};
Wishes WishesFor(PictureContainer container, PixelFormat format) {
    using enum PixelFormat;
    const bool grey =
        BytesPerPixel(format) == BytesPerPixel(ChannelType(format) == ChannelKind::Int8 ? Grey8 : Grey16);
    switch (container) {
        case PictureContainer::Bmp:
        case PictureContainer::Jpeg:
        case PictureContainer::Heif:
            return {{grey ? Grey8 : Rgb8, Rgb8}};
        default:
            break;
    }
    const PixelFormat plain = HasAlpha(format) ? Rgba16 : grey ? Grey16 : Rgb16;
    switch (ChannelType(format)) {
        case ChannelKind::Int16:
            return {{plain, HasAlpha(format) ? Rgba16 : Rgb16}};
        case ChannelKind::Half:
            return {{format, plain, HasAlpha(format) ? Rgba16 : Rgb16}};
        default:
            return {{format, HasAlpha(format) ? Rgba8 : Rgb8}};
    }
}

/// Settles the frame's pixel format: the first wish that is answered with the same kind of channels, else
/// the last answer that we can write. Null when there is none.
const WicFormat* SettleFormat(IWICBitmapFrameEncode& frame, const Wishes& wishes) {
    static const WicFormat kWithoutAlpha{&GUID_WICPixelFormat32bppBGR, PixelFormat::Rgba8, false};
    const WicFormat* settled = nullptr;
    for (const PixelFormat wish : wishes.formats) {
        if (wish == PixelFormat::None) continue;
        WICPixelFormatGUID answer = WicFormatOf(wish);
        if (FAILED(frame.SetPixelFormat(&answer))) continue;
        settled = IsEqualGUID(answer, *kWithoutAlpha.guid) ? &kWithoutAlpha : FindWicFormat(answer);
        if (settled && ChannelType(settled->format) == ChannelType(wish)) break;
    }
    return settled;
}

WicOutcome WriteOwnRows(IWICImagingFactory& factory, const Image& image, const std::wstring& path,
                        PictureContainer container, PixelFormat format, int quality) {
    WicOutput file;
    if (!file.Begin(factory, container, CreateWicFileStream(factory, path)) ||
        !file.BeginFrame(image.width, image.height, quality)) {
        return WicOutcome::Failed;
    }
    const WicFormat* target = SettleFormat(*file.frame.Get(), WishesFor(container, format));
    if (!target) return WicOutcome::Failed;
    const bool swapBytes = container == PictureContainer::Png &&
                           ChannelType(target->format) != ChannelKind::Int8 && PngEncoderSwapsBytes();

    const WrittenRows rows(image, format, target->format);
    const std::size_t stride = std::size_t{BytesPerPixel(target->format)} * image.width;
    const std::uint32_t stripRows =
        static_cast<std::uint32_t>(std::clamp<std::size_t>(kStripBytes / stride, 1, image.height));
    Image strip(image.width, stripRows, target->format);
    if (!rows.Ready() || !strip.IsValid()) return WicOutcome::Failed;

    for (std::uint32_t y = 0; y < image.height; y += stripRows) {
        const std::uint32_t count = std::min(stripRows, image.height - y);
        for (std::uint32_t row = 0; row < count; ++row) rows.Get(y + row, strip.Row(row));
        if (target->swapRedAndBlue) strip.SwapRedAndBlue();
        if (swapBytes) SwapBytesOf16(strip.pixels.get(), stride * count);
        if (FAILED(file.frame->WritePixels(count, strip.stride, strip.stride * count,
                                           reinterpret_cast<BYTE*>(strip.pixels.get())))) {
            return WicOutcome::Failed;
        }
    }
    return file.Finish() ? WicOutcome::Written : WicOutcome::Failed;
}

WicOutcome WriteGifFile(WicRoute route, IWICImagingFactory& factory, const Image& image,
                        const std::wstring& path, PixelFormat format) {
    constexpr std::uint32_t kLongestEdge = 65535;
    IndexedPicture indexed;
    if (image.width > kLongestEdge || image.height > kLongestEdge || !MakeIndexed(image, format, indexed)) {
        return WicOutcome::Failed;
    }
    const bool written = route == WicRoute::OwnFile ? WriteGif(path, indexed, image.width, image.height)
                                                    : WriteWicIndexed(factory, PictureContainer::Gif,
                                                                      CreateWicFileStream(factory, path),
                                                                      indexed, image.width, image.height);
    return written ? WicOutcome::Written : WicOutcome::Failed;
}

}  // namespace

WicRoute FirstWicRoute(PictureContainer container, PixelFormat format) {
    if (container == PictureContainer::Gif) {
        return GifEncoderLosesTransparency() ? WicRoute::OwnFile : WicRoute::Palette;
    }
    if (container == PictureContainer::Png && ChannelType(format) == ChannelKind::Int16 &&
        PngEncoderSwapsBytes()) {
        return WicRoute::OwnRows;
    }
    return WicRoute::WholeBitmap;
}

WicOutcome WriteOnRoute(WicRoute route, const Image& image, const std::wstring& path,
                        PictureContainer container, PixelFormat format, int quality) {
    const ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    if (!factory || !image.IsValid() || !WicContainerOf(container)) return WicOutcome::Failed;
    switch (route) {
        case WicRoute::WholeBitmap:
            return WriteWholeBitmap(*factory.Get(), image, path, container, format, quality);
        case WicRoute::OwnRows:
            return WriteOwnRows(*factory.Get(), image, path, container, format, quality);
        case WicRoute::Palette:
        case WicRoute::OwnFile:
            return WriteGifFile(route, *factory.Get(), image, path, format);
    }
    return WicOutcome::Failed;
}

bool EncodePicture(const Image& image, const std::wstring& path, PictureContainer container,
                   PixelFormat format, int quality) {
    if (BytesPerPixel(format) == 0) format = PixelFormat::Grey8;
    if (container != PictureContainer::Jpeg) quality = 0;
    const WicRoute route = FirstWicRoute(container, format);
    WicOutcome outcome = WriteOnRoute(route, image, path, container, format, quality);
    if (outcome == WicOutcome::CannotDo) {
        outcome = WriteOnRoute(WicRoute::OwnRows, image, path, container, format, quality);
    }
    return outcome == WicOutcome::Written;
}

bool CanChooseQuality() {
    return JpegEncoderKnowsQuality();
}

}  // namespace skyvault
