#include "codecs/picture_header.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

#include "codecs/bmp_header.h"
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

void ReadBmp(std::span<const std::byte> start, PictureHeader& header) {
    BmpHeader bmp;
    header.sound = ReadBmpHeader(start, bmp);
    header.width = bmp.width;
    header.height = bmp.height;
    header.leastBytes = bmp.leastBytes;
}

void ReadPng(const Start& file, PictureHeader& header) {
    header.width = Big32(file.At(16));
    header.height = Big32(file.At(20));
    header.sound = file.Has(12, "IHDR"sv);
    constexpr std::uint64_t kChannels[] = {1, 0, 3, 1, 2, 0, 4};
    const auto colours = std::to_integer<std::size_t>(*file.At(25));
    const std::uint64_t bits = colours < std::size(kChannels)
                                   ? kChannels[colours] * std::to_integer<std::uint64_t>(*file.At(24))
                                   : 0;
    // Each row begins with its filter's number. What is deflated takes at least two bits for 258 bytes.
    const std::uint64_t rows = (1 + (header.width * bits + 7) / 8) * header.height;
    header.leastBytes = rows / 1032;
}

void ReadGif(const Start& file, PictureHeader& header) {
    header.width = Little16(file.At(6));
    header.height = Little16(file.At(8));
    header.sound = true;
}

void ReadWebp(const Start& file, PictureHeader& header) {
    if (file.Has(12, "VP8X"sv)) {
        header.width = (Little32(file.At(24)) & 0xffffff) + 1;
        header.height = (Little32(file.At(26)) >> 8) + 1;
    } else if (file.Has(12, "VP8L"sv)) {
        header.width = (Little32(file.At(21)) & 0x3fff) + 1;
        header.height = (Little32(file.At(21)) >> 14 & 0x3fff) + 1;
    } else if (file.Has(12, "VP8 "sv)) {
        header.width = Little16(file.At(26)) & 0x3fff;
        header.height = Little16(file.At(28)) & 0x3fff;
    }
}

bool IsHeif(const Start& file) {
    if (!file.Has(4, "ftyp"sv)) return false;
    for (const std::string_view brand : {"heic"sv, "heix"sv, "hevc"sv, "mif1"sv, "msf1"sv, "avif"sv}) {
        if (file.Has(8, brand)) return true;
    }
    return false;
}

constexpr std::byte kMarker{0xff}, kStartOfImage{0xd8}, kEndOfImage{0xd9}, kTemporary{0x01},
    kStartOfScan{0xda};

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

/// Every kind of frame, also those that are not read.
bool IsFrame(std::byte code) {
    constexpr std::byte kTables{0xc4}, kExtension{0xc8}, kConditioning{0xcc};
    return code >= std::byte{0xc0} && code <= std::byte{0xcf} && code != kTables && code != kExtension &&
           code != kConditioning;
}

/// segment: from its length on.
void ReadJpegFrame(std::byte code, std::span<const std::byte> segment, JpegStructure& jpeg) {
    constexpr std::size_t kHead = 8, kEach = 3;
    const unsigned kind = std::to_integer<unsigned>(code) & 15;
    const bool known = kind <= 2 || kind == 9 || kind == 10;  // no lossless or hierarchical ones
    if (segment.size() < kHead || !known || segment[2] != std::byte{8}) return;
    const std::uint32_t height = Big16(&segment[3]), width = Big16(&segment[5]);
    const auto components = std::to_integer<std::uint32_t>(segment[7]);
    if ((components != 1 && components != 3 && components != 4) ||
        segment.size() < kHead + kEach * components) {
        return;
    }
    std::uint32_t across = 1, down = 1;  // the finest sampling
    const auto sampling = [&](std::uint32_t i, std::uint32_t& x, std::uint32_t& y) {
        const auto both = std::to_integer<std::uint32_t>(segment[kHead + kEach * i + 1]);
        x = both >> 4;
        y = both & 15;
        return x >= 1 && x <= 4 && y >= 1 && y <= 4;
    };
    for (std::uint32_t i = 0; i < components; ++i) {
        std::uint32_t x = 0, y = 0;
        if (!sampling(i, x, y)) return;
        across = std::max(across, x);
        down = std::max(down, y);
    }
    std::uint64_t blocks = 0;
    for (std::uint32_t i = 0; i < components; ++i) {
        std::uint32_t x = 0, y = 0;
        sampling(i, x, y);
        const auto count = [](std::uint64_t edge, std::uint32_t part, std::uint32_t whole) {
            return (edge * part + 8 * whole - 1) / (8 * whole);
        };
        blocks += count(width, x, across) * count(height, y, down);
    }
    jpeg.width = width;
    jpeg.height = height;
    jpeg.components = components;
    jpeg.blocks = blocks;
    jpeg.progressive = kind == 2 || kind == 10;
    jpeg.arithmetic = kind >= 9;
}

}  // namespace

PictureHeader ReadPictureHeader(std::span<const std::byte> start) {
    const Start file(start);
    PictureHeader header;
    if (file.Has(0, "BM"sv)) {
        header.kind = PictureKind::Bmp;
        ReadBmp(start, header);
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
            ReadWebp(file, header);
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

bool MayHoldPicture(const PictureHeader& header, std::uint64_t width, std::uint64_t height,
                    std::uint64_t fileSize) {
    const bool told = header.leastBytes > 0 && header.width == width && header.height == height;
    return told ? IsReadableSize(width, height) && header.leastBytes <= fileSize
                : PlausibleSize(width, height, fileSize);
}

JpegStructure ReadJpegStructure(std::span<const std::byte> file) {
    JpegStructure jpeg;
    if (file.size() < 2 || file[0] != kMarker || file[1] != kStartOfImage) return jpeg;
    for (std::size_t at = NextMarker(file, 2); at < file.size(); at = NextMarker(file, at)) {
        const std::byte code = file[at + 1];
        if (code == kEndOfImage) {
            jpeg.whole = true;
            return jpeg;
        }
        at += 2;
        if (code == kTemporary || code == kStartOfImage) continue;  // no segment behind them
        if (at + 1 >= file.size()) return jpeg;
        // The length counts its own two bytes.
        const std::size_t length = Big16(&file[at]);
        jpeg.endsInScan = code == kStartOfScan && at + length < file.size();
        if (code == kStartOfScan) {
            ++jpeg.scans;
            if (at + 2 < file.size()) jpeg.scanned += std::to_integer<std::uint64_t>(file[at + 2]);
        }
        if (IsFrame(code) && jpeg.components == 0) {
            ReadJpegFrame(code, file.subspan(at, std::min(length, file.size() - at)), jpeg);
        }
        at += length;
    }
    return jpeg;
}

bool IsSoundJpeg(const JpegStructure& jpeg, std::uint64_t fileSize) {
    // Each costs a pass over all blocks, however small it is; ten are usual.
    constexpr std::uint32_t kMostScans = 100;
    // Whatever the code tables, a block of a sequential file takes a bit for its mean and one that says that
    // there is nothing else. Progressive files tell of the latter for thousands of blocks at once, and need
    // not tell it at all.
    const std::uint64_t leastBits = jpeg.blocks * (jpeg.progressive ? 1 : 2);
    // Of fractions of bits nobody can tell where they end.
    const bool whole = jpeg.whole || (jpeg.endsInScan && !jpeg.arithmetic && jpeg.scanned >= jpeg.components);
    return whole && jpeg.scans <= kMostScans && IsReadableSize(jpeg.width, jpeg.height) &&
           (jpeg.arithmetic ? PlausibleSize(jpeg.width, jpeg.height, fileSize) : leastBits / 8 <= fileSize);
}

}  // namespace skyvault
