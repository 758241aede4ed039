// Encoding through OpenImageIO, each kind of file with the options the desktop's codecs have by default.

#include <algorithm>
#include <cstring>
#include <string>

#include "codecs/gif_writer.h"
#include "codecs/oiio_codec_posix.h"
#include "codecs/written_rows.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr std::size_t kStripBytes = 1 << 20;

/// A kind of file as OpenImageIO knows it.
struct Kind {
    const char* oiioName;
    std::uint32_t longestEdge;
};

bool FindKind(PictureContainer container, Kind& kind) {
    constexpr std::uint32_t kNoLimit = 0x7fffffff;
    switch (container) {
        case PictureContainer::Tiff:
            kind = {"tiff", kNoLimit};
            return true;
        case PictureContainer::Heif:
            kind = {"heif", 16384};
            return true;
        default:
            return false;
    }
}

/// The format that the kind of file stores for a wanted one.
PixelFormat FileFormat(PictureContainer container, PixelFormat wanted) {
    using enum PixelFormat;
    switch (container) {
        case PictureContainer::Heif:
            return Rgb8;
        default:
            return wanted;
    }
}

bool WriteRows(const OiioFunctions& oiio, void* output, const WrittenRows& rows, std::uint32_t width,
               std::uint32_t height, PixelFormat format) {
    const std::size_t rowBytes = std::size_t{BytesPerPixel(format)} * width;
    const auto stripRows =
        static_cast<std::uint32_t>(std::clamp<std::size_t>(kStripBytes / rowBytes, 1, height));
    // The HEIF writer reads up to some hundred bytes beyond each row.
    const std::uint32_t spareRows = 1 + static_cast<std::uint32_t>(1024 / rowBytes);
    Image strip(width, stripRows + spareRows, format);
    if (!strip.IsValid()) return false;
    std::memset(strip.pixels.get(), 0, strip.ByteCount());
    for (std::uint32_t y = 0; y < height; y += stripRows) {
        const std::uint32_t count = std::min(stripRows, height - y);
        for (std::uint32_t row = 0; row < count; ++row) rows.Get(y + row, strip.Row(row));
        if (ChannelType(format) == ChannelKind::Int8) strip.SwapRedAndBlue();  // files have red first
        if (!oiio.writeRows(output, static_cast<int>(y), static_cast<int>(y + count), strip.pixels.get())) {
            return false;
        }
    }
    return true;
}

bool EncodeGif(const Image& image, const std::wstring& path, PixelFormat wanted) {
    constexpr std::uint32_t kLongestEdge = 65535;
    IndexedPicture indexed;
    return image.width <= kLongestEdge && image.height <= kLongestEdge &&
           MakeIndexed(image, wanted, indexed) && WriteGif(path, indexed, image.width, image.height);
}

}  // namespace

bool EncodeWithOiio(const Image& image, const std::wstring& path, PictureContainer container,
                    PixelFormat wanted) {
    if (container == PictureContainer::Gif) return EncodeGif(image, path, wanted);
    Kind kind;
    if (!image.IsValid() || !FindKind(container, kind) || image.width > kind.longestEdge ||
        image.height > kind.longestEdge) {
        return false;
    }
    const PixelFormat format = FileFormat(container, wanted);
    const WrittenRows rows(image, wanted, format);
    const OiioFunctions* const oiio = rows.Ready() ? Oiio() : nullptr;
    if (!oiio) return false;
    const std::string name = ToSystemBytes(path);
    void* const output =
        oiio->openOutput(name.c_str(), kind.oiioName, static_cast<int>(image.width),
                         static_cast<int>(image.height), ChannelCount(format), OiioChannelOf(format));
    if (!output) return false;
    const bool written = WriteRows(*oiio, output, rows, image.width, image.height, format);
    return oiio->closeOutput(output) && written;
}

}  // namespace skyvault
