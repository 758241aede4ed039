#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

#include "codecs/bytes.h"
#include "codecs/exr_blocks.h"
#include "codecs/exr_file.h"
#include "codecs/written_rows.h"
#include "platform/file_stream.h"
#include "platform/parallel_rows.h"

namespace skyvault {
namespace {

constexpr std::uint32_t kChunkLines = 16;  // that ZIP packs together
constexpr std::uint32_t kRound = 16;       // chunks packed at a time

/// Bytes of the file's header, put together.
class HeaderBytes {
  public:
    void Number(std::uint32_t value) {
        std::array<std::byte, 4> bytes;
        SetLittle32(bytes.data(), value);
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    }
    void Real(float value) { Number(std::bit_cast<std::uint32_t>(value)); }
    void Byte(std::uint8_t value) { bytes_.push_back(static_cast<std::byte>(value)); }
    void Text(std::string_view text) {
        for (const char c : text) Byte(static_cast<std::uint8_t>(c));
        Byte(0);
    }
    void Attribute(std::string_view name, std::string_view type, std::uint32_t size) {
        Text(name);
        Text(type);
        Number(size);
    }
    const std::vector<std::byte>& Get() const { return bytes_; }

  private:
    std::vector<std::byte> bytes_;
};

std::vector<std::byte> MakeHeader(const Image& image, std::string_view channels) {
    constexpr std::uint32_t kMagic = 20000630, kVersion = 2, kHalf = 1, kChannelSize = 18;
    HeaderBytes bytes;
    bytes.Number(kMagic);
    bytes.Number(kVersion);
    bytes.Attribute("channels", "chlist", kChannelSize * static_cast<std::uint32_t>(channels.size()) + 1);
    for (const char channel : channels) {
        bytes.Text({&channel, 1});
        for (const std::uint32_t value : {kHalf, 0u, 1u, 1u}) bytes.Number(value);
    }
    bytes.Byte(0);
    bytes.Attribute("compression", "compression", 1);
    bytes.Byte(static_cast<std::uint8_t>(ExrCompression::Zip));
    for (const char* const window : {"dataWindow", "displayWindow"}) {
        bytes.Attribute(window, "box2i", 16);
        for (const std::uint32_t side : {0u, 0u, image.width - 1, image.height - 1}) bytes.Number(side);
    }
    bytes.Attribute("lineOrder", "lineOrder", 1);
    bytes.Byte(0);
    bytes.Attribute("pixelAspectRatio", "float", 4);
    bytes.Real(1);
    bytes.Attribute("screenWindowCenter", "v2f", 8);
    bytes.Real(0);
    bytes.Real(0);
    bytes.Attribute("screenWindowWidth", "float", 4);
    bytes.Real(1);
    bytes.Byte(0);
    return bytes.Get();
}

/// A pixel's halves as the file has them: finite, colours multiplied by alpha.
void PreparePixel(Half* pixel, std::size_t channels) {
    HalfLosses unseen;
    for (std::size_t c = 0; c < channels; ++c) pixel[c] = HoldInHalf(HalfToFloat(pixel[c]), unseen);
    if (channels != 4) return;
    const float alpha = HalfToFloat(pixel[3]);
    if (alpha >= 1.0f) return;
    for (std::size_t c = 0; c < 3; ++c) pixel[c] = FloatToHalf(HalfToFloat(pixel[c]) * std::max(alpha, 0.0f));
}

/// Sixteen lines on their way into the file.
struct Chunk {
    ByteBuffer pixels, scratch, packed;
    std::span<const std::byte> bytes;

    bool Allocate(std::size_t count) {
        pixels = AllocateBytes(count);
        scratch = AllocateBytes(count);
        packed = AllocateBytes(PackedExrRoom(count));
        return pixels && scratch && packed;
    }
};

class Packer {
  public:
    Packer(const Image& image, PixelFormat wanted, PixelFormat file)
        : image_(image),
          wanted_(wanted),
          file_(file),
          rowBytes_(std::size_t{BytesPerPixel(file)} * image.width) {}

    std::size_t ChunkBytes() const { return rowBytes_ * std::min(kChunkLines, image_.height); }

    bool Pack(std::uint32_t firstRow, Chunk& chunk) const {
        const WrittenRows rows(image_, wanted_, file_);
        if (!rows.Ready()) return false;
        const std::uint32_t end = std::min(firstRow + kChunkLines, image_.height);
        const std::size_t channels = BytesPerPixel(file_) / 2, width = image_.width;
        std::byte* line = chunk.pixels.get();
        for (std::uint32_t y = firstRow; y < end; ++y, line += rowBytes_) {
            std::byte* const row = chunk.scratch.get();
            rows.Get(y, row);
            for (std::size_t x = 0; x < width; ++x) {
                std::array<Half, 4> pixel;
                std::memcpy(pixel.data(), row + 2 * channels * x, 2 * channels);
                PreparePixel(pixel.data(), channels);
                // Channels are in the order of their names, which is backwards: A B G R.
                for (std::size_t c = 0; c < channels; ++c)
                    std::memcpy(line + 2 * (width * (channels - 1 - c) + x), &pixel[c], 2);
            }
        }
        const std::span<const std::byte> pixels(chunk.pixels.get(),
                                                static_cast<std::size_t>(end - firstRow) * rowBytes_);
        const std::size_t size = PackExr(pixels, chunk.scratch.get(), chunk.packed.get());
        chunk.bytes = size == 0 ? pixels : std::span<const std::byte>(chunk.packed.get(), size);
        return true;
    }

  private:
    const Image& image_;
    PixelFormat wanted_, file_;
    std::size_t rowBytes_;
};

bool WriteChunk(FileStream& file, std::uint32_t firstRow, std::span<const std::byte> bytes) {
    std::array<std::byte, 8> head;
    SetLittle32(&head[0], firstRow);
    SetLittle32(&head[4], static_cast<std::uint32_t>(bytes.size()));
    return file.Write(head.data(), head.size()) && file.Write(bytes.data(), bytes.size());
}

}  // namespace

bool WriteExr(const Image& image, const std::wstring& path, PixelFormat format) {
    const bool grey = BytesPerPixel(format) <= 2;
    const PixelFormat halves = HasAlpha(format) ? PixelFormat::RgbaHalf
                               : grey           ? PixelFormat::GreyHalf
                                                : PixelFormat::RgbHalf;
    const Packer packer(image, format, halves);
    if (packer.ChunkBytes() > std::numeric_limits<std::int32_t>::max()) return false;  // none reads more
    const std::uint32_t count = (image.height - 1) / kChunkLines + 1;
    std::array<Chunk, kRound> chunks;
    for (std::uint32_t i = 0; i < std::min(count, kRound); ++i) {
        if (!chunks[i].Allocate(packer.ChunkBytes())) return false;
    }
    const std::vector<std::byte> header = MakeHeader(image, halves == PixelFormat::RgbaHalf ? "ABGR"
                                                            : grey                          ? "Y"
                                                                                            : "BGR");
    std::vector<std::byte> table(std::size_t{8} * count);
    FileStream file(path, FileUse::Write);
    if (!file.IsOpen() || !file.Write(header.data(), header.size()) ||
        !file.Write(table.data(), table.size()))
        return false;
    std::uint64_t place = header.size() + table.size();
    const bool parallel = std::uint64_t{image.width} * image.height >= kParallelPixels / 16;
    for (std::uint32_t first = 0; first < count; first += kRound) {
        const std::uint32_t here = std::min(kRound, count - first);
        std::atomic<bool> packed = true;
        ParallelBands(static_cast<int>(here), parallel, [&](int band) {
            const auto i = static_cast<std::uint32_t>(band);
            if (!packer.Pack((first + i) * kChunkLines, chunks[i])) packed = false;
        });
        if (!packed) return false;
        for (std::uint32_t i = 0; i < here; ++i) {
            if (!WriteChunk(file, (first + i) * kChunkLines, chunks[i].bytes)) return false;
            std::byte* const entry = &table[std::size_t{8} * (first + i)];
            SetLittle32(entry, static_cast<std::uint32_t>(place));
            SetLittle32(entry + 4, static_cast<std::uint32_t>(place >> 32));
            place += 8 + chunks[i].bytes.size();
        }
    }
    return file.Seek(header.size()) && file.Write(table.data(), table.size()) && file.Close();
}

}  // namespace skyvault
