#include "codecs/tiff_directories.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

/// Numbers in the file's byte order.
class NumberReader {
  public:
    NumberReader(const ReadFileAt& readAt, bool bigEndian) : readAt_(readAt), bigEndian_(bigEndian) {}

    /// bytes: 2, 4 or 8. False beyond the end of the file.
    bool Read(std::uint64_t at, std::size_t bytes, std::uint64_t& number) const {
        std::array<std::byte, 8> stored{};
        if (!readAt_(at, stored.data(), bytes)) return false;
        number = 0;
        for (std::size_t i = 0; i < bytes; ++i) {
            number = number << 8 | std::to_integer<std::uint64_t>(stored[bigEndian_ ? i : bytes - 1 - i]);
        }
        return true;
    }

  private:
    const ReadFileAt& readAt_;
    bool bigEndian_;
};

/// The sizes of the parts of a directory.
struct Variant {
    std::size_t countBytes, entryBytes, offsetBytes;
};
constexpr Variant kClassic{2, 12, 4}, kBig{8, 20, 8};

/// A file's byte order and variant; null for what is no TIFF.
const Variant* ReadSignature(const ReadFileAt& readAt, bool& bigEndian) {
    constexpr std::uint64_t kClassicVersion = 42, kBigVersion = 43;
    std::array<std::byte, 2> order{};
    if (!readAt(0, order.data(), order.size()) || order[0] != order[1]) return nullptr;
    bigEndian = order[0] == std::byte{'M'};
    if (!bigEndian && order[0] != std::byte{'I'}) return nullptr;
    std::uint64_t version = 0;
    if (!NumberReader(readAt, bigEndian).Read(2, 2, version)) return nullptr;
    return version == kClassicVersion ? &kClassic : version == kBigVersion ? &kBig : nullptr;
}

/// Where a tag's numbers stand.
struct TagNumbers {
    std::uint64_t at = 0, count = 0;
    std::size_t bytes = 0;
};

/// Of the directory entry at that offset; none for types that are no whole numbers.
TagNumbers FindNumbers(const NumberReader& file, const Variant& variant, std::uint64_t entry) {
    constexpr std::uint64_t kShort = 3, kLong = 4, kLong8 = 16;
    TagNumbers numbers;
    std::uint64_t type = 0;
    if (!file.Read(entry + 2, 2, type) || !file.Read(entry + 4, variant.offsetBytes, numbers.count))
        return {};
    numbers.bytes = type == kShort ? 2 : type == kLong ? 4 : type == kLong8 ? 8 : 0;
    if (numbers.bytes == 0) return {};
    numbers.at = entry + 4 + variant.offsetBytes;
    const bool inside = numbers.count <= variant.offsetBytes / numbers.bytes;
    if (!inside && !file.Read(numbers.at, variant.offsetBytes, numbers.at)) return {};
    return numbers;
}

}  // namespace

std::vector<std::uint64_t> FindTiffDirectories(const ReadFileAt& readAt, bool* loops) {
    constexpr std::uint64_t kMostEntries = 65535;
    bool bigEndian = false;
    const Variant* const variant = ReadSignature(readAt, bigEndian);
    if (!variant) return {};
    const NumberReader file(readAt, bigEndian);
    std::uint64_t at = 0;
    if (!file.Read(variant->offsetBytes, variant->offsetBytes, at)) return {};

    std::vector<std::uint64_t> directories;
    std::unordered_set<std::uint64_t> met;
    while (at != 0 && directories.size() < kMostTiffPages) {
        if (!met.insert(at).second) {
            if (loops != nullptr) *loops = true;
            break;
        }
        std::uint64_t entries = 0, next = 0;
        if (!file.Read(at, variant->countBytes, entries) || entries > kMostEntries) break;
        const std::uint64_t end = at + variant->countBytes + entries * variant->entryBytes;
        // The last directory of some files ends with the file, without the zero that ends the chain.
        std::byte last{};
        if (end < at || !readAt(end - 1, &last, 1)) break;
        directories.push_back(at);
        if (!file.Read(end, variant->offsetBytes, next)) break;
        at = next;
    }
    return directories;
}

bool IsTiffCutShort(const ReadFileAt& readAt, std::uint64_t fileSize) {
    std::uint64_t steps = std::uint64_t{1} << 20;  // in all, lest hostile files take for ever
    constexpr std::uint64_t kStripOffsets = 273, kStripBytes = 279, kTileOffsets = 324, kTileBytes = 325;
    bool bigEndian = false;
    const Variant* const variant = ReadSignature(readAt, bigEndian);
    if (!variant) return false;
    const std::vector<std::uint64_t> directories = FindTiffDirectories(readAt);
    const NumberReader file(readAt, bigEndian);
    for (const std::uint64_t directory : directories) {
        std::uint64_t entries = 0;
        if (!file.Read(directory, variant->countBytes, entries)) return true;
        TagNumbers offsets, sizes;
        std::uint64_t at = directory + variant->countBytes;
        for (; entries > 0 && steps > 0; --entries, --steps, at += variant->entryBytes) {
            std::uint64_t tag = 0;
            if (!file.Read(at, 2, tag)) return true;
            if (tag == kStripOffsets || tag == kTileOffsets) offsets = FindNumbers(file, *variant, at);
            if (tag == kStripBytes || tag == kTileBytes) sizes = FindNumbers(file, *variant, at);
        }
        const std::uint64_t count = std::min({offsets.count, sizes.count, steps});
        steps -= count;
        for (std::uint64_t i = 0; i < count; ++i) {
            std::uint64_t offset = 0, size = 0;
            if (!file.Read(offsets.at + i * offsets.bytes, offsets.bytes, offset) ||
                !file.Read(sizes.at + i * sizes.bytes, sizes.bytes, size) || offset > fileSize ||
                size > fileSize - offset) {
                return true;
            }
        }
    }
    return directories.empty();
}

bool TiffDirectoryHas(const ReadFileAt& readAt, std::uint64_t directory, std::uint32_t tag) {
    bool bigEndian = false;
    const Variant* const variant = ReadSignature(readAt, bigEndian);
    if (!variant) return false;
    const NumberReader file(readAt, bigEndian);
    std::uint64_t entries = 0, found = 0;
    if (!file.Read(directory, variant->countBytes, entries)) return false;
    std::uint64_t at = directory + variant->countBytes;
    for (; entries > 0; --entries, at += variant->entryBytes) {
        if (!file.Read(at, 2, found)) return false;
        if (found == tag) return true;
    }
    return false;
}

}  // namespace skyvault
