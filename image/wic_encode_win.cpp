#include "image/wic_encode_win.h"

#include <shlwapi.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "image/pixel_convert.h"
#include "image/written_rows.h"

namespace skyvault {
namespace {

constexpr std::size_t kStripBytes = 1 << 20;

/// A file with one frame, being encoded.
struct OpenFile {
    ComPtr<IStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;

    /// Up to the frame's size; the pixel format is next.
    bool Begin(IWICImagingFactory& factory, PictureContainer container, ComPtr<IStream> target) {
        stream = std::move(target);
        return stream &&
               SUCCEEDED(factory.CreateEncoder(*WicContainerOf(container), nullptr, encoder.Put())) &&
               SUCCEEDED(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache));
    }
    bool BeginFrame(std::uint32_t width, std::uint32_t height) {
        // The encoder's default options: no option bag. Some encoders fail here without a word and leave
        // the pointer null.
        return SUCCEEDED(encoder->CreateNewFrame(frame.Put(), nullptr)) && frame &&
               SUCCEEDED(frame->Initialize(nullptr)) && SUCCEEDED(frame->SetSize(width, height));
    }
    bool Finish() { return SUCCEEDED(frame->Commit()) && SUCCEEDED(encoder->Commit()); }
};

ComPtr<IStream> CreateFileStream(IWICImagingFactory& factory, const std::wstring& path) {
    ComPtr<IWICStream> stream;
    if (FAILED(factory.CreateStream(stream.Put())) ||
        FAILED(stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE))) {
        return nullptr;
    }
    return stream.As<IStream>(IID_IStream);
}

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
                            PictureContainer container, PixelFormat format) {
    const WrittenRows rows(image, format, format);
    if (!rows.Ready()) return WicOutcome::Failed;
    const ComPtr<IWICBitmap> bitmap = MakeBitmap(factory, image, rows, format);
    if (!bitmap) return WicOutcome::CannotDo;
    OpenFile file;
    if (!file.Begin(factory, container, CreateFileStream(factory, path)) ||
        !file.BeginFrame(image.width, image.height)) {
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

void SwapBytesOf16(std::byte* bytes, std::size_t count) {
    for (std::size_t i = 0; i + 1 < count; i += 2) std::swap(bytes[i], bytes[i + 1]);
}

WicOutcome WriteOwnRows(IWICImagingFactory& factory, const Image& image, const std::wstring& path,
                        PictureContainer container, PixelFormat format) {
    OpenFile file;
    if (!file.Begin(factory, container, CreateFileStream(factory, path)) ||
        !file.BeginFrame(image.width, image.height)) {
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

constexpr std::uint8_t kOpaqueFrom = 128;  // GIF knows no half transparency

bool AnyTransparent(const Image& image, PixelFormat format) {
    if (!HasAlpha(format) || !HasAlpha(image.format)) return false;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const std::byte* pixel = image.Row(y);
        for (std::uint32_t x = 0; x < image.width; ++x, pixel += BytesPerPixel(image.format)) {
            if (ReadColor8(image.format, pixel).alpha < kOpaqueFrom) return true;
        }
    }
    return false;
}

/// The picture's colours: 256, or 255 and a transparent one after them.
bool ChooseColours(IWICPalette& palette, IWICBitmapSource& bitmap, PixelFormat format, bool transparent) {
    if (format == PixelFormat::Grey8 || format == PixelFormat::Grey16 || format == PixelFormat::GreyHalf) {
        return SUCCEEDED(palette.InitializePredefined(WICBitmapPaletteTypeFixedGray256, FALSE));
    }
    return SUCCEEDED(palette.InitializeFromBitmap(&bitmap, transparent ? 255 : 256, FALSE));
}

WicOutcome WritePalette(IWICImagingFactory& factory, const Image& image, const std::wstring& path,
                        PictureContainer container, PixelFormat format) {
    const WrittenRows rows(image, format, PixelFormat::Rgba8);
    if (!rows.Ready()) return WicOutcome::Failed;
    const bool transparent = AnyTransparent(image, format);

    // The indices of the nearest colours, as WIC dithers them.
    ComPtr<IWICPalette> palette;
    ComPtr<IWICFormatConverter> indexed;
    const ComPtr<IWICBitmap> bitmap = MakeBitmap(factory, image, rows, PixelFormat::Rgba8);
    Image indices(image.width, image.height, PixelFormat::Grey8);
    if (!bitmap || !indices.IsValid() || FAILED(factory.CreatePalette(palette.Put())) ||
        !ChooseColours(*palette.Get(), *bitmap.Get(), format, transparent) ||
        FAILED(factory.CreateFormatConverter(indexed.Put())) ||
        FAILED(indexed->Initialize(bitmap.Get(), GUID_WICPixelFormat8bppIndexed,
                                   WICBitmapDitherTypeErrorDiffusion, palette.Get(), 0,
                                   WICBitmapPaletteTypeCustom)) ||
        FAILED(indexed->CopyPixels(nullptr, indices.stride, static_cast<UINT>(indices.ByteCount()),
                                   reinterpret_cast<BYTE*>(indices.pixels.get())))) {
        return WicOutcome::Failed;
    }

    if (transparent) {
        WICColor colours[256] = {};
        UINT count = 0;
        if (FAILED(palette->GetColors(255, colours, &count)) || count > 255) return WicOutcome::Failed;
        colours[count] = 0;
        if (FAILED(palette->InitializeCustom(colours, count + 1))) return WicOutcome::Failed;
        Image row(image.width, 1, PixelFormat::Rgba8);
        if (!row.IsValid()) return WicOutcome::Failed;
        for (std::uint32_t y = 0; y < image.height; ++y) {
            rows.Get(y, row.Row(0));
            for (std::uint32_t x = 0; x < image.width; ++x) {
                const std::uint8_t alpha = std::to_integer<std::uint8_t>(row.Row(0)[std::size_t{x} * 4 + 3]);
                if (alpha < kOpaqueFrom) indices.Row(y)[x] = static_cast<std::byte>(count);
            }
        }
    }

    OpenFile file;
    WICPixelFormatGUID answer = GUID_WICPixelFormat8bppIndexed;
    if (!file.Begin(factory, container, CreateFileStream(factory, path)) ||
        FAILED(file.encoder->SetPalette(palette.Get())) || !file.BeginFrame(image.width, image.height) ||
        FAILED(file.frame->SetPixelFormat(&answer)) || !IsEqualGUID(answer, GUID_WICPixelFormat8bppIndexed) ||
        FAILED(file.frame->SetPalette(palette.Get())) ||
        FAILED(file.frame->WritePixels(image.height, indices.stride, static_cast<UINT>(indices.ByteCount()),
                                       reinterpret_cast<BYTE*>(indices.pixels.get()))) ||
        !file.Finish()) {
        return WicOutcome::Failed;
    }
    return WicOutcome::Written;
}

bool ProbePngByteOrder() {
    const ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    if (!factory) return false;
    const auto memory = ComPtr<IStream>::Attach(SHCreateMemStream(nullptr, 0));
    std::uint16_t pixel[3] = {0x1234, 0x5678, 0x9abc};
    WICPixelFormatGUID format = GUID_WICPixelFormat48bppRGB;
    OpenFile file;
    if (!file.Begin(*factory.Get(), PictureContainer::Png, memory) || !file.BeginFrame(1, 1) ||
        FAILED(file.frame->SetPixelFormat(&format)) || !IsEqualGUID(format, GUID_WICPixelFormat48bppRGB) ||
        FAILED(file.frame->WritePixels(1, sizeof pixel, sizeof pixel, reinterpret_cast<BYTE*>(pixel))) ||
        !file.Finish()) {
        return false;
    }
    ComPtr<IWICBitmapDecoder> decoder;
    ComPtr<IWICBitmapFrameDecode> frame;
    const LARGE_INTEGER start{};
    std::uint16_t read[3] = {};
    if (FAILED(memory->Seek(start, STREAM_SEEK_SET, nullptr)) ||
        FAILED(factory->CreateDecoderFromStream(memory.Get(), nullptr, WICDecodeMetadataCacheOnDemand,
                                                decoder.Put())) ||
        FAILED(decoder->GetFrame(0, frame.Put())) ||
        FAILED(frame->CopyPixels(nullptr, sizeof read, sizeof read, reinterpret_cast<BYTE*>(read)))) {
        return false;
    }
    return read[0] == 0x3412;
}

}  // namespace

bool PngEncoderSwapsBytes() {
    static const bool swaps = ProbePngByteOrder();
    return swaps;
}

WicRoute FirstWicRoute(PictureContainer container, PixelFormat format) {
    if (container == PictureContainer::Gif) return WicRoute::Palette;
    if (container == PictureContainer::Png && ChannelType(format) == ChannelKind::Int16 &&
        PngEncoderSwapsBytes()) {
        return WicRoute::OwnRows;
    }
    return WicRoute::WholeBitmap;
}

WicOutcome WriteOnRoute(WicRoute route, const Image& image, const std::wstring& path,
                        PictureContainer container, PixelFormat format) {
    const ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    if (!factory || !image.IsValid() || !WicContainerOf(container)) return WicOutcome::Failed;
    switch (route) {
        case WicRoute::WholeBitmap:
            return WriteWholeBitmap(*factory.Get(), image, path, container, format);
        case WicRoute::OwnRows:
            return WriteOwnRows(*factory.Get(), image, path, container, format);
        case WicRoute::Palette:
            return WritePalette(*factory.Get(), image, path, container, format);
    }
    return WicOutcome::Failed;
}

bool EncodePicture(const Image& image, const std::wstring& path, PictureContainer container,
                   PixelFormat format) {
    if (BytesPerPixel(format) == 0) format = PixelFormat::Grey8;
    const WicRoute route = FirstWicRoute(container, format);
    WicOutcome outcome = WriteOnRoute(route, image, path, container, format);
    if (outcome == WicOutcome::CannotDo) {
        outcome = WriteOnRoute(WicRoute::OwnRows, image, path, container, format);
    }
    return outcome == WicOutcome::Written;
}

}  // namespace skyvault
