// The entries of TIFF directories, as photos have them: a TIFF file's own and those of an EXIF block, which
// is a small TIFF file without pixels.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "codecs/metadata_bytes.h"

namespace skyvault {

/// The tags this program looks at.
namespace tiff_tag {
inline constexpr std::uint16_t kImageWidth = 256, kImageLength = 257, kMake = 271, kModel = 272,
                               kOrientation = 274, kSamplesPerPixel = 277, kSoftware = 305,
                               kExtraSamples = 338, kThumbnailAt = 513, kThumbnailBytes = 514, kXmp = 700,
                               kExif = 34665, kIcc = 34675, kGps = 34853, kDateTaken = 36867,
                               kPixelWidth = 40962, kPixelHeight = 40963, kInterop = 40965;
}  // namespace tiff_tag

namespace tiff_type {
inline constexpr std::uint16_t kByte = 1, kText = 2, kShort = 3, kLong = 4, kUndefined = 7;
}  // namespace tiff_type

struct TiffEntry {
    std::uint16_t tag = 0, type = 0;
    std::uint64_t count = 0;
    std::uint64_t entryAt = 0;  ///< where the entry lies
    std::uint64_t valueAt = 0;  ///< where its value lies: in the entry itself when it is short enough
    std::uint64_t bytes = 0;    ///< of the value; 0 for a type that is unknown
};

struct TiffDirectory {
    std::vector<TiffEntry> entries;
    std::uint64_t endAt = 0;  ///< where the offset of the next one lies
    std::uint64_t next = 0;   ///< 0: none

    const TiffEntry* Find(std::uint16_t tag) const;
};

/// Reads directories of a classic or big TIFF.
class TiffReader {
  public:
    /// source: outlives this.
    explicit TiffReader(const ByteSource& source);

    bool IsTiff() const { return offsetBytes_ != 0; }
    bool IsBigEndian() const { return bigEndian_; }
    bool IsClassic() const { return offsetBytes_ == 4; }
    std::uint64_t FirstDirectory() const { return first_; }

    /// Nothing when the directory does not lie in the file as a whole.
    std::optional<TiffDirectory> Directory(std::uint64_t at) const;

    /// The value's bytes in the file's byte order; empty when they are not in the file.
    std::vector<std::byte> Value(const TiffEntry& entry) const;

    /// The first number of a SHORT or LONG; nothing for other types.
    std::optional<std::uint32_t> Number(const TiffEntry* entry) const;

    /// A number of 2, 4 or 8 bytes.
    bool ReadNumber(std::uint64_t at, std::size_t bytes, std::uint64_t& number) const;

  private:
    const ByteSource& source_;
    bool bigEndian_ = false;
    std::size_t offsetBytes_ = 0, countBytes_ = 0;  ///< 0: no TIFF
    std::uint64_t first_ = 0;
};

/// An entry with its value.
struct TiffValue {
    std::uint16_t tag = 0, type = 0;
    std::uint32_t count = 0;
    std::vector<std::byte> bytes;
};

/// The directories of a photo's EXIF, their pointers to each other left out.
struct ExifTree {
    bool bigEndian = false;  ///< of the values' bytes
    std::vector<TiffValue> main, exif, gps, interop;
};

/// What of the directory at that address describes the photo and not how its pixels are stored. Values that
/// do not lie in the file are left out, and so is what would make it larger than kMostMetadataBytes.
ExifTree ReadExifTree(const TiffReader& reader, std::uint64_t directory);

/// The values in the other byte order.
void SwapByteOrder(ExifTree& tree);

/// The tree's directories and values, to be placed at the address of a classic TIFF file (an even one).
/// mainAt: receives the address of the main directory; the tags of all are sorted.
std::vector<std::byte> WriteExifTree(ExifTree tree, std::uint32_t at, std::uint32_t& mainAt);

}  // namespace skyvault
