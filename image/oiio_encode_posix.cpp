// Encoding through OpenImageIO, each kind of file with the options the desktop's codecs have by default.

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "image/gif_writer.h"
#include "image/oiio_system_posix.h"
#include "image/picture_codec.h"
#include "image/written_rows.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr std::size_t kStripBytes = 1 << 20;

/// The file that OpenImageIO writes to. Not every writer looks at what writing returns, and some end the
/// process when a disk is full, so errors are kept here and asked for at the end.
class OutputProxy final : public OIIO::Filesystem::IOProxy {
  public:
    explicit OutputProxy(const std::string& path)
        : IOProxy(path, Write), file_(std::fopen(path.c_str(), "wb"), &std::fclose) {
        if (!file_) m_mode = Closed;
    }

    const char* proxytype() const override { return "skyvault"; }

    bool seek(std::int64_t offset) override {
        const bool ok = fseeko(file_.get(), offset, SEEK_SET) == 0;
        if (ok) m_pos = offset;
        failed_ |= !ok;
        return ok;
    }
    size_t write(const void* bytes, size_t count) override {
        const std::size_t written = std::fwrite(bytes, 1, count, file_.get());
        m_pos += static_cast<std::int64_t>(written);
        size_ = std::max(size_, static_cast<std::size_t>(m_pos));
        failed_ |= written != count;
        return written;
    }
    size_t size() const override { return size_; }

    /// Closes the file; false when anything at all has failed.
    bool Finish() {
        failed_ |= !file_ || std::fclose(file_.release()) != 0;
        m_mode = Closed;
        return !failed_;
    }

  private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    std::size_t size_ = 0;
    bool failed_ = false;
};

/// A kind of file as OpenImageIO knows it.
struct Kind {
    const char* oiioName;
    std::uint32_t longestEdge;
};

bool FindKind(PictureContainer container, Kind& kind) {
    constexpr std::uint32_t kNoLimit = 0x7fffffff;
    switch (container) {
        case PictureContainer::Bmp:
            kind = {"bmp", kNoLimit};
            return true;
        // The writer ends the process for anything larger.
        case PictureContainer::Jpeg:
            kind = {"jpeg", 65500};
            return true;
        case PictureContainer::Png:
            kind = {"png", 1000000};
            return true;
        case PictureContainer::Tiff:
            kind = {"tiff", kNoLimit};
            return true;
        case PictureContainer::Heif:
            kind = {"heif", 16384};
            return true;
        case PictureContainer::Gif:
        case PictureContainer::None:
            break;
    }
    return false;
}

/// The format that the kind of file stores for a wanted one.
PixelFormat FileFormat(PictureContainer container, PixelFormat wanted) {
    using enum PixelFormat;
    const bool grey = ChannelCount(wanted) == 1;
    switch (container) {
        case PictureContainer::Bmp:
        case PictureContainer::Heif:
            return Rgb8;
        case PictureContainer::Jpeg:
            return grey ? Grey8 : Rgb8;
        case PictureContainer::Png:
            if (ChannelType(wanted) == ChannelKind::Half)
                return HasAlpha(wanted) ? Rgba16 : grey ? Grey16 : Rgb16;
            return wanted;
        default:
            return wanted;
    }
}

void SetOptions(PictureContainer container, OIIO::ImageSpec& spec) {
    spec.attribute("oiio:UnassociatedAlpha", 1);
    switch (container) {
        case PictureContainer::Jpeg:
            spec.attribute("Compression", "jpeg:90");
            spec.attribute("jpeg:subsampling", "4:2:0");
            break;
        case PictureContainer::Png:
            // All filters, with the usual 6 half as fast and 1 % smaller.
            spec.attribute("png:compressionLevel", 4);
            spec.attribute("png:filter", 0xf8);
            break;
        case PictureContainer::Tiff:
            spec.attribute("Compression", "lzw");
            spec.attribute("tiff:half", 1);
            break;
        default:
            break;
    }
}

bool WriteRows(OIIO::ImageOutput& output, const WrittenRows& rows, std::uint32_t width, std::uint32_t height,
               PixelFormat format) {
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
        if (!output.write_scanlines(static_cast<int>(y), static_cast<int>(y + count), 0,
                                    OiioChannelType(format), strip.pixels.get())) {
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

bool Encode(const Image& image, const std::wstring& path, PictureContainer container, PixelFormat wanted) {
    Kind kind;
    if (!image.IsValid() || !FindKind(container, kind) || image.width > kind.longestEdge ||
        image.height > kind.longestEdge) {
        return false;
    }
    const PixelFormat format = FileFormat(container, wanted);
    const WrittenRows rows(image, wanted, format);
    if (!rows.Ready()) return false;

    PrepareOiio();
    const std::string name = ToUtf8(path);
    OutputProxy file(name);
    if (!file.opened()) return false;
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(kind.oiioName);
    if (!output) {
        static_cast<void>(OIIO::geterror());
        return false;
    }
    OIIO::ImageSpec spec(static_cast<int>(image.width), static_cast<int>(image.height), ChannelCount(format),
                         OiioChannelType(format));
    SetOptions(container, spec);
    OIIO::Filesystem::IOProxy* const proxy = &file;
    spec.attribute("oiio:ioproxy", OIIO::TypeDesc::PTR, &proxy);

    bool ok = output->open(name, spec) && WriteRows(*output, rows, image.width, image.height, format);
    ok = output->close() && ok;
    static_cast<void>(output->geterror());
    return file.Finish() && ok;
}

}  // namespace

bool EncodePicture(const Image& image, const std::wstring& path, PictureContainer container,
                   PixelFormat format) {
    if (BytesPerPixel(format) == 0) format = PixelFormat::Grey8;
    try {
        if (container == PictureContainer::Gif) return EncodeGif(image, path, format);
        return Encode(image, path, container, format);
    } catch (...) {
        return false;
    }
}

}  // namespace skyvault
