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

bool WicOutput::BeginFrame(std::uint32_t width, std::uint32_t height) {
    // No option bag is asked for. Some encoders fail here without a word and leave the pointer null.
    return SUCCEEDED(encoder->CreateNewFrame(frame.Put(), nullptr)) && frame &&
           SUCCEEDED(frame->Initialize(nullptr)) && SUCCEEDED(frame->SetSize(width, height));
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

}  // namespace

bool PngEncoderSwapsBytes() {
    static const bool swaps = TryPngByteOrder();
    return swaps;
}

bool GifEncoderLosesTransparency() {
    static const bool loses = TryGifTransparency();
    return loses;
}

}  // namespace skyvault
