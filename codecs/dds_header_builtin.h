// Headers of DDS files: what they say, and where a file keeps its pixels.
//
//   offset  0  "DDS "
//           4  header of 124 bytes; the pixel format, 32 bytes of it, at 76
//         128  more about the format, 20 bytes, when the four-character code there is "DX10"
//              a palette of 256 × 4 bytes, for the two palette formats
//              the pixels: for each array item its mip levels from large to small; for each mip level of
//              a volume its slices. No row or level is padded.
//
// Which headers are refused: those DirectXTex refuses without any of its flags, so that both builds of the
// program open the same files.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/dds_container.h"

namespace skyvault {

/// No file that is opened is larger.
constexpr std::uint64_t kLargestDdsFile = 0xffffffffu;

/// The longest header, without a palette.
constexpr std::size_t kLongestDdsHeader = 148;

/// Pixels as stored by writers of the time before DXGI formats; all but Plain become Rgba8Unorm.
enum class DdsStorage {
    Plain,      ///< as the format says
    Xbgr8,      ///< Rgba8Unorm whose fourth byte means nothing
    Bgr8,       ///< three bytes: blue, green, red
    A8R3G3B2,   ///< sixteen bits, alpha at the top
    Palette,    ///< one byte: the palette entry
    A8Palette,  ///< palette entry, alpha
    L6V5U5,     ///< sixteen bits, luminance at the top; u and v are signed
    X8L8V8U8,   ///< four bytes: u, v (signed), luminance, nothing
};

struct DdsHeader {
    DdsMetadata metadata;
    DdsStorage storage = DdsStorage::Plain;
    bool volume = false;
    std::size_t paletteAt = 0;  ///< where the palette begins; 0: there is none
    std::size_t pixelsAt = 0;
};

/// start: the file's first kLongestDdsHeader bytes, or the whole file if it is shorter.
bool ParseDdsHeader(std::span<const std::byte> start, DdsHeader& header);

/// Where the largest mip level of each array item lies in a file; of a volume, its first slice.
struct DdsLayout {
    std::uint64_t rowPitch = 0;    ///< bytes of a row (of blocks) in the file
    std::uint64_t slicePitch = 0;  ///< bytes of one picture
    std::uint64_t itemPitch = 0;   ///< bytes from one array item to the next
};

/// False for a header whose pixels cannot be read: a format that is none of DdsFormat's, no size, more mip
/// levels than the size has, or a file shorter than the header says.
bool LayOutDdsFile(const DdsHeader& header, std::uint64_t fileSize, DdsLayout& layout);

/// Bytes of a row of pixels, or of 4 × 4 blocks; and the number of such rows. 0 bytes for unknown formats.
std::uint64_t DdsRowPitch(DdsFormat format, std::uint32_t width);
std::uint32_t DdsRowCount(DdsFormat format, std::uint32_t height);

/// The header of a file; six items are a cube map. The short form wherever it can say the format. Returns its
/// size, or 0 when a field is too narrow or there are more mip levels than the size has.
std::size_t MakeDdsHeader(const DdsMetadata& metadata, std::array<std::byte, kLongestDdsHeader>& header);

}  // namespace skyvault
