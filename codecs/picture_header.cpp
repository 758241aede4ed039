#include "codecs/picture_header.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string_view>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

/// The file's first bytes; beyond its end: zeros.
class Start {
  public:
    explicit Start(std::span<const std::byte> bytes) : count_(std::min(bytes.size(), bytes_.size())) {
        std::copy_n(bytes.begin(), count_, bytes_.begin());
    }

    const std::byte* At(std::size_t at) const { return &bytes_[at]; }
    bool Has(std::size_t at, std::string_view text) const {
        return at + text.size() <= count_ && std::memcmp(At(at), text.data(), text.size()) == 0;
    }

  private:
    std::array<std::byte, kPictureHeaderSize> bytes_{};
    std::size_t count_;
};

using namespace std::string_view_literals;

void ReadBmp(const Start& file, PictureHeader& header) {
    constexpr std::uint32_t kOldHeader = 12;  // 16-bit sizes, no compression
    constexpr std::uint32_t kPlainHeader = 40;
    constexpr std::uint32_t kHeaderWithAlphaMask = 56;  // and everything longer
    enum Compression : std::uint32_t { None = 0, Rle8 = 1, Rle4 = 2, BitFields = 3 };

    const std::uint32_t headerSize = Little32(file.At(14));
    const bool old = headerSize == kOldHeader;
    if (!old && headerSize < kPlainHeader) return;
    const std::uint32_t bits = Little16(file.At(old ? 24 : 28));
    const std::uint32_t compression = old ? std::uint32_t{None} : Little32(file.At(30));
    const std::uint32_t colours = old ? 0 : Little32(file.At(46));
    header.width = old ? Little16(file.At(18)) : Little32(file.At(18));
    header.height = old ? Little16(file.At(20)) : Little32(file.At(22));
    if (!old && header.height > 0x80000000u) header.height = 0u - header.height;  // stored top row first

    const bool packed = compression == Rle8 || compression == Rle4;
    const bool bitsKnown = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    header.sound = bitsKnown && compression <= BitFields && (compression != Rle8 || bits == 8) &&
                   (compression != Rle4 || bits == 4) &&
                   (!packed || header.height == Little32(file.At(22))) && (bits > 8 || colours <= 1u << bits);
    if (compression == BitFields && bits == 32) {
        header.sound &= Little32(file.At(54)) == 0xff0000 && Little32(file.At(58)) == 0xff00 &&
                        Little32(file.At(62)) == 0xff;
    }
    header.indirect = bits <= 16;
    header.alphaUnused = bits == 32 && (headerSize < kHeaderWithAlphaMask || Little32(file.At(66)) == 0);
}

void ReadPng(const Start& file, PictureHeader& header) {
    constexpr std::byte kPalette{3};
    header.width = Big32(file.At(16));
    header.height = Big32(file.At(20));
    header.sound = file.Has(12, "IHDR"sv);
    header.indirect = *file.At(24) < std::byte{8} || *file.At(25) == kPalette;
}

void ReadGif(const Start& file, PictureHeader& header) {
    header.width = Little16(file.At(6));
    header.height = Little16(file.At(8));
    header.sound = true;
    header.indirect = true;
}

bool IsHeif(const Start& file) {
    if (!file.Has(4, "ftyp"sv)) return false;
    for (const std::string_view brand : {"heic"sv, "heix"sv, "hevc"sv, "mif1"sv, "msf1"sv, "avif"sv}) {
        if (file.Has(8, brand)) return true;
    }
    return false;
}

constexpr std::byte kMarker{0xff}, kStartOfImage{0xd8}, kEndOfImage{0xd9}, kTemporary{0x01};

/// Restart markers, stuffed zeros and repeated 0xFF are data of the scan they stand in.
bool IsData(std::byte code) {
    return (code >= std::byte{0xd0} && code <= std::byte{0xd7}) || code == std::byte{0} || code == kMarker;
}

/// The offset of the next marker's 0xFF, past a scan's data and whatever else stands there; the file's size
/// when there is none.
std::size_t NextMarker(std::span<const std::byte> file, std::size_t at) {
    while (at + 1 < file.size()) {
        at = static_cast<std::size_t>(
            std::find(file.begin() + static_cast<std::ptrdiff_t>(at), file.end(), kMarker) - file.begin());
        if (at + 1 < file.size() && !IsData(file[at + 1])) return at;
        ++at;
    }
    return file.size();
}

}  // namespace

PictureHeader ReadPictureHeader(std::span<const std::byte> start) {
    const Start file(start);
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

bool IsReadableSize(std::uint64_t width, std::uint64_t height) {
    constexpr std::uint64_t kLongestEdge = std::uint64_t{1} << 24;
    constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 31;
    return width >= 1 && height >= 1 && width <= kLongestEdge && height <= kLongestEdge &&
           width * height < kMostPixels;
}

bool PlausibleSize(std::uint64_t width, std::uint64_t height, std::uint64_t fileSize) {
    constexpr std::uint64_t kAlwaysAllowed = std::uint64_t{256} << 20;
    // No codec packs ordinary pictures better than about 1000 to 1.
    constexpr std::uint64_t kBestRatio = 4096;
    constexpr std::uint64_t kBytesPerPixel = 4;
    return (IsReadableSize(width, height) || width * height == 0) &&
           width * height * kBytesPerPixel <= kAlwaysAllowed + kBestRatio * fileSize;
}

bool JpegReachesItsEnd(std::span<const std::byte> file) {
    if (file.size() < 2 || file[0] != kMarker || file[1] != kStartOfImage) return false;
    for (std::size_t at = NextMarker(file, 2); at < file.size(); at = NextMarker(file, at)) {
        const std::byte code = file[at + 1];
        if (code == kEndOfImage) return true;
        at += 2;
        if (code == kTemporary || code == kStartOfImage) continue;  // no segment behind them
        if (at + 1 >= file.size()) return false;
        // The length counts its own two bytes.
        at += Big16(&file[at]);
    }
    return false;
}

}  // namespace skyvault
