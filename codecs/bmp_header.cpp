#include "codecs/bmp_header.h"

#include <algorithm>
#include <bit>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

constexpr std::uint32_t kFileHeader = 14;
constexpr std::uint32_t kOldHeader = 12;       // 16-bit sizes, no compression, palette entries of 3 bytes
constexpr std::uint32_t kShortestHeader = 16;  // of those that may end behind any field
constexpr std::uint32_t kHeaderWithAlphaMask = 56;  // and everything longer, but OS/2's
constexpr std::uint32_t kOs2Header = 64;            // has other things where masks would be; may end earlier
enum Compression : std::uint32_t { kNone = 0, kRuns8 = 1, kRuns4 = 2, kMasks = 3, kMasksWithAlpha = 6 };

/// One group of neighbouring bits.
bool IsMask(std::uint32_t mask, std::uint32_t bits) {
    if (mask == 0 || (bits == 16 && mask >> 16 != 0)) return false;
    const std::uint32_t run = mask >> std::countr_zero(mask);
    return (run & (run + 1)) == 0;
}

/// A field of the header; 0 when that ends before it.
std::uint32_t Field(const std::byte* file, std::uint32_t headerSize, std::uint32_t at) {
    return at + 4 <= kFileHeader + headerSize ? Little32(file + at) : 0;
}

/// The masks that are stored, or those of pixels that come without any; false for masks of no use.
bool FindMasks(const std::byte* file, std::uint32_t headerSize, std::uint32_t compression,
               BmpHeader& header) {
    const bool os2 = headerSize == kOs2Header;
    const bool alphaTold = (headerSize >= kHeaderWithAlphaMask && !os2) || compression == kMasksWithAlpha;
    const std::uint32_t alpha = alphaTold ? Little32(file + 66) : 0;
    if (compression == kNone) {
        if (header.bits == 16) header.masks = {0x1f, 0x3e0, 0x7c00, 0};
        if (header.bits == 32) header.masks = {0xff, 0xff00, 0xff0000, alpha != 0 ? 0xff000000 : 0};
        return true;
    }
    if (header.runs) return true;
    header.masks = {Little32(file + 62), Little32(file + 58), Little32(file + 54), alpha};
    const auto isMask = [&](std::uint32_t mask) { return IsMask(mask, header.bits); };
    return !os2 && std::all_of(header.masks.begin(), header.masks.begin() + 3, isMask) &&
           (alpha == 0 || isMask(alpha));
}

}  // namespace

std::uint64_t BmpRowBytes(std::uint32_t width, std::uint32_t bits) {
    return (std::uint64_t{width} * bits + 31) / 32 * 4;
}

bool ReadBmpHeader(std::span<const std::byte> start, BmpHeader& header) {
    std::array<std::byte, kBmpHeaderSize> file{};
    std::copy_n(start.begin(), std::min(start.size(), file.size()), file.begin());
    const std::uint32_t headerSize = Little32(&file[14]);
    const bool old = headerSize == kOldHeader;
    if (!old && (headerSize < kShortestHeader || headerSize > 4096)) return false;
    header = {};
    header.bits = Little16(&file[old ? 24 : 28]);
    header.width = old ? Little16(&file[18]) : Little32(&file[18]);
    header.height = old ? Little16(&file[20]) : Little32(&file[22]);
    header.topRowFirst = !old && header.height > 0x80000000u;
    if (header.topRowFirst) header.height = 0u - header.height;
    const std::uint32_t compression = Field(file.data(), headerSize, 30);
    const std::uint32_t colours = Field(file.data(), headerSize, 46);
    const std::uint32_t bits = header.bits;

    const bool palette = bits == 1 || bits == 4 || bits == 8;
    if (!palette && bits != 16 && bits != 24 && bits != 32) return false;
    if (palette && colours > 1u << bits) return false;
    header.runs = compression == kRuns8 || compression == kRuns4;
    const bool masked = compression == kMasks || compression == kMasksWithAlpha;
    if ((header.runs && (bits != (compression == kRuns8 ? 8u : 4u) || header.topRowFirst)) ||
        (masked && bits != 16 && bits != 32) || (!header.runs && !masked && compression != kNone) ||
        !FindMasks(file.data(), headerSize, compression, header)) {
        return false;
    }
    header.pixelStart = Little32(&file[10]);
    header.paletteStart = kFileHeader + headerSize;
    header.paletteEntryBytes = old ? 3 : 4;
    if (palette) header.paletteSize = colours != 0 ? colours : 1u << bits;
    // Some programs count neither themselves nor the palette into where the pixels begin.
    if (palette && header.pixelStart == header.paletteStart) {
        header.pixelStart += header.paletteSize * header.paletteEntryBytes;
    }
    // Rows of runs may be left out: nothing tells how small such a file can be.
    header.leastBytes = header.runs ? 0 : BmpRowBytes(header.width, bits) * header.height;
    return true;
}

}  // namespace skyvault
