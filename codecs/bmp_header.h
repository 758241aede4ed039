// The header of a BMP file: every kind of OS/2 and Windows, and how the pixels behind it are stored.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace skyvault {

/// As many bytes of the file as ReadBmpHeader looks at.
inline constexpr std::size_t kBmpHeaderSize = 70;

struct BmpHeader {
    std::uint32_t width = 0, height = 0;
    bool topRowFirst = false;
    std::uint32_t bits = 0;  ///< of a pixel: 1, 4, 8 (a palette), 16, 24 or 32
    bool runs = false;       ///< of equal pixels (RLE4, RLE8)
    std::uint64_t pixelStart = 0;
    std::uint64_t paletteStart = 0;
    std::uint32_t paletteSize = 0;        ///< entries; 0: none
    std::uint32_t paletteEntryBytes = 4;  ///< blue, green, red, and mostly a fourth
    /// Which bits of a pixel of 16 or 32 bits are blue, green, red and alpha. 0 for alpha: none.
    std::array<std::uint32_t, 4> masks = {};
    std::uint64_t leastBytes = 0;  ///< no whole file of this picture is smaller
};

/// start: the file's first kBmpHeaderSize bytes, or all of a shorter file, "BM" and what follows. False for
/// headers that contradict themselves, and for JPEG, PNG, Huffman codes and 24-bit runs in a BMP's dress.
bool ReadBmpHeader(std::span<const std::byte> start, BmpHeader& header);

/// Bytes of a row that is not stored in runs: whole groups of four.
std::uint64_t BmpRowBytes(std::uint32_t width, std::uint32_t bits);

}  // namespace skyvault
