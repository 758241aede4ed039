#include "codecs/exif_block.h"

#include <algorithm>
#include <optional>

#include "codecs/bytes.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr std::size_t kHeaderSize = 8;

/// Changes a block in place.
class ExifEditor {
  public:
    explicit ExifEditor(std::vector<std::byte>& exif)
        : exif_(exif), bigEndian_(!exif.empty() && exif[0] == std::byte{'M'}) {}

    void Set16(std::uint64_t at, std::uint32_t value) {
        (bigEndian_ ? SetBig16 : SetLittle16)(&exif_[static_cast<std::size_t>(at)], value);
    }
    void Set32(std::uint64_t at, std::uint32_t value) {
        (bigEndian_ ? SetBig32 : SetLittle32)(&exif_[static_cast<std::size_t>(at)], value);
    }

    /// An entry's value becomes that number, a SHORT where it fits and was one.
    void SetNumber(const TiffEntry* entry, std::uint32_t value) {
        if (entry == nullptr) return;
        const bool isShort = entry->type == tiff_type::kShort && value <= 0xffff;
        Set16(entry->entryAt + 2, isShort ? tiff_type::kShort : tiff_type::kLong);
        Set32(entry->entryAt + 4, 1);
        Set32(entry->entryAt + 8, isShort ? 0 : value);
        if (isShort) Set16(entry->entryAt + 8, value);
    }

    /// The text behind the block's end, as a value of the entry at that address.
    void SetText(std::uint64_t entryAt, std::string_view text) {
        if (exif_.size() % 2 != 0) exif_.push_back(std::byte{0});
        Set16(entryAt + 2, tiff_type::kText);
        Set32(entryAt + 4, static_cast<std::uint32_t>(text.size() + 1));
        Set32(entryAt + 8, static_cast<std::uint32_t>(exif_.size()));
        Append(exif_, BytesOfText(text));
        exif_.push_back(std::byte{0});
    }

  private:
    std::vector<std::byte>& exif_;
    const bool bigEndian_;
};

struct Range {
    std::uint64_t first = 0, end = 0;
};

/// Where a directory and its values lie in the block.
void AddRanges(const TiffDirectory& directory, std::vector<Range>& ranges) {
    ranges.push_back({directory.endAt - 12 * directory.entries.size() - 2, directory.endAt + 4});
    for (const TiffEntry& entry : directory.entries) {
        if (entry.bytes > 4) ranges.push_back({entry.valueAt, entry.valueAt + entry.bytes});
    }
}

/// Takes the second directory, which is that of the thumbnail, and the thumbnail out: their bytes become
/// zeros unless something else uses them, and the block ends before them where they are its end.
void DropThumbnail(const TiffReader& reader, const TiffDirectory& main, std::vector<std::byte>& exif) {
    const std::optional<TiffDirectory> second = reader.Directory(main.next);
    std::vector<Range> used{{0, kHeaderSize}}, dead;
    AddRanges(main, used);
    for (const std::uint16_t tag : {tiff_tag::kExif, tiff_tag::kGps}) {
        const std::optional<std::uint32_t> at = reader.Number(main.Find(tag));
        const std::optional<TiffDirectory> directory = at ? reader.Directory(*at) : std::nullopt;
        if (!directory) continue;
        AddRanges(*directory, used);
        const std::optional<std::uint32_t> inner = reader.Number(directory->Find(tiff_tag::kInterop));
        if (const auto interop = inner ? reader.Directory(*inner) : std::nullopt) AddRanges(*interop, used);
    }
    if (second) {
        AddRanges(*second, dead);
        const auto at = reader.Number(second->Find(tiff_tag::kThumbnailAt));
        const auto bytes = reader.Number(second->Find(tiff_tag::kThumbnailBytes));
        if (at && bytes) dead.push_back({*at, std::uint64_t{*at} + *bytes});
    }
    std::vector<bool> keep(exif.size(), true);
    // Every byte once, however often a damaged block names it.
    const auto mark = [&](std::vector<Range>& ranges, bool value) {
        std::ranges::sort(ranges, {}, &Range::first);
        std::uint64_t done = 0;
        for (const Range& range : ranges) {
            const std::uint64_t end = std::min<std::uint64_t>(range.end, exif.size());
            for (done = std::max(done, range.first); done < end; ++done) {
                keep[static_cast<std::size_t>(done)] = value;
            }
        }
    };
    mark(dead, false);
    mark(used, true);
    for (std::size_t i = 0; i < exif.size(); ++i) {
        if (!keep[i]) exif[i] = std::byte{0};
    }
    while (!exif.empty() && !keep[exif.size() - 1]) exif.pop_back();
    ExifEditor edit(exif);
    if (main.endAt + 4 <= exif.size()) edit.Set32(main.endAt, 0);
}

/// Moves the main directory behind the block's end and adds an entry.
void AddEntry(const TiffDirectory& main, std::uint16_t tag, std::string_view text,
              std::vector<std::byte>& exif) {
    if (exif.size() % 2 != 0) exif.push_back(std::byte{0});
    const std::size_t newAt = exif.size(), count = main.entries.size();
    const std::uint64_t entriesAt = main.endAt - 12 * count;
    const auto before = static_cast<std::size_t>(std::count_if(
        main.entries.begin(), main.entries.end(), [&](const TiffEntry& entry) { return entry.tag < tag; }));
    exif.resize(newAt + 2 + 12 * (count + 1) + 4);
    const auto copy = [&](std::size_t first, std::size_t end, std::size_t to) {
        const auto from = exif.begin() + static_cast<std::ptrdiff_t>(entriesAt);
        std::copy(from + static_cast<std::ptrdiff_t>(12 * first),
                  from + static_cast<std::ptrdiff_t>(12 * end),
                  exif.begin() + static_cast<std::ptrdiff_t>(newAt + 2 + 12 * to));
    };
    copy(0, before, 0);
    copy(before, count, before + 1);
    std::fill_n(exif.begin() + static_cast<std::ptrdiff_t>(entriesAt) - 2, 2 + 12 * count + 4, std::byte{0});
    ExifEditor edit(exif);
    edit.Set16(newAt, static_cast<std::uint32_t>(count + 1));
    edit.Set16(newAt + 2 + 12 * before, tag);
    edit.SetText(newAt + 2 + 12 * before, text);
    edit.Set32(4, static_cast<std::uint32_t>(newAt));
}

/// Text up to its first zero, without the spaces around it.
std::wstring TextOf(const TiffReader& reader, const TiffEntry* entry) {
    if (entry == nullptr || entry->type != tiff_type::kText) return {};
    constexpr std::uint64_t kLongest = 256;
    const std::vector<std::byte> value =
        entry->bytes <= kLongest ? reader.Value(*entry) : std::vector<std::byte>();
    std::string_view text = TextOfBytes(value);
    text = text.substr(0, text.find('\0'));
    while (text.ends_with(' ')) text.remove_suffix(1);
    while (text.starts_with(' ')) text.remove_prefix(1);
    return FromUtf8(text);
}

}  // namespace

bool IsSoundExif(std::span<const std::byte> exif) {
    const ByteSource source = SourceOf(exif);
    const TiffReader reader(source);
    if (!reader.IsTiff() || !reader.IsClassic()) return false;
    const std::optional<TiffDirectory> main = reader.Directory(reader.FirstDirectory());
    return main && source.Holds(main->endAt, 4);
}

int OrientationOf(std::span<const std::byte> exif) {
    const ByteSource source = SourceOf(exif);
    const TiffReader reader(source);
    const std::optional<TiffDirectory> main = reader.Directory(reader.FirstDirectory());
    const std::optional<std::uint32_t> told =
        main ? reader.Number(main->Find(tiff_tag::kOrientation)) : std::nullopt;
    return told && *told >= 1 && *told <= 8 ? static_cast<int>(*told) : 1;
}

ExifFacts FactsOfExif(std::span<const std::byte> exif) {
    constexpr std::uint16_t kDateTime = 306, kLatitude = 2, kLongitude = 4;
    const ByteSource source = SourceOf(exif);
    const TiffReader reader(source);
    const std::optional<TiffDirectory> main = reader.Directory(reader.FirstDirectory());
    if (!main) return {};
    const auto follow = [&](std::uint16_t tag) {
        const std::optional<std::uint32_t> at = reader.Number(main->Find(tag));
        return at ? reader.Directory(*at) : std::nullopt;
    };
    ExifFacts facts;
    const std::wstring make = TextOf(reader, main->Find(tiff_tag::kMake));
    facts.camera = TextOf(reader, main->Find(tiff_tag::kModel));
    // Many a model's name begins with its maker's.
    if (!make.empty() && !facts.camera.starts_with(make)) {
        facts.camera = make + (facts.camera.empty() ? L"" : L" ") + facts.camera;
    }
    if (const auto photo = follow(tiff_tag::kExif))
        facts.taken = TextOf(reader, photo->Find(tiff_tag::kDateTaken));
    if (facts.taken.empty()) facts.taken = TextOf(reader, main->Find(kDateTime));
    const auto gps = follow(tiff_tag::kGps);
    facts.position = gps && gps->Find(kLatitude) != nullptr && gps->Find(kLongitude) != nullptr;
    return facts;
}

std::vector<std::byte> CorrectedExif(std::vector<std::byte> exif, const PictureSize& size,
                                     std::string_view software) {
    // Read from a copy: what is changed is not asked again.
    const std::vector<std::byte> before = exif;
    const ByteSource source = SourceOf(before);
    const TiffReader reader(source);
    const std::optional<TiffDirectory> main = reader.Directory(reader.FirstDirectory());
    if (!main) return exif;
    DropThumbnail(reader, *main, exif);
    ExifEditor edit(exif);
    edit.SetNumber(main->Find(tiff_tag::kOrientation), 1);
    edit.SetNumber(main->Find(tiff_tag::kImageWidth), size.width);
    edit.SetNumber(main->Find(tiff_tag::kImageLength), size.height);
    const std::optional<std::uint32_t> at = reader.Number(main->Find(tiff_tag::kExif));
    if (const auto photo = at ? reader.Directory(*at) : std::nullopt) {
        edit.SetNumber(photo->Find(tiff_tag::kPixelWidth), size.width);
        edit.SetNumber(photo->Find(tiff_tag::kPixelHeight), size.height);
    }
    const TiffEntry* const told = main->Find(tiff_tag::kSoftware);
    if (told != nullptr && told->type == tiff_type::kText &&
        told->bytes > std::max<std::size_t>(software.size(), 4) &&
        told->valueAt + told->bytes <= exif.size()) {
        // Where the old name was, so that a block does not grow with every conversion.
        const auto to = exif.begin() + static_cast<std::ptrdiff_t>(told->valueAt);
        std::fill_n(to, told->bytes, std::byte{0});
        std::ranges::copy(BytesOfText(software), to);
        return exif;
    }
    if (told != nullptr) {
        edit.SetText(told->entryAt, software);
    } else {
        AddEntry(*main, tiff_tag::kSoftware, software, exif);
    }
    return exif;
}

std::vector<std::byte> ExifOfTree(ExifTree tree) {
    std::vector<std::byte> exif(kHeaderSize);
    const bool bigEndian = tree.bigEndian;
    exif[0] = exif[1] = static_cast<std::byte>(bigEndian ? 'M' : 'I');
    std::uint32_t mainAt = 0;
    Append(exif, WriteExifTree(std::move(tree), kHeaderSize, mainAt));
    ExifEditor edit(exif);
    edit.Set16(2, 42);
    edit.Set32(4, mainAt);
    return exif;
}

}  // namespace skyvault
