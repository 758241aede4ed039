// The header of an OpenEXR picture: which channels, how they are packed, where the pixels belong.
//
// A file is the header, a table with the place of each chunk, and the chunks: as many lines as the
// compression packs together, or a tile. All numbers are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "image/image.h"
#include "platform/outcome.h"

namespace skyvault {

/// By their numbers in the file; there are more.
enum class ExrCompression : std::uint8_t { None = 0, Rle = 1, ZipLine = 2, Zip = 3, Piz = 4, Pxr24 = 5 };

enum class ExrType : std::uint32_t { Unsigned = 0, Half = 1, Float = 2 };

constexpr std::uint32_t BytesOf(ExrType type) {
    return type == ExrType::Half ? 2 : 4;
}

/// One channel of the file, and which of the picture's it fills: `count` from `first` on.
struct ExrChannel {
    ExrType type = ExrType::Half;
    std::uint8_t first = 0, count = 0;
};

/// Inclusive bounds in pixels, y downwards.
struct ExrWindow {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;

    std::uint32_t Width() const { return static_cast<std::uint32_t>(right - left + 1); }
    std::uint32_t Height() const { return static_cast<std::uint32_t>(bottom - top + 1); }
};

struct ExrHeader {
    std::vector<ExrChannel> channels;
    ExrCompression compression = ExrCompression::None;
    ExrWindow data;                          ///< what the file has pixels of
    ExrWindow display;                       ///< what is the picture
    PixelFormat format = PixelFormat::None;  ///< the half format that holds the channels
    bool allChannels = false;                ///< every channel of that format is in the file
    std::uint32_t pixelBytes = 0;            ///< of all channels
    /// The pixels of a chunk, fewer at the right and bottom edges.
    std::uint32_t chunkWidth = 0, chunkHeight = 0;
    bool tiled = false;
    std::uint32_t chunksAcross = 0, chunksDown = 0;
    std::size_t size = 0;  ///< of the header: the table follows

    std::uint64_t ChunkCount() const { return std::uint64_t{chunksAcross} * chunksDown; }
    std::uint64_t ChunkBytes() const { return std::uint64_t{chunkWidth} * chunkHeight * pixelBytes; }
};

/// As many bytes of the file as its header may take.
inline constexpr std::size_t kExrHeaderLimit = std::size_t{1} << 20;

/// start: the file's first kExrHeaderLimit bytes, or all of a shorter file. CannotOpen with the cause for
/// kinds of pictures that are not read, without one for what contradicts itself or claims more than a file of
/// fileSize bytes holds.
Outcome ReadExrHeader(std::span<const std::byte> start, std::uint64_t fileSize, ExrHeader& header);

}  // namespace skyvault
