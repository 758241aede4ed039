#include "codecs/tiff_entries.h"

#include <algorithm>
#include <array>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

/// 0 for unknown types.
std::size_t SizeOfType(std::uint16_t type) {
    constexpr std::uint8_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type < sizeof kSizes ? kSizes[type] : 0;
}

/// What is turned around when the byte order changes.
std::size_t SizeOfNumber(std::uint16_t type) {
    constexpr std::uint16_t kRational = 5, kSignedRational = 10;
    return type == kRational || type == kSignedRational ? 4 : SizeOfType(type);
}

bool DescribesPhoto(std::uint16_t tag) {
    constexpr std::uint16_t kTags[] = {269,   270,   271,   272,   274,   282,   283,  285,
                                       296,   305,   306,   315,   316,   318,   319,  18246,
                                       18249, 33432, 40091, 40092, 40093, 40094, 40095};
    return std::find(std::begin(kTags), std::end(kTags), tag) != std::end(kTags);
}

bool IsPointer(std::uint16_t tag) {
    return tag == tiff_tag::kExif || tag == tiff_tag::kGps || tag == tiff_tag::kInterop;
}

class TreeReader {
  public:
    explicit TreeReader(const TiffReader& reader) : reader_(reader) {}

    void Take(const TiffDirectory& directory, bool all, std::vector<TiffValue>& values) {
        for (const TiffEntry& entry : directory.entries) {
            const bool wanted = all ? !IsPointer(entry.tag) : DescribesPhoto(entry.tag);
            if (!wanted || entry.bytes == 0 || entry.bytes > left_) continue;
            std::vector<std::byte> bytes = reader_.Value(entry);
            if (bytes.empty()) continue;
            left_ -= bytes.size();
            values.push_back(
                {entry.tag, entry.type, static_cast<std::uint32_t>(entry.count), std::move(bytes)});
        }
    }

    /// The directory that an entry points to.
    std::optional<TiffDirectory> Follow(const TiffDirectory& from, std::uint16_t tag) const {
        const std::optional<std::uint32_t> at = reader_.Number(from.Find(tag));
        return at ? reader_.Directory(*at) : std::nullopt;
    }

  private:
    const TiffReader& reader_;
    std::uint64_t left_ = kMostMetadataBytes;
};

/// A user's comment says in its first eight bytes how its text is stored: here in 16 bits, in the byte order
/// of the file.
bool IsWideComment(const TiffValue& value) {
    constexpr std::uint16_t kUserComment = 37510;
    return value.tag == kUserComment && TextOfBytes(value.bytes).starts_with("UNICODE");
}

void SwapValues(std::vector<TiffValue>& values) {
    for (TiffValue& value : values) {
        const bool wide = IsWideComment(value);
        const std::size_t size = wide ? 2 : std::max<std::size_t>(SizeOfNumber(value.type), 1);
        for (std::size_t i = wide ? 8 : 0; i + size <= value.bytes.size(); i += size) {
            const auto from = value.bytes.begin() + static_cast<std::ptrdiff_t>(i);
            std::reverse(from, from + static_cast<std::ptrdiff_t>(size));
        }
    }
}

class TreeWriter {
  public:
    TreeWriter(std::uint32_t at, bool bigEndian) : at_(at), bigEndian_(bigEndian) {}

    /// Writes the values and then the directory; its address.
    std::uint32_t Directory(std::vector<TiffValue> values) {
        std::stable_sort(values.begin(), values.end(),
                         [](const TiffValue& a, const TiffValue& b) { return a.tag < b.tag; });
        std::vector<std::byte> table;
        Put16(table, static_cast<std::uint32_t>(values.size()));
        for (TiffValue& value : values) {
            Put16(table, value.tag);
            Put16(table, value.type);
            Put32(table, value.count);
            if (value.bytes.size() > 4) {
                Put32(table, Here());
                Append(out_, value.bytes);
                if (out_.size() % 2 != 0) out_.push_back(std::byte{0});
            } else {
                value.bytes.resize(4);
                Append(table, value.bytes);
            }
        }
        Put32(table, 0);
        const std::uint32_t directory = Here();
        Append(out_, table);
        return directory;
    }

    /// An entry that points to a directory of these values, unless there are none.
    void Link(std::uint16_t tag, std::vector<TiffValue> values, std::vector<TiffValue>& from) {
        if (values.empty()) return;
        TiffValue pointer{tag, tiff_type::kLong, 1, {}};
        Put32(pointer.bytes, Directory(std::move(values)));
        from.push_back(std::move(pointer));
    }

    std::vector<std::byte> out_;

  private:
    std::uint32_t Here() const { return at_ + static_cast<std::uint32_t>(out_.size()); }
    void Put16(std::vector<std::byte>& to, std::uint32_t value) const {
        to.resize(to.size() + 2);
        (bigEndian_ ? SetBig16 : SetLittle16)(&to[to.size() - 2], value);
    }
    void Put32(std::vector<std::byte>& to, std::uint32_t value) const {
        to.resize(to.size() + 4);
        (bigEndian_ ? SetBig32 : SetLittle32)(&to[to.size() - 4], value);
    }

    const std::uint32_t at_;
    const bool bigEndian_;
};

}  // namespace

const TiffEntry* TiffDirectory::Find(std::uint16_t tag) const {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const TiffEntry& entry) { return entry.tag == tag; });
    return found == entries.end() ? nullptr : &*found;
}

TiffReader::TiffReader(const ByteSource& source) : source_(source) {
    std::array<std::byte, 2> order{};
    std::uint64_t version = 0;
    if (!source.Read(0, order.data(), order.size()) || order[0] != order[1]) return;
    bigEndian_ = order[0] == std::byte{'M'};
    if ((!bigEndian_ && order[0] != std::byte{'I'}) || !ReadNumber(2, 2, version)) return;
    const bool big = version == 43;
    if ((!big && version != 42) || !ReadNumber(big ? 8 : 4, big ? 8 : 4, first_)) return;
    offsetBytes_ = big ? 8 : 4;
    countBytes_ = big ? 8 : 2;
}

bool TiffReader::ReadNumber(std::uint64_t at, std::size_t bytes, std::uint64_t& number) const {
    std::array<std::byte, 8> stored{};
    if (!source_.Read(at, stored.data(), bytes)) return false;
    number = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        number = number << 8 | std::to_integer<std::uint64_t>(stored[bigEndian_ ? i : bytes - 1 - i]);
    }
    return true;
}

std::optional<TiffDirectory> TiffReader::Directory(std::uint64_t at) const {
    constexpr std::uint64_t kMostEntries = 4096;
    std::uint64_t count = 0;
    if (!IsTiff() || at < 8 || !ReadNumber(at, countBytes_, count) || count > kMostEntries) return {};
    const std::size_t entryBytes = 4 + 2 * offsetBytes_;
    TiffDirectory directory;
    directory.endAt = at + countBytes_ + count * entryBytes;
    if (!source_.Holds(at, directory.endAt - at)) return {};
    for (std::uint64_t i = 0; i < count; ++i) {
        TiffEntry entry;
        entry.entryAt = at + countBytes_ + i * entryBytes;
        std::uint64_t tag = 0, type = 0;
        if (!ReadNumber(entry.entryAt, 2, tag) || !ReadNumber(entry.entryAt + 2, 2, type) ||
            !ReadNumber(entry.entryAt + 4, offsetBytes_, entry.count)) {
            return {};
        }
        entry.tag = static_cast<std::uint16_t>(tag);
        entry.type = static_cast<std::uint16_t>(type);
        entry.valueAt = entry.entryAt + 4 + offsetBytes_;
        if (entry.count <= source_.size) entry.bytes = entry.count * SizeOfType(entry.type);
        if (entry.bytes > offsetBytes_ && !ReadNumber(entry.valueAt, offsetBytes_, entry.valueAt)) return {};
        directory.entries.push_back(entry);
    }
    // The last directory of some files ends with the file.
    if (!ReadNumber(directory.endAt, offsetBytes_, directory.next)) directory.next = 0;
    return directory;
}

std::vector<std::byte> TiffReader::Value(const TiffEntry& entry) const {
    return entry.bytes > 0 ? source_.Piece(entry.valueAt, entry.bytes) : std::vector<std::byte>();
}

std::optional<std::uint32_t> TiffReader::Number(const TiffEntry* entry) const {
    constexpr std::uint16_t kDirectory = 13, kLong8 = 16, kDirectory8 = 18;  // the latter of big files
    if (entry == nullptr || entry->count == 0) return {};
    const std::size_t bytes = SizeOfType(entry->type);
    std::uint64_t number = 0;
    const bool known = entry->type == tiff_type::kShort || entry->type == tiff_type::kLong ||
                       entry->type == kDirectory || entry->type == kLong8 || entry->type == kDirectory8;
    if (!known || !ReadNumber(entry->valueAt, bytes, number) || number > 0xffffffff) return {};
    return static_cast<std::uint32_t>(number);
}

ExifTree ReadExifTree(const TiffReader& reader, std::uint64_t at) {
    ExifTree tree;
    tree.bigEndian = reader.IsBigEndian();
    const std::optional<TiffDirectory> main = reader.Directory(at);
    if (!main) return tree;
    TreeReader take(reader);
    take.Take(*main, false, tree.main);
    if (const auto gps = take.Follow(*main, tiff_tag::kGps)) take.Take(*gps, true, tree.gps);
    if (const auto exif = take.Follow(*main, tiff_tag::kExif)) {
        if (const auto interop = take.Follow(*exif, tiff_tag::kInterop))
            take.Take(*interop, true, tree.interop);
        take.Take(*exif, true, tree.exif);
    }
    return tree;
}

void SwapByteOrder(ExifTree& tree) {
    tree.bigEndian = !tree.bigEndian;
    for (auto* values : {&tree.main, &tree.exif, &tree.gps, &tree.interop}) SwapValues(*values);
}

std::vector<std::byte> WriteExifTree(ExifTree tree, std::uint32_t at, std::uint32_t& mainAt) {
    TreeWriter writer(at, tree.bigEndian);
    writer.Link(tiff_tag::kInterop, std::move(tree.interop), tree.exif);
    writer.Link(tiff_tag::kExif, std::move(tree.exif), tree.main);
    writer.Link(tiff_tag::kGps, std::move(tree.gps), tree.main);
    mainAt = writer.Directory(std::move(tree.main));
    return std::move(writer.out_);
}

}  // namespace skyvault
