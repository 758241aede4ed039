#include "codecs/wic_output_win.h"

#include <shlwapi.h>

#include <cstring>
#include <utility>

namespace skyvault {

bool WicOutput::Begin(IWICImagingFactory& factory, PictureContainer container, ComPtr<IStream> target) {
    stream = std::move(target);
    return stream && SUCCEEDED(factory.CreateEncoder(*WicContainerOf(container), nullptr, encoder.Put())) &&
           SUCCEEDED(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache));
}

namespace {

/// All chroma above 90, as elsewhere.
void SetQuality(IPropertyBag2& bag, int quality) {
    constexpr int kBestWithoutAllChroma = 90;
    const auto set = [&](const wchar_t* name, const VARIANT& value) {
        std::wstring text = name;
        PROPBAG2 option{};
        option.pstrName = text.data();
        VARIANT copy = value;
        bag.Write(1, &option, &copy);
    };
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_R4;
    value.fltVal = static_cast<float>(quality) / 100.0f;
    set(L"ImageQuality", value);
    if (quality <= kBestWithoutAllChroma) return;
    value.vt = VT_UI1;
    value.bVal = WICJpegYCrCbSubsampling444;
    set(L"JpegYCrCbSubsampling", value);
}

}  // namespace

bool WicOutput::BeginFrame(std::uint32_t width, std::uint32_t height, int quality) {
    ComPtr<IPropertyBag2> bag;
    // Some encoders fail here without a word and leave the pointer null.
    if (FAILED(encoder->CreateNewFrame(frame.Put(), quality != 0 ? bag.Put() : nullptr)) || !frame)
        return false;
    if (bag) SetQuality(*bag.Get(), quality);
    return SUCCEEDED(frame->Initialize(bag.Get())) && SUCCEEDED(frame->SetSize(width, height));
}

bool WicOutput::Finish() {
    return SUCCEEDED(frame->Commit()) && SUCCEEDED(encoder->Commit());
}

ComPtr<IStream> CreateWicFileStream(IWICImagingFactory& factory, const std::wstring& path) {
    ComPtr<IWICStream> stream;
    if (FAILED(factory.CreateStream(stream.Put())) ||
        FAILED(stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE))) {
        return nullptr;
    }
    return stream.As<IStream>(IID_IStream);
}

bool WriteWicIndexed(IWICImagingFactory& factory, PictureContainer container, const ComPtr<IStream>& target,
                     const IndexedPicture& indexed, std::uint32_t width, std::uint32_t height) {
    static_assert(sizeof(WICColor) == sizeof(Color8));  // both: alpha in the highest byte, blue in the lowest
    WICColor colours[256];
    const auto count = static_cast<UINT>(indexed.colours.size());
    std::memcpy(colours, indexed.colours.data(), count * sizeof(WICColor));
    ComPtr<IWICPalette> palette;
    WICPixelFormatGUID answer = GUID_WICPixelFormat8bppIndexed;
    WicOutput file;
    return SUCCEEDED(factory.CreatePalette(palette.Put())) &&
           SUCCEEDED(palette->InitializeCustom(colours, count)) && file.Begin(factory, container, target) &&
           SUCCEEDED(file.encoder->SetPalette(palette.Get())) && file.BeginFrame(width, height) &&
           SUCCEEDED(file.frame->SetPixelFormat(&answer)) &&
           IsEqualGUID(answer, GUID_WICPixelFormat8bppIndexed) &&
           SUCCEEDED(file.frame->SetPalette(palette.Get())) &&
           SUCCEEDED(file.frame->WritePixels(height, width, width * height,
                                             reinterpret_cast<BYTE*>(indexed.indices.get()))) &&
           file.Finish();
}

namespace {

ComPtr<IStream> NewMemory() {
    return ComPtr<IStream>::Attach(SHCreateMemStream(nullptr, 0));
}

/// The first frame of the file that was written to the memory; null when there is none.
ComPtr<IWICBitmapFrameDecode> ReadBack(IWICImagingFactory& factory, IStream& memory) {
    ComPtr<IWICBitmapDecoder> decoder;
    ComPtr<IWICBitmapFrameDecode> frame;
    if (SUCCEEDED(memory.Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr)) &&
        SUCCEEDED(factory.CreateDecoderFromStream(&memory, nullptr, WICDecodeMetadataCacheOnDemand,
                                                  decoder.Put()))) {
        decoder->GetFrame(0, frame.Put());
    }
    return frame;
}

bool TryPngByteOrder() {
    const ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    if (!factory) return false;
    const ComPtr<IStream> memory = NewMemory();
    std::uint16_t pixel[3] = {0x1234, 0x5678, 0x9abc}, read[3] = {};
    WICPixelFormatGUID format = GUID_WICPixelFormat48bppRGB;
    WicOutput file;
    if (!file.Begin(*factory.Get(), PictureContainer::Png, memory) || !file.BeginFrame(1, 1) ||
        FAILED(file.frame->SetPixelFormat(&format)) || !IsEqualGUID(format, GUID_WICPixelFormat48bppRGB) ||
        FAILED(file.frame->WritePixels(1, sizeof pixel, sizeof pixel, reinterpret_cast<BYTE*>(pixel))) ||
        !file.Finish()) {
        return false;
    }
    const ComPtr<IWICBitmapFrameDecode> frame = ReadBack(*factory.Get(), *memory.Get());
    return frame &&
           SUCCEEDED(frame->CopyPixels(nullptr, sizeof read, sizeof read, reinterpret_cast<BYTE*>(read))) &&
           read[0] == 0x3412;
}

bool TryGifTransparency() {
    const ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    if (!factory) return false;
    const ComPtr<IStream> memory = NewMemory();
    IndexedPicture indexed;
    indexed.colours = {Color8(255, 0, 0, 255), Color8(0, 0, 0, 0)};
    indexed.transparent = 1;
    indexed.indices = AllocateBytes(2);
    if (!indexed.indices) return false;
    indexed.indices[0] = std::byte{0};
    indexed.indices[1] = std::byte{1};
    if (!WriteWicIndexed(*factory.Get(), PictureContainer::Gif, memory, indexed, 2, 1)) return true;
    const ComPtr<IWICBitmapFrameDecode> frame = ReadBack(*factory.Get(), *memory.Get());
    ComPtr<IWICPalette> palette;
    BOOL hasAlpha = FALSE;
    return !frame || FAILED(factory->CreatePalette(palette.Put())) ||
           FAILED(frame->CopyPalette(palette.Get())) || FAILED(palette->HasAlpha(&hasAlpha)) || !hasAlpha;
}

/// Bytes of a noisy JPEG of 64 × 64 pixels; 0 when it could not be written.
std::uint64_t JpegBytes(IWICImagingFactory& factory, int quality) {
    constexpr UINT kEdge = 64, kRow = 3 * kEdge;
    BYTE pixels[kRow * kEdge];
    std::uint32_t noise = 1;
    for (BYTE& value : pixels) value = static_cast<BYTE>((noise = noise * 1664525 + 1013904223) >> 24);
    const ComPtr<IStream> memory = NewMemory();
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    STATSTG facts{};
    WicOutput file;
    return file.Begin(factory, PictureContainer::Jpeg, memory) && file.BeginFrame(kEdge, kEdge, quality) &&
                   SUCCEEDED(file.frame->SetPixelFormat(&format)) &&
                   SUCCEEDED(file.frame->WritePixels(kEdge, kRow, sizeof pixels, pixels)) && file.Finish() &&
                   SUCCEEDED(memory->Stat(&facts, STATFLAG_NONAME))
               ? facts.cbSize.QuadPart
               : 0;
}

bool TryJpegQuality() {
    const ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    return factory && JpegBytes(*factory.Get(), 10) != JpegBytes(*factory.Get(), 90);
}

}  // namespace

bool PngEncoderSwapsBytes() {
    static const bool swaps = TryPngByteOrder();
    return swaps;
}

bool GifEncoderLosesTransparency() {
    static const bool loses = TryGifTransparency();
    return loses;
}

bool JpegEncoderKnowsQuality() {
    static const bool knows = TryJpegQuality();
    return knows;
}

}  // namespace skyvault
