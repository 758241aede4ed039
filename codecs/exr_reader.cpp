#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

#include "codecs/bytes.h"
#include "codecs/exr_blocks.h"
#include "codecs/exr_file.h"
#include "platform/parallel_rows.h"

namespace skyvault {
namespace {

/// Chunks unpacked at a time, at most: each takes memory.
constexpr int kUnpackers = 8;

/// A number of the file as a half.
template <ExrType type>
Half HalfAt(const std::byte* p, HalfLosses& losses) {
    if constexpr (type == ExrType::Half) {
        const Half half{Little16(p)};
        const bool finite = (half.bits & 0x7c00) != 0x7c00;
        return finite ? half : HoldInHalf(HalfToFloat(half), losses);
    } else if constexpr (type == ExrType::Float) {
        return HoldInHalf(std::bit_cast<float>(Little32(p)), losses);
    } else {
        return HoldInHalf(static_cast<float>(Little32(p)), losses);
    }
}

/// `count` numbers of a channel into pixels that lie `pixelBytes` apart.
template <ExrType type>
void PlaceNumbers(const std::byte* from, std::size_t count, std::byte* to, std::size_t pixelBytes,
                  HalfLosses& losses) {
    for (std::size_t x = 0; x < count; ++x) {
        const Half half = HalfAt<type>(from + x * BytesOf(type), losses);
        std::memcpy(to + x * pixelBytes, &half, sizeof half);
    }
}

void PlaceChannel(const ExrChannel& channel, const std::byte* from, std::size_t count, std::byte* to,
                  std::size_t pixelBytes, HalfLosses& losses) {
    // Of a grey that is red, green and blue each value is lost once.
    HalfLosses again;
    for (std::size_t c = channel.first; c < std::size_t{channel.first} + channel.count; ++c) {
        HalfLosses& counted = c == channel.first ? losses : again;
        if (channel.type == ExrType::Half)
            PlaceNumbers<ExrType::Half>(from, count, to + 2 * c, pixelBytes, counted);
        if (channel.type == ExrType::Float)
            PlaceNumbers<ExrType::Float>(from, count, to + 2 * c, pixelBytes, counted);
        if (channel.type == ExrType::Unsigned)
            PlaceNumbers<ExrType::Unsigned>(from, count, to + 2 * c, pixelBytes, counted);
    }
}

/// A rectangle of the file's pixels, in the windows' coordinates.
struct Chunk {
    std::uint32_t column = 0, row = 0;  ///< of the grid of chunks
    std::int64_t left = 0, top = 0;
    std::uint32_t width = 0, height = 0;
};

Chunk ChunkOf(const ExrHeader& header, std::uint64_t number) {
    Chunk chunk;
    chunk.column = static_cast<std::uint32_t>(number % header.chunksAcross);
    chunk.row = static_cast<std::uint32_t>(number / header.chunksAcross);
    const std::uint32_t x = chunk.column * header.chunkWidth, y = chunk.row * header.chunkHeight;
    chunk.left = std::int64_t{header.data.left} + x;
    chunk.top = std::int64_t{header.data.top} + y;
    chunk.width = std::min(header.chunkWidth, header.data.Width() - x);
    chunk.height = std::min(header.chunkHeight, header.data.Height() - y);
    return chunk;
}

/// The chunk's packed pixels, where the table says; empty when the chunk there is another, or ends beyond the
/// file.
std::span<const std::byte> PackedChunk(std::span<const std::byte> file, const ExrHeader& header,
                                       std::uint64_t number, const Chunk& chunk) {
    const std::uint64_t place = Little64(&file[header.size + 8 * static_cast<std::size_t>(number)]);
    const std::size_t headSize = header.tiled ? 20 : 8;
    if (place > file.size() || file.size() - place < headSize) return {};
    const std::span<const std::byte> rest = file.subspan(static_cast<std::size_t>(place));
    // Lines tell their y; tiles their place in the grid, and that of their resolution.
    const bool right = header.tiled ? Little32(&rest[0]) == chunk.column && Little32(&rest[4]) == chunk.row &&
                                          Little32(&rest[8]) == 0 && Little32(&rest[12]) == 0
                                    : static_cast<std::int32_t>(Little32(&rest[0])) == chunk.top;
    const std::size_t size = Little32(&rest[headSize - 4]);
    return right && size <= rest.size() - headSize ? rest.subspan(headSize, size)
                                                   : std::span<const std::byte>();
}

/// What of a chunk lies in the picture.
void PlaceChunk(const ExrHeader& header, const Chunk& chunk, const std::byte* pixels, Image& picture,
                HalfLosses& losses) {
    const ExrWindow& display = header.display;
    const std::int64_t left = std::max<std::int64_t>(chunk.left, display.left);
    const std::int64_t right =
        std::min<std::int64_t>(chunk.left + chunk.width, std::int64_t{display.right} + 1);
    if (left >= right) return;
    const auto skipped = static_cast<std::size_t>(left - chunk.left),
               count = static_cast<std::size_t>(right - left);
    const std::size_t pixelBytes = BytesPerPixel(picture.format);
    for (std::uint32_t line = 0; line < chunk.height; ++line) {
        const std::int64_t y = chunk.top + line;
        const std::byte* from = pixels + std::size_t{line} * chunk.width * header.pixelBytes;
        if (y < display.top || y > display.bottom) continue;
        std::byte* const to = picture.Row(static_cast<std::uint32_t>(y - display.top)) +
                              static_cast<std::size_t>(left - display.left) * pixelBytes;
        for (const ExrChannel& channel : header.channels) {
            const std::size_t bytes = BytesOf(channel.type);
            PlaceChannel(channel, from + skipped * bytes, count, to, pixelBytes, losses);
            from += bytes * chunk.width;
        }
    }
}

/// Divides the colours of a row by their alpha. What has none stays: it shines without covering anything.
void DivideByAlpha(std::byte* row, std::uint32_t width, HalfLosses& losses) {
    for (std::uint32_t x = 0; x < width; ++x, row += 8) {
        std::array<Half, 4> pixel;
        std::memcpy(pixel.data(), row, sizeof pixel);
        const float alpha = HalfToFloat(pixel[3]);
        if (alpha <= 0.0f || alpha >= 1.0f) continue;
        for (std::size_t c = 0; c < 3; ++c) pixel[c] = HoldInHalf(HalfToFloat(pixel[c]) / alpha, losses);
        std::memcpy(row, pixel.data(), sizeof pixel);
    }
}

bool CoversPicture(const ExrHeader& header) {
    const ExrWindow &data = header.data, &display = header.display;
    return data.left <= display.left && data.top <= display.top && data.right >= display.right &&
           data.bottom >= display.bottom;
}

bool IsLarge(const Image& picture) {
    return std::uint64_t{picture.width} * picture.height >= kParallelPixels / 16;
}

}  // namespace

Outcome InspectExr(std::span<const std::byte> start, std::uint64_t fileSize, PictureFacts& facts) {
    ExrHeader header;
    Outcome read = ReadExrHeader(start, fileSize, header);
    if (!read.IsDone()) return read;
    facts.size = {header.display.Width(), header.display.Height()};
    facts.format = header.format;
    facts.frameCount = 1;
    facts.memory = std::uint64_t{BytesPerPixel(facts.format)} * facts.size.width * facts.size.height +
                   fileSize + kUnpackers * ExrUnpacker::Memory(header);
    return {};
}

Outcome ReadExr(std::span<const std::byte> file, Image& image, HalfLosses& losses) {
    image.Clear();
    ExrHeader header;
    Outcome read = ReadExrHeader(file, file.size(), header);
    if (!read.IsDone()) return read;
    Image picture(header.display.Width(), header.display.Height(), header.format);
    if (!picture.IsValid()) return Failure(Reason::CannotOpen);
    if (!header.allChannels || !CoversPicture(header))
        std::memset(picture.pixels.get(), 0, picture.ByteCount());

    std::array<HalfLosses, kUnpackers> lost;
    std::atomic<bool> broken = false;
    ParallelBands(kUnpackers, IsLarge(picture), [&](int band) {
        HalfLosses mine;
        ExrUnpacker unpacker(header);
        for (std::uint64_t i = static_cast<std::uint64_t>(band); i < header.ChunkCount(); i += kUnpackers) {
            if (broken) return;
            const Chunk chunk = ChunkOf(header, i);
            const std::span<const std::byte> pixels =
                unpacker.Unpack(PackedChunk(file, header, i, chunk), chunk.width, chunk.height);
            if (pixels.empty()) {
                broken = true;
                return;
            }
            PlaceChunk(header, chunk, pixels.data(), picture, mine);
        }
        lost[static_cast<std::size_t>(band)] = mine;
    });
    if (broken) return Failure(Reason::CannotOpen);
    for (const HalfLosses& part : lost) losses.Add(part);
    if (picture.format == PixelFormat::RgbaHalf) {
        for (std::uint32_t y = 0; y < picture.height; ++y)
            DivideByAlpha(picture.Row(y), picture.width, losses);
    }
    image = std::move(picture);
    return {};
}

}  // namespace skyvault
