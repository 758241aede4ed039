// Which codec a picture goes to: plain BMP files are read and written by the program, TIFF files are read
// through libtiff, all else goes through OpenImageIO.

#include <string_view>
#include <utility>

#include "codecs/bmp_file_posix.h"
#include "codecs/oiio_codec_posix.h"
#include "codecs/picture_codec.h"
#include "codecs/tiff_file_posix.h"
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

}  // namespace

Outcome DecodePicture(const std::wstring& path, std::uint32_t frame, std::uint32_t targetWidth,
                      std::uint32_t targetHeight, Image& image) {
    const PictureSize target{targetWidth, targetHeight};
    Outcome failed = Failure(Reason::CannotOpen, path);
    try {
        Image decoded;
        PlainBmp bmp(path);
        if (bmp.IsOpen()) {
            if (frame != 0) return failed;
            Outcome within = WithinMemoryBudget(path, bmp.Facts().memory);
            if (!within.IsDone()) return within;
            if (!bmp.Read(decoded)) return failed;
        } else {
            TiffFile tiff(path);
            if (!tiff.IsTiff()) return DecodeWithOiio(path, frame, target, image);
            if (!tiff.Select(frame)) return failed;
            Outcome within = WithinMemoryBudget(path, tiff.Facts().memory);
            if (!within.IsDone()) return within;
            if (!tiff.Read(decoded)) return failed;
        }
        if (!ScaleInto(target, decoded)) return failed;
        image = std::move(decoded);
        return {};
    } catch (...) {
        return failed;
    }
}

Outcome InspectPicture(const std::wstring& path, PictureFacts& facts) {
    try {
        const PlainBmp bmp(path);
        if (bmp.IsOpen()) {
            facts = bmp.Facts();
            return {};
        }
        TiffFile tiff(path);
        if (!tiff.IsTiff()) return InspectWithOiio(path, facts);
        if (!tiff.Select(0)) return Failure(Reason::CannotOpen, path);
        facts = tiff.Facts();
        return {};
    } catch (...) {
        return Failure(Reason::CannotOpen, path);
    }
}

bool EncodePicture(const Image& image, const std::wstring& path, PictureContainer container,
                   PixelFormat format) {
    if (BytesPerPixel(format) == 0) format = PixelFormat::Grey8;
    try {
        return container == PictureContainer::Bmp ? WriteBmp(image, path, format)
                                                  : EncodeWithOiio(image, path, container, format);
    } catch (...) {
        return false;
    }
}

std::vector<std::wstring> ReadableExtensions() {
    struct Row {
        std::string_view kind;  // as OpenImageIO calls it
        std::vector<std::wstring> extensions;
    };
    static const Row kRows[] = {
        {"gif", {L"GIF"}},   {"jpeg", {L"JPG", L"JPEG", L"JPE", L"JFIF"}},
        {"png", {L"PNG"}},   {"heif", {L"HEIC", L"HEIF", L"AVIF"}},
        {"webp", {L"WEBP"}},
    };
    const OiioFunctions* const oiio = Oiio();
    const std::string_view installed = oiio ? oiio->readableKinds() : "";
    std::vector<std::wstring> extensions = {L"BMP", L"DIB", L"TIF", L"TIFF"};  // read without it
    for (const Row& row : kRows) {
        if (!Lists(installed, row.kind)) continue;
        extensions.insert(extensions.end(), row.extensions.begin(), row.extensions.end());
    }
    return extensions;
}

}  // namespace skyvault
