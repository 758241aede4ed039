#include "codecs/bmp_file_posix.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>

#include "codecs/bmp_runs.h"
#include "codecs/bytes.h"
#include "codecs/picture_header.h"
#include "codecs/written_rows.h"
#include "platform/utf8.h"

namespace skyvault {

namespace {

constexpr std::uint32_t kFileHeaderSize = 14;
constexpr std::uint32_t kInfoHeaderSize = 40;
// What comes from the file or goes to it in one call: few calls, and the bytes are still in the cache when
// they are looked at.
constexpr std::size_t kChunkBytes = 256 << 10;

std::uint32_t RowsAtOnce(std::uint64_t rowBytes, std::uint32_t height) {
    return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(kChunkBytes / rowBytes, 1, height));
}

/// A channel of pixels that tell it in some of their bits: of more than 8 the upper ones count, fewer are
/// repeated, so that all ones stay all ones.
class MaskedChannel {
  public:
    explicit MaskedChannel(std::uint32_t mask) : mask_(mask) {
        const int bits = std::popcount(mask);
        shift_ = std::countr_zero(mask) % 32 + std::max(bits - 8, 0);
        for (std::uint32_t value = 0; value < 256 && bits > 0; ++value) {
            std::uint32_t wide = 0;
            for (int up = 8 - bits; up > -bits; up -= bits) wide |= up >= 0 ? value << up : value >> -up;
            bytes_[value] = static_cast<std::byte>(bits < 8 ? wide : value);
        }
        if (bits == 0) bytes_[0] = std::byte{255};
    }

    std::byte Of(std::uint32_t pixel) const { return bytes_[(pixel & mask_) >> shift_]; }

  private:
    std::uint32_t mask_;
    int shift_;
    std::array<std::byte, 256> bytes_ = {};
};

}  // namespace

bool BmpFile::Select(std::uint32_t frame) {
    facts_ = {};
    std::array<std::byte, kBmpHeaderSize> start;
    const std::size_t count = file_.ReadSome(0, start.data(), start.size());
    const bool isBmp = count > kFileHeaderSize && start[0] == std::byte{'B'} && start[1] == std::byte{'M'};
    if (frame != 0 || !isBmp || !ReadBmpHeader({start.data(), count}, header_) ||
        !IsReadableSize(header_.width, header_.height) || header_.leastBytes > file_.Size() ||
        (header_.runs && !PlausibleSize(header_.width, header_.height, file_.Size())) || !ReadPalette()) {
        return false;
    }
    facts_.size = {header_.width, header_.height};
    facts_.format = header_.bits == 24 ? PixelFormat::Rgb8 : PixelFormat::Rgba8;
    facts_.memory = std::uint64_t{BytesPerPixel(facts_.format)} * header_.width * header_.height;
    return true;
}

bool BmpFile::ReadPalette() {
    if (header_.paletteSize == 0) return true;
    const std::uint32_t entryBytes = header_.paletteEntryBytes;
    std::array<std::byte, 256 * 4 + 4> stored{};
    const std::size_t count =
        file_.ReadSome(header_.paletteStart, stored.data(), std::size_t{entryBytes} * header_.paletteSize) /
        entryBytes;
    if (count == 0) return false;
    // Indices beyond the palette mean its last colour.
    for (std::size_t i = 0; i < palette_.size(); ++i) {
        palette_[i] = Little32(&stored[entryBytes * std::min(i, count - 1)]) | 0xff000000u;
    }
    return true;
}

void BmpFile::ConvertRow(const std::byte* from, std::byte* to) const {
    const std::uint32_t width = header_.width, bits = header_.bits;
    if (bits == 24 || (bits == 32 && header_.masks == std::array{0xffu, 0xff00u, 0xff0000u, 0xff000000u})) {
        std::memcpy(to, from, std::size_t{width} * bits / 8);  // blue first here and there
    } else if (bits <= 8) {
        const std::uint32_t perByte = 8 / bits;
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto byte = std::to_integer<std::uint32_t>(from[x / perByte]);
            const std::uint32_t index = byte >> (8 - bits - x % perByte * bits) & ((1u << bits) - 1);
            std::memcpy(to + std::size_t{x} * 4, &palette_[index], 4);
        }
    } else if (bits == 32 && header_.masks == std::array{0xffu, 0xff00u, 0xff0000u, 0u}) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint32_t pixel = Little32(from + std::size_t{x} * 4) | 0xff000000u;
            std::memcpy(to + std::size_t{x} * 4, &pixel, 4);
        }
    } else {
        const auto& masks = header_.masks;
        const std::array channels = {MaskedChannel(masks[0]), MaskedChannel(masks[1]),
                                     MaskedChannel(masks[2]), MaskedChannel(masks[3])};
        for (std::uint32_t x = 0; x < width; ++x, to += 4) {
            const std::uint32_t pixel =
                bits == 16 ? Little16(from + std::size_t{x} * 2) : Little32(from + std::size_t{x} * 4);
            for (std::size_t i = 0; i < 4; ++i) to[i] = channels[i].Of(pixel);
        }
    }
}

bool BmpFile::ReadRuns(Image& image) const {
    const ByteBuffer chunk = AllocateBytes(kChunkBytes);
    if (!chunk) return false;
    std::uint64_t position = header_.pixelStart;
    std::size_t count = 0, at = 0;
    const auto next = [&]() -> int {
        if (at == count) {
            count = file_.ReadSome(position, chunk.get(), kChunkBytes);
            position += count;
            at = 0;
            if (count == 0) return -1;
        }
        return std::to_integer<int>(chunk[at++]);
    };
    return ReadBmpRuns(next, header_.bits, palette_, image);
}

bool BmpFile::ReadRows(Image& image) const {
    const std::uint64_t rowBytes = BmpRowBytes(header_.width, header_.bits);
    const std::uint32_t rows = RowsAtOnce(rowBytes, image.height);
    const ByteBuffer chunk = AllocateBytes(rowBytes * rows);
    if (!chunk || file_.Size() < header_.pixelStart + rowBytes * image.height) return false;
    for (std::uint32_t y = 0; y < image.height; y += rows) {
        const std::uint32_t count = std::min(rows, image.height - y);
        if (!file_.Read(header_.pixelStart + rowBytes * y, chunk.get(), rowBytes * count)) return false;
        for (std::uint32_t i = 0; i < count; ++i) {
            ConvertRow(chunk.get() + rowBytes * i,
                       image.Row(header_.topRowFirst ? y + i : image.height - 1 - y - i));
        }
    }
    return true;
}

bool BmpFile::Read(Image& image) {
    Image decoded(facts_.size.width, facts_.size.height, facts_.format);
    if (!decoded.IsValid() || !(header_.runs ? ReadRuns(decoded) : ReadRows(decoded))) return false;
    image = std::move(decoded);
    return true;
}

bool WriteBmp(const Image& image, const std::wstring& path, PixelFormat format) {
    constexpr PixelFormat kStored = PixelFormat::Rgb8;
    constexpr std::uint32_t kBits = 24;
    constexpr std::uint32_t kPixelsPerMetre = 3780;  // 96 to the inch
    constexpr std::uint32_t kStart = kFileHeaderSize + kInfoHeaderSize;
    constexpr std::uint32_t kLongestEdge = 0x7fffffff;
    if (!image.IsValid() || image.width > kLongestEdge || image.height > kLongestEdge) return false;
    const std::uint64_t rowBytes = BmpRowBytes(image.width, kBits);
    const std::uint64_t fileSize = kStart + rowBytes * image.height;
    if (fileSize >> 32 != 0) return false;
    const std::uint32_t rows = RowsAtOnce(rowBytes, image.height);
    const ByteBuffer chunk = AllocateBytes(rowBytes * rows);
    const WrittenRows stored(image, format, kStored);
    if (!chunk || !stored.Ready()) return false;

    std::array<std::byte, kStart> header{};
    header[0] = std::byte{'B'};
    header[1] = std::byte{'M'};
    SetLittle32(&header[2], static_cast<std::uint32_t>(fileSize));
    SetLittle32(&header[10], kStart);
    SetLittle32(&header[14], kInfoHeaderSize);
    SetLittle32(&header[18], image.width);
    SetLittle32(&header[22], image.height);
    SetLittle16(&header[26], 1);  // planes
    SetLittle16(&header[28], kBits);
    SetLittle32(&header[34], static_cast<std::uint32_t>(fileSize) - kStart);
    SetLittle32(&header[38], kPixelsPerMetre);
    SetLittle32(&header[42], kPixelsPerMetre);

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(ToSystemBytes(path).c_str(), "wb"),
                                                         &std::fclose);
    if (!file) return false;
    std::setvbuf(file.get(), nullptr, _IONBF, 0);  // the chunks are the buffer
    if (std::fwrite(header.data(), header.size(), 1, file.get()) != 1) return false;
    std::memset(chunk.get(), 0, rowBytes * rows);  // for the padding of its rows
    for (std::uint32_t y = 0; y < image.height; y += rows) {
        const std::uint32_t count = std::min(rows, image.height - y);
        for (std::uint32_t i = 0; i < count; ++i)
            stored.Get(image.height - 1 - y - i, chunk.get() + rowBytes * i);
        if (std::fwrite(chunk.get(), rowBytes, count, file.get()) != count) return false;
    }
    return std::fclose(file.release()) == 0;
}

}  // namespace skyvault
