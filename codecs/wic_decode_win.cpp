#include "codecs/wic_decode_win.h"

#include <shlwapi.h>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "codecs/gif_frames.h"
#include "codecs/picture_header.h"
#include "codecs/tiff_directories.h"
#include "platform/debug_line.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/memory_budget.h"

namespace skyvault {
namespace {

bool CopyRows(IWICBitmapSource& source, std::uint32_t firstRow, std::uint32_t rowCount, Image& image) {
    const WICRect rows{0, static_cast<INT>(firstRow), static_cast<INT>(image.width),
                       static_cast<INT>(rowCount)};
    return SUCCEEDED(source.CopyPixels(&rows, image.stride, image.stride * rowCount,
                                       reinterpret_cast<BYTE*>(image.Row(firstRow))));
}

bool CopyWhole(IWICBitmapSource& source, Image& image) {
    if (image.ByteCount() <= std::numeric_limits<UINT>::max()) {
        return SUCCEEDED(source.CopyPixels(nullptr, image.stride, static_cast<UINT>(image.ByteCount()),
                                           reinterpret_cast<BYTE*>(image.pixels.get())));
    }
    // The size of a buffer is told in 32 bits.
    const std::uint32_t bandRows = std::max(1u, (1u << 30) / image.stride);
    for (std::uint32_t y = 0; y < image.height; y += bandRows) {
        if (!CopyRows(source, y, std::min(bandRows, image.height - y), image)) return false;
    }
    return true;
}

/// A value of the asked type; `absent` for any other type and when there is none.
std::uint32_t ReadNumber(IWICMetadataQueryReader& reader, const wchar_t* name, VARTYPE type,
                         std::uint32_t absent) {
    PROPVARIANT value;
    PropVariantInit(&value);
    std::uint32_t number = absent;
    if (SUCCEEDED(reader.GetMetadataByName(name, &value)) && value.vt == type) {
        number = type == VT_UI1 ? value.bVal : value.uiVal;
    }
    PropVariantClear(&value);
    return number;
}

void ReadFrameInformation(IWICBitmapFrameDecode& frame, Image& image) {
    image.frameDelay = 100;
    ComPtr<IWICMetadataQueryReader> reader;
    if (FAILED(frame.GetMetadataQueryReader(reader.Put())) || !reader) return;
    const std::uint32_t delay = ReadNumber(*reader.Get(), L"/grctlext/Delay", VT_UI2, 0);
    if (delay != 0) image.frameDelay = delay * 10;
    image.frameDisposal = ReadNumber(*reader.Get(), L"/grctlext/Disposal", VT_UI1, 0);
    image.frameLeft = ReadNumber(*reader.Get(), L"/imgdesc/Left", VT_UI2, 0);
    image.frameTop = ReadNumber(*reader.Get(), L"/imgdesc/Top", VT_UI2, 0);
    image.frameWidth = ReadNumber(*reader.Get(), L"/imgdesc/Width", VT_UI2, 0);
    image.frameHeight = ReadNumber(*reader.Get(), L"/imgdesc/Height", VT_UI2, 0);
}

ComPtr<IWICBitmapSource> ScaleToFit(IWICImagingFactory& factory, IWICBitmapSource& frame,
                                    std::uint32_t targetWidth, std::uint32_t targetHeight) {
    ComPtr<IWICBitmapScaler> scaler;
    if (FAILED(factory.CreateBitmapScaler(scaler.Put()))) return nullptr;
    PictureSize size{targetWidth, targetHeight};
    UINT width = 0, height = 0;
    if (SUCCEEDED(frame.GetSize(&width, &height)) && width > 0 && height > 0) {
        size = FitInto({width, height}, size);
    }
    if (FAILED(scaler->Initialize(&frame, size.width, size.height, WICBitmapInterpolationModeFant))) {
        return nullptr;
    }
    return scaler.As<IWICBitmapSource>(IID_IWICBitmapSource);
}

/// The source itself when it has the pixel format already, else a converter; null when WIC has none.
ComPtr<IWICBitmapSource> InFormat(const ComPtr<IWICBitmapSource>& source, const GUID& format) {
    WICPixelFormatGUID current;
    if (FAILED(source->GetPixelFormat(&current))) return nullptr;
    if (IsEqualGUID(current, format)) return source;
    ComPtr<IWICBitmapSource> converted;
    WICConvertBitmapSource(format, source.Get(), converted.Put());
    return converted;
}

/// False for devices, whose names files may have: reading "CON.png" would wait for the keyboard.
bool IsOnDisk(const std::wstring& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    const bool onDisk = GetFileType(file) == FILE_TYPE_DISK;
    CloseHandle(file);
    return onDisk;
}

std::vector<std::byte> AllOf(FileStream& file) {
    std::vector<std::byte> bytes(static_cast<std::size_t>(file.Size()));
    if (!file.Seek(0) || !file.Read(bytes.data(), bytes.size())) bytes.clear();
    return bytes;
}

/// False for what brings some decoders down with the whole program, or takes minutes and all memory before
/// they say no: frames without colours (GIF), directories in circles or in thousands (TIFF), sizes that the
/// file cannot hold (JPEG). header: what the file's first bytes tell.
bool IsSafeToDecode(const std::wstring& path, PictureHeader& header) {
    FileStream file(path, FileUse::ReadShared);
    std::array<std::byte, kPictureHeaderSize> start{};
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(start.size(), file.Size()));
    if (!file.IsOpen() || !file.Read(start.data(), count)) return false;
    header = ReadPictureHeader({start.data(), count});
    const PictureKind kind = header.kind;
    if (kind == PictureKind::Gif) return GifFramesHaveColours(AllOf(file));
    if (kind == PictureKind::Jpeg) return IsSoundJpeg(ReadJpegStructure(AllOf(file)), file.Size());
    if (kind != PictureKind::Tiff) return true;
    constexpr std::size_t kMostPages = 1000;
    const auto readAt = [&](std::uint64_t at, void* to, std::size_t n) {
        return file.Seek(at) && file.Read(to, n);
    };
    bool loops = false;
    return FindTiffDirectories(readAt, &loops).size() <= kMostPages && !loops;
}

/// A file and one of its frames.
struct OpenFrame {
    ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    PictureHeader header;
    ComPtr<IWICBitmapDecoder> decoder;
    UINT frameCount = 0;
    ComPtr<IWICBitmapFrameDecode> decode;
    ComPtr<IWICBitmapSource> source;  ///< the same

    bool Open(const std::wstring& path, UINT frame) {
        if (!factory || !IsOnDisk(path) || !IsSafeToDecode(path, header) ||
            FAILED(factory->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ,
                                                      WICDecodeMetadataCacheOnDemand, decoder.Put())) ||
            FAILED(decoder->GetFrameCount(&frameCount)) || frameCount == 0 ||
            FAILED(decoder->GetFrame(frame, decode.Put()))) {
            return false;
        }
        source = decode.As<IWICBitmapSource>(IID_IWICBitmapSource);
        return static_cast<bool>(source);
    }
};

bool ProbeTiffByteOrder() {
    // One grey pixel, 0x1234, in a big-endian file.
    static constexpr BYTE kFile[] = {'M', 'M',  0, 42, 0, 0, 0, 10, 0x12, 0x34,  //
                                     0,   8,  // tags: id, type, count, value
                                     1,   0,    0, 3,  0, 0, 0, 1,  0,    1,    0, 0,  // width
                                     1,   1,    0, 3,  0, 0, 0, 1,  0,    1,    0, 0,  // height
                                     1,   2,    0, 3,  0, 0, 0, 1,  0,    16,   0, 0,  // bits
                                     1,   3,    0, 3,  0, 0, 0, 1,  0,    1,    0, 0,  // not compressed
                                     1,   6,    0, 3,  0, 0, 0, 1,  0,    1,    0, 0,  // 0 is black
                                     1,   0x11, 0, 3,  0, 0, 0, 1,  0,    8,    0, 0,  // where the pixels are
                                     1,   0x15, 0, 3,  0, 0, 0, 1,  0,    1,    0, 0,  // channels
                                     1,   0x17, 0, 3,  0, 0, 0, 1,  0,    2,    0, 0,  // bytes
                                     0,   0,    0, 0};
    const ComPtr<IWICImagingFactory> factory = CreateWicFactory();
    const auto memory = ComPtr<IStream>::Attach(SHCreateMemStream(kFile, sizeof kFile));
    ComPtr<IWICBitmapDecoder> decoder;
    ComPtr<IWICBitmapFrameDecode> frame;
    std::uint16_t pixel = 0;
    return factory && memory &&
           SUCCEEDED(factory->CreateDecoderFromStream(memory.Get(), nullptr, WICDecodeMetadataCacheOnDemand,
                                                      decoder.Put())) &&
           SUCCEEDED(decoder->GetFrame(0, frame.Put())) &&
           SUCCEEDED(
               frame->CopyPixels(nullptr, sizeof pixel, sizeof pixel, reinterpret_cast<BYTE*>(&pixel))) &&
           pixel == 0x3412;
}

/// True when this machine's TIFF decoder hands out the 16-bit channels of big-endian files with their bytes
/// exchanged. Tried out once, in memory.
bool TiffDecoderSwapsBytes() {
    static const bool swaps = ProbeTiffByteOrder();
    return swaps;
}

bool StartsBigEndian(IWICImagingFactory& factory, const std::wstring& path) {
    ComPtr<IWICStream> stream;
    char start[2] = {};
    ULONG count = 0;
    return SUCCEEDED(factory.CreateStream(stream.Put())) &&
           SUCCEEDED(stream->InitializeFromFilename(path.c_str(), GENERIC_READ)) &&
           SUCCEEDED(stream->Read(start, sizeof start, &count)) && start[0] == 'M' && start[1] == 'M';
}

bool NeedsByteSwap(IWICImagingFactory& factory, IWICBitmapDecoder& decoder, const std::wstring& path,
                   const WicFormat* listed) {
    GUID container;
    return listed && ChannelType(listed->format) == ChannelKind::Int16 &&
           SUCCEEDED(decoder.GetContainerFormat(&container)) &&
           IsEqualGUID(container, GUID_ContainerFormatTiff) && StartsBigEndian(factory, path) &&
           TiffDecoderSwapsBytes();
}

/// The format that pixels are read in: their own, or 32 bits where none of ours is.
const WicFormat& ReadFormat(const WicFormat* listed) {
    static const WicFormat kConverted{&GUID_WICPixelFormat32bppBGRA, PixelFormat::Rgba8, false};
    return listed ? *listed : kConverted;
}

/// What the frame tells of itself; false when it does not, or is not believed.
bool FactsOf(const std::wstring& path, const OpenFrame& file, PictureFacts& facts) {
    UINT width = 0, height = 0;
    WICPixelFormatGUID format;
    if (FAILED(file.source->GetSize(&width, &height)) || width == 0 || height == 0 ||
        FAILED(file.source->GetPixelFormat(&format)) ||
        !MayHoldPicture(file.header, width, height, FileSizeOf(path))) {
        return false;
    }
    facts.size = {width, height};
    facts.format = ReadFormat(FindWicFormat(format)).format;
    facts.frameCount = file.frameCount;
    facts.memory = std::uint64_t{BytesPerPixel(facts.format)} * width * height;
    return true;
}

}  // namespace

bool CopyWicPixels(IWICBitmapSource& whole, IWICBitmapSource& rows, Image& image) {
    if (CopyWhole(whole, image)) return true;
    DebugLine(L"Failed to copy pixels. Now trying line by line...\n");
    for (std::uint32_t y = 0; y < image.height; ++y) {
        if (!CopyRows(rows, y, 1, image)) return false;
    }
    return true;
}

Outcome DecodePicture(const std::wstring& path, std::uint32_t frameIndex, std::uint32_t targetWidth,
                      std::uint32_t targetHeight, Image& image) {
    Outcome failed = Failure(Reason::CannotOpen, path);
    OpenFrame file;
    PictureFacts facts;
    if (!file.Open(path, frameIndex) || !FactsOf(path, file, facts)) return failed;
    Outcome within = WithinMemoryBudget(path, facts.memory);
    if (!within.IsDone()) return within;
    IWICImagingFactory& factory = *file.factory.Get();
    const ComPtr<IWICBitmapSource>& frame = file.source;

    ComPtr<IWICBitmapSource> source = frame;
    if (targetWidth >= 1 && targetHeight >= 1) {
        source = ScaleToFit(factory, *frame.Get(), targetWidth, targetHeight);
        if (!source) return failed;
    }
    UINT width = 0, height = 0;
    WICPixelFormatGUID frameFormat;
    if (FAILED(source->GetSize(&width, &height)) || width == 0 || height == 0 ||
        FAILED(frame->GetPixelFormat(&frameFormat)) || !IsReadableSize(width, height)) {
        return failed;
    }

    const WicFormat* listed = FindWicFormat(frameFormat);
    const WicFormat& format = ReadFormat(listed);
    const ComPtr<IWICBitmapSource> rows = InFormat(frame, *format.guid);
    const ComPtr<IWICBitmapSource> whole =
        source.Get() == frame.Get() ? rows : InFormat(source, *format.guid);
    if (!rows || !whole) return failed;

    Image decoded(width, height, format.format);
    if (!decoded.IsValid() || !CopyWicPixels(*whole.Get(), *rows.Get(), decoded)) return failed;
    if (NeedsByteSwap(factory, *file.decoder.Get(), path, listed)) {
        SwapBytesOf16(decoded.pixels.get(), decoded.ByteCount());
    }
    if (format.swapRedAndBlue) decoded.SwapRedAndBlue();
    decoded.frameCount = file.frameCount;
    if (file.frameCount > 1) ReadFrameInformation(*file.decode.Get(), decoded);
    image = std::move(decoded);
    return {};
}

Outcome InspectPicture(const std::wstring& path, PictureFacts& facts) {
    OpenFrame file;
    const bool told = file.Open(path, 0) && FactsOf(path, file, facts);
    return told ? Outcome{} : Failure(Reason::CannotOpen, path);
}

}  // namespace skyvault
