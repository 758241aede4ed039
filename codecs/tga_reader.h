// Truevision TGA, uncompressed: true colour with 24 or 32 bits, and colour-mapped with 8-bit indices.
//
// The reader takes files as they have always been taken: pixel data is expected straight after the header
// (a file with an ID field is misread), and colour-mapped pictures come out with red and blue exchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "image/image.h"

namespace skyvault {

/// A colour-mapped file may be shorter than its picture, whose missing pixels are then zero. So that a few
/// bytes cannot claim gigabytes, its picture in memory may have at most this size.
constexpr std::uint64_t LargestColourMappedPicture(std::size_t fileSize) {
    return (std::uint64_t{16} << 20) + std::uint64_t{1024} * fileSize;
}

inline constexpr std::size_t kTgaHeaderSize = 18;

/// The size a TGA file's header tells; false for kinds of pictures that ReadTga refuses.
bool ReadTgaSize(std::span<const std::byte> header, PictureSize& size);

/// The next n bytes of a file, from its first on; false when they cannot be had.
using TgaSource = std::function<bool(void* to, std::size_t n)>;

/// Reads a TGA file of that size, its pixels straight into the picture. name: for the debugger line that
/// tells the stored row order. False for any other kind than those above, for true-colour files with less
/// pixel data than they claim, and for colour-mapped ones beyond LargestColourMappedPicture. The rows come
/// out top first; topDown tells how the file stored them.
bool ReadTga(const TgaSource& source, std::size_t fileSize, std::wstring_view name, Image& image);

/// The same for a file held in memory.
bool ReadTga(std::span<const std::byte> file, std::wstring_view name, Image& image);

}  // namespace skyvault
