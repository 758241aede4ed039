// Which codec a picture goes to: BMP and GIF files are read and written by the program, JPEG, PNG, TIFF and
// still WebP files through the libraries of their own; all else (HEIF, animated WebP) goes through
// OpenImageIO.

#include <array>
#include <string_view>
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

/// list: words separated by commas.
bool Lists(std::string_view list, std::string_view word) {
    for (;;) {
        const std::size_t comma = list.find(',');
        if (list.substr(0, comma) == word) return true;
        if (comma == std::string_view::npos) return false;
        list.remove_prefix(comma + 1);
    }
}

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
    struct Row {
        std::string_view kind;  // as OpenImageIO calls it
        std::vector<std::wstring> extensions;
    };
    static const Row kRows[] = {
        {"heif", {L"HEIC", L"HEIF", L"AVIF"}},
    };
    const OiioFunctions* const oiio = Oiio();
    const std::string_view installed = oiio ? oiio->readableKinds() : "";
    std::vector<std::wstring> extensions = {L"BMP", L"DIB", L"JPG",  L"JPEG", L"JPE", L"JFIF",
                                            L"PNG", L"TIF", L"TIFF", L"GIF",  L"WEBP"};  // read without it
    for (const Row& row : kRows) {
        if (!Lists(installed, row.kind)) continue;
        extensions.insert(extensions.end(), row.extensions.begin(), row.extensions.end());
    }
    return extensions;
}

}  // namespace skyvault
