// What the first bytes of a picture file say about it, looked at before a codec is trusted with the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace skyvault {

enum class PictureKind { Unknown, Bmp, Jpeg, Png, Tiff, Gif, Heif, Webp };

struct PictureHeader {
    PictureKind kind = PictureKind::Unknown;
    bool sound = false;                   ///< nothing in the header contradicts itself
    std::uint32_t width = 0, height = 0;  ///< 0 for the kinds that tell it further on: JPEG, TIFF, HEIF, WebP
    bool indirect = false;     ///< a palette, or fewer than 8 bits a channel: pixels no format of ours holds
    bool alphaUnused = false;  ///< four channels whose fourth has no meaning
};

/// As many bytes of the file as ReadPictureHeader looks at.
inline constexpr std::size_t kPictureHeaderSize = 128;

/// start: the file's first kPictureHeaderSize bytes, or all of a shorter file.
PictureHeader ReadPictureHeader(std::span<const std::byte> start);

/// False for a picture far larger than a file of this size can hold: its header is not believed, and nothing
/// is allocated for it. Sizes in pixels and bytes.
bool PlausibleSize(std::uint64_t width, std::uint64_t height, std::uint64_t fileSize);

}  // namespace skyvault
