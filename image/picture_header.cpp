#include "image/picture_header.h"

#include <limits>
#include <string_view>

namespace skyvault {
namespace {

class Bytes {
  public:
    explicit Bytes(std::span<const std::byte> bytes) : bytes_(bytes) {}

    std::size_t Count() const { return bytes_.size(); }
    /// Beyond the end: zero.
    std::uint32_t Byte(std::size_t at) const {
        return at < bytes_.size() ? std::to_integer<std::uint32_t>(bytes_[at]) : 0;
    }
    std::uint32_t Little16(std::size_t at) const { return Byte(at) | Byte(at + 1) << 8; }
    std::uint32_t Little32(std::size_t at) const { return Little16(at) | Little16(at + 2) << 16; }
    std::uint32_t Big32(std::size_t at) const {
        return Byte(at) << 24 | Byte(at + 1) << 16 | Byte(at + 2) << 8 | Byte(at + 3);
    }
    bool Has(std::size_t at, std::string_view text) const {
        if (at + text.size() > bytes_.size()) return false;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (bytes_[at + i] != static_cast<std::byte>(text[i])) return false;
        }
        return true;
    }

  private:
    std::span<const std::byte> bytes_;
};

using namespace std::string_view_literals;

void ReadBmp(const Bytes& file, PictureHeader& header) {
    constexpr std::uint32_t kOldHeader = 12;  // 16-bit sizes, no compression
    constexpr std::uint32_t kPlainHeader = 40;
    constexpr std::uint32_t kHeaderWithAlphaMask = 56;  // and everything longer
    enum Compression : std::uint32_t { None = 0, Rle8 = 1, Rle4 = 2, BitFields = 3 };

    const std::uint32_t headerSize = file.Little32(14);
    const bool old = headerSize == kOldHeader;
    if (!old && headerSize < kPlainHeader) return;
    const std::uint32_t bits = file.Little16(old ? 24 : 28);
    const std::uint32_t compression = old ? std::uint32_t{None} : file.Little32(30);
    const std::uint32_t colours = old ? 0 : file.Little32(46);
    header.width = old ? file.Little16(18) : file.Little32(18);
    header.height = old ? file.Little16(20) : file.Little32(22);
    if (!old && header.height > 0x80000000u) header.height = 0u - header.height;  // stored top row first

    const bool packed = compression == Rle8 || compression == Rle4;
    const bool bitsKnown = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    header.sound = bitsKnown && compression <= BitFields && (compression != Rle8 || bits == 8) &&
                   (compression != Rle4 || bits == 4) && (!packed || header.height == file.Little32(22)) &&
                   (bits > 8 || colours <= 1u << bits);
    if (compression == BitFields && bits == 32) {
        header.sound &=
            file.Little32(54) == 0xff0000 && file.Little32(58) == 0xff00 && file.Little32(62) == 0xff;
    }
    header.indirect = bits <= 16;
    header.alphaUnused = bits == 32 && (headerSize < kHeaderWithAlphaMask || file.Little32(66) == 0);
}

void ReadPng(const Bytes& file, PictureHeader& header) {
    constexpr std::uint32_t kPalette = 3;
    header.width = file.Big32(16);
    header.height = file.Big32(20);
    header.sound = file.Has(12, "IHDR"sv);
    header.indirect = file.Byte(24) < 8 || file.Byte(25) == kPalette;
}

void ReadGif(const Bytes& file, PictureHeader& header) {
    header.width = file.Little16(6);
    header.height = file.Little16(8);
    header.sound = true;
    header.indirect = true;
}

bool IsHeif(const Bytes& file) {
    if (!file.Has(4, "ftyp"sv)) return false;
    for (const std::string_view brand : {"heic"sv, "heix"sv, "hevc"sv, "mif1"sv, "msf1"sv, "avif"sv}) {
        if (file.Has(8, brand)) return true;
    }
    return false;
}

}  // namespace

PictureHeader ReadPictureHeader(std::span<const std::byte> start) {
    const Bytes file(start);
    PictureHeader header;
    if (file.Has(0, "BM"sv)) {
        header.kind = PictureKind::Bmp;
        ReadBmp(file, header);
    } else if (file.Has(0, "\x89PNG\r\n\x1a\n"sv)) {
        header.kind = PictureKind::Png;
        ReadPng(file, header);
    } else if (file.Has(0, "GIF87a"sv) || file.Has(0, "GIF89a"sv)) {
        header.kind = PictureKind::Gif;
        ReadGif(file, header);
    } else {
        if (file.Has(0, "\xff\xd8\xff"sv)) {
            header.kind = PictureKind::Jpeg;
        } else if (file.Has(0, "II\x2a\0"sv) || file.Has(0, "MM\0\x2a"sv) || file.Has(0, "II\x2b\0"sv) ||
                   file.Has(0, "MM\0\x2b"sv)) {
            header.kind = PictureKind::Tiff;
        } else if (IsHeif(file)) {
            header.kind = PictureKind::Heif;
        } else if (file.Has(0, "RIFF"sv) && file.Has(8, "WEBP"sv)) {
            header.kind = PictureKind::Webp;
        }
        header.sound = header.kind != PictureKind::Unknown;
        return header;
    }
    constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
    header.sound = header.sound && header.width >= 1 && header.height >= 1 && header.width <= kLargest &&
                   header.height <= kLargest;
    return header;
}

bool PlausibleSize(std::uint64_t width, std::uint64_t height, std::uint64_t fileSize) {
    constexpr std::uint64_t kAlwaysAllowed = std::uint64_t{256} << 20;
    // No codec packs ordinary pictures better than about 1000 to 1.
    constexpr std::uint64_t kBestRatio = 4096;
    constexpr std::uint64_t kBytesPerPixel = 4;
    // Some readers count in 31 bits.
    constexpr std::uint64_t kLongestEdge = std::uint64_t{1} << 24;
    constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 31;
    return width <= kLongestEdge && height <= kLongestEdge && width * height < kMostPixels &&
           width * height * kBytesPerPixel <= kAlwaysAllowed + kBestRatio * fileSize;
}

}  // namespace skyvault
