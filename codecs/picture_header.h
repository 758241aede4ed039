// What a picture file says about itself, looked at before a codec is trusted with it: its first bytes, and
// whether a JPEG is there to its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace skyvault {

enum class PictureKind { Unknown, Bmp, Jpeg, Png, Tiff, Gif, Heif, Webp };

struct PictureHeader {
    PictureKind kind = PictureKind::Unknown;
    bool sound = false;                   ///< nothing in the header contradicts itself
    std::uint32_t width = 0, height = 0;  ///< 0 for the kinds that tell it further on: JPEG, TIFF, HEIF
    std::uint64_t leastBytes = 0;         ///< no whole file of this picture is smaller (BMP, PNG; else 0)
};

/// As many bytes of the file as ReadPictureHeader looks at.
inline constexpr std::size_t kPictureHeaderSize = 128;

/// start: the file's first kPictureHeaderSize bytes, or all of a shorter file.
PictureHeader ReadPictureHeader(std::span<const std::byte> start);

/// False without a size, and for one that readers which count in 31 bits would get wrong. In pixels.
bool IsReadableSize(std::uint64_t width, std::uint64_t height);

/// False for a picture far larger than a file of this size can hold: its header is not believed, and nothing
/// is allocated for it. Sizes in pixels and bytes.
bool PlausibleSize(std::uint64_t width, std::uint64_t height, std::uint64_t fileSize);

/// PlausibleSize, but for kinds whose header tells how small a file of them can be: that, then. So a flat
/// picture is read however well it is packed.
bool MayHoldPicture(const PictureHeader& header, std::uint64_t width, std::uint64_t height,
                    std::uint64_t fileSize);

/// What the markers of a JPEG file tell.
struct JpegStructure {
    bool whole = false;       ///< they lead to "end of image"; decoders fill what is cut with grey
    bool endsInScan = false;  ///< the file ends within or right behind the data of a scan
    std::uint32_t width = 0, height = 0;  ///< 0: no frame that is read here, or one that contradicts itself
    std::uint32_t components = 0;         ///< 1, 3 or 4
    std::uint64_t blocks = 0;             ///< of 8 × 8 values, in all components
    std::uint32_t scans = 0;
    std::uint64_t scanned = 0;  ///< components of all scans together
    bool progressive = false;
    bool arithmetic = false;  ///< coded in fractions of bits
};

/// Walks the file's markers; what follows "end of image" is not looked at.
JpegStructure ReadJpegStructure(std::span<const std::byte> file);

/// Whether a decoder may have the file: of few enough scans, large enough for its blocks, and whole but
/// perhaps for its end marker. Without that marker only a decoder can tell whether the last scan is all
/// there.
bool IsSoundJpeg(const JpegStructure& jpeg, std::uint64_t fileSize);

}  // namespace skyvault
