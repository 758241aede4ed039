// Which codec a picture goes to: BMP and GIF files are read and written by the program, JPEG, PNG, TIFF and
// still WebP files through the libraries of their own; all else (HEIF, animated WebP) goes through
// OpenImageIO.

#include <array>
#include <utility>

#include "codecs/bmp_file_posix.h"
#include "codecs/file_source_posix.h"
#include "codecs/gif_file_posix.h"
#include "codecs/gif_writer.h"
#include "codecs/jpeg_file_posix.h"
#include "codecs/oiio_codec_posix.h"
#include "codecs/picture_codec.h"
#include "codecs/picture_header.h"
#include "codecs/png_file_posix.h"
#include "codecs/tiff_file_posix.h"
#include "codecs/tiff_write_posix.h"
#include "codecs/webp_file_posix.h"
#include "image/area_scale.h"
#include "platform/memory_budget.h"

namespace skyvault {

namespace {

/// Calls function with the program's own reader of the file; false when it has none.
template <typename Function>
bool WithReader(const std::wstring& path, Function function, Outcome& done) {
    const FileSource source(path);
    std::array<std::byte, kPictureHeaderSize> start;
    const std::size_t count = source.ReadSome(0, start.data(), start.size());
    const auto run = [&](auto&& file) {
        done = function(file);
        return true;
    };
    switch (ReadPictureHeader({start.data(), count}).kind) {
        case PictureKind::Bmp:
            return run(BmpFile(source));
        case PictureKind::Jpeg:
            return run(JpegFile(source));
        case PictureKind::Png:
            return run(PngFile(source));
        case PictureKind::Gif:
            return run(GifFile(source));
        case PictureKind::Webp: {
            WebpFile file(source);
            return !file.IsAnimated() && run(file);
        }
        case PictureKind::Tiff:
            return run(TiffFile(path));
        default:
            return false;
    }
}

bool WriteGifPicture(const Image& image, const std::wstring& path, PixelFormat format) {
    constexpr std::uint32_t kLongestEdge = 65535;
    IndexedPicture indexed;
    return image.width <= kLongestEdge && image.height <= kLongestEdge &&
           MakeIndexed(image, format, indexed) && WriteGif(path, indexed, image.width, image.height);
}

template <typename File>
Outcome DecodeFrame(File& file, const std::wstring& path, std::uint32_t frame, const PictureSize& target,
                    Image& image) {
    Outcome failed = Failure(Reason::CannotOpen, path);
    if (!file.Select(frame)) return failed;
    Outcome within = WithinMemoryBudget(path, file.Facts().memory);
    if (!within.IsDone()) return within;
    Image decoded;
    if (!file.Read(decoded) || !ScaleInto(target, decoded)) return failed;
    image = std::move(decoded);
    return {};
}

}  // namespace

Outcome DecodePicture(const std::wstring& path, std::uint32_t frame, std::uint32_t targetWidth,
                      std::uint32_t targetHeight, Image& image) {
    const PictureSize target{targetWidth, targetHeight};
    const auto decode = [&](auto& file) { return DecodeFrame(file, path, frame, target, image); };
    try {
        Outcome done;
        if (!WithReader(path, decode, done)) done = DecodeWithOiio(path, frame, target, image);
        return done;
    } catch (...) {
        return Failure(Reason::CannotOpen, path);
    }
}

Outcome InspectPicture(const std::wstring& path, PictureFacts& facts) {
    const auto inspect = [&](auto& file) {
        if (!file.Select(0)) return Failure(Reason::CannotOpen, path);
        facts = file.Facts();
        return facts.size.width > 0 ? Outcome{} : WithinMemoryBudget(path, facts.memory);
    };
    try {
        Outcome done;
        if (!WithReader(path, inspect, done)) done = InspectWithOiio(path, facts);
        return done;
    } catch (...) {
        return Failure(Reason::CannotOpen, path);
    }
}

bool EncodePicture(const Image& image, const std::wstring& path, PictureContainer container,
                   PixelFormat format, int quality) {
    if (BytesPerPixel(format) == 0) format = PixelFormat::Grey8;
    try {
        switch (container) {
            case PictureContainer::Bmp:
                return WriteBmp(image, path, format);
            case PictureContainer::Jpeg:
                return WriteJpeg(image, path, format, quality);
            case PictureContainer::Png:
                return WritePng(image, path, format);
            case PictureContainer::Tiff:
                return WriteTiff(image, path, format);
            case PictureContainer::Gif:
                return WriteGifPicture(image, path, format);
            case PictureContainer::Heif:
                return EncodeHeifWithOiio(image, path, format);
            case PictureContainer::Exr:
            case PictureContainer::Hdr:
            case PictureContainer::None:
                break;
        }
    } catch (...) {
    }
    return false;
}

bool CanChooseQuality() {
    return true;
}

std::vector<std::wstring> ReadableExtensions() {
    // HEIF and AVIF are tried without asking the module: loading it takes a quarter of a second and much
    // address space, for folders that hold none.
    return {L"BMP", L"DIB",  L"JPG", L"JPEG", L"JPE",  L"JFIF", L"PNG",
            L"TIF", L"TIFF", L"GIF", L"WEBP", L"HEIC", L"HEIF", L"AVIF"};
}

}  // namespace skyvault
