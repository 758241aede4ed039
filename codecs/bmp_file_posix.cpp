#include "codecs/bmp_file_posix.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <system_error>

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

std::uint64_t StoredRowBytes(std::uint32_t width, std::uint32_t bits) {
    return (std::uint64_t{width} * bits / 8 + 3) / 4 * 4;
}

std::uint32_t RowsAtOnce(std::uint64_t rowBytes, std::uint32_t height) {
    return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(kChunkBytes / rowBytes, 1, height));
}

/// Unbuffered: the chunks are the buffer.
std::FILE* Open(const std::wstring& path, const char* mode) {
    std::FILE* const file = std::fopen(ToSystemBytes(path).c_str(), mode);
    if (file) std::setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

void CopyOpaque(const std::byte* from, std::byte* to, std::uint32_t width) {
    for (std::uint32_t x = 0; x < width; ++x) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, from + std::size_t{x} * 4, 4);
        pixel |= 0xff000000u;
        std::memcpy(to + std::size_t{x} * 4, &pixel, 4);
    }
}

}  // namespace

PlainBmp::PlainBmp(const std::wstring& path) : file_(nullptr, &std::fclose) {
    // Opening a pipe would wait for its other end.
    std::error_code error;
    const std::filesystem::path name = ToSystemBytes(path);
    if (!std::filesystem::is_regular_file(name, error)) return;
    fileSize_ = std::filesystem::file_size(name, error);
    if (error) return;
    file_.reset(Open(path, "rb"));
    if (file_ && !ReadHeader()) file_.reset();
}

bool PlainBmp::ReadHeader() {
    constexpr std::array kHeaderSizes = {kInfoHeaderSize, 52u, 56u, 108u, 124u};
    enum Compression : std::uint32_t { None = 0, BitFields = 3 };

    std::array<std::byte, kPictureHeaderSize> start{};
    const std::size_t count = std::fread(start.data(), 1, start.size(), file_.get());
    const PictureHeader header = ReadPictureHeader({start.data(), count});
    if (count < kFileHeaderSize + kInfoHeaderSize || header.kind != PictureKind::Bmp || !header.sound ||
        !IsReadableSize(header.width, header.height) || header.leastBytes > fileSize_) {
        return false;
    }
    const std::uint32_t headerSize = Little32(&start[14]);
    const std::uint32_t compression = Little32(&start[30]);
    const std::uint32_t colours = Little32(&start[46]);
    bits_ = Little16(&start[28]);
    if (std::find(kHeaderSizes.begin(), kHeaderSizes.end(), headerSize) == kHeaderSizes.end()) return false;
    // The masks of a sound file are those of 32 bits without any.
    if (compression != None && (compression != BitFields || bits_ != 32)) return false;
    if (bits_ != 8 && bits_ != 24 && bits_ != 32) return false;

    size_ = {header.width, header.height};
    alpha_ = bits_ == 32 && !header.alphaUnused;
    topRowFirst_ = (Little32(&start[22]) & 0x80000000u) != 0;
    pixelStart_ = Little32(&start[10]);
    const std::uint32_t paletteSize = bits_ == 8 ? (colours != 0 ? colours : 256) : 0;
    const std::uint32_t paletteStart = kFileHeaderSize + headerSize;
    return fileSize_ >= pixelStart_ && pixelStart_ >= paletteStart + 4 * paletteSize &&
           (paletteSize == 0 || ReadPalette(paletteStart, paletteSize));
}

bool PlainBmp::ReadPalette(std::uint64_t at, std::uint32_t count) {
    std::array<std::byte, 256 * 4> stored;
    if (fseeko(file_.get(), static_cast<off_t>(at), SEEK_SET) != 0 ||
        std::fread(stored.data(), 4, count, file_.get()) != count) {
        return false;
    }
    // Indices beyond the palette mean its last colour.
    for (std::uint32_t i = 0; i < 256; ++i) {
        palette_[i] = Little32(&stored[std::size_t{std::min(i, count - 1)} * 4]) | 0xff000000u;
    }
    return true;
}

PictureFacts PlainBmp::Facts() const {
    PictureFacts facts;
    facts.size = size_;
    facts.format = bits_ == 24 ? PixelFormat::Rgb8 : PixelFormat::Rgba8;
    facts.memory = std::uint64_t{BytesPerPixel(facts.format)} * size_.width * size_.height;
    return facts;
}

bool PlainBmp::Read(Image& image) {
    const std::uint64_t rowBytes = StoredRowBytes(size_.width, bits_);
    if (fileSize_ < pixelStart_ + rowBytes * size_.height) return false;
    image = Image(size_.width, size_.height, Facts().format);
    const std::uint32_t rows = RowsAtOnce(rowBytes, size_.height);
    const ByteBuffer chunk = AllocateBytes(rowBytes * rows);
    if (!image.IsValid() || !chunk) return false;
    if (fseeko(file_.get(), static_cast<off_t>(pixelStart_), SEEK_SET) != 0) return false;
    for (std::uint32_t y = 0; y < size_.height; y += rows) {
        const std::uint32_t count = std::min(rows, size_.height - y);
        if (std::fread(chunk.get(), rowBytes, count, file_.get()) != count) return false;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::byte* const from = chunk.get() + rowBytes * i;
            std::byte* const to = image.Row(topRowFirst_ ? y + i : size_.height - 1 - y - i);
            if (bits_ == 24 || alpha_) {
                std::memcpy(to, from, image.stride);  // blue first here and there
            } else if (bits_ == 32) {
                CopyOpaque(from, to, size_.width);
            } else {
                for (std::uint32_t x = 0; x < size_.width; ++x) {
                    std::memcpy(to + std::size_t{x} * 4, &palette_[std::to_integer<std::size_t>(from[x])], 4);
                }
            }
        }
    }
    return true;
}

bool WriteBmp(const Image& image, const std::wstring& path, PixelFormat format) {
    constexpr PixelFormat kStored = PixelFormat::Rgb8;
    constexpr std::uint32_t kBits = 24;
    constexpr std::uint32_t kPixelsPerMetre = 3780;  // 96 to the inch
    constexpr std::uint32_t kStart = kFileHeaderSize + kInfoHeaderSize;
    constexpr std::uint32_t kLongestEdge = 0x7fffffff;
    if (!image.IsValid() || image.width > kLongestEdge || image.height > kLongestEdge) return false;
    const std::uint64_t rowBytes = StoredRowBytes(image.width, kBits);
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

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(Open(path, "wb"), &std::fclose);
    if (!file || std::fwrite(header.data(), header.size(), 1, file.get()) != 1) return false;
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
