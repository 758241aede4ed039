#include "codecs/tiff_metadata.h"

#include <algorithm>

#include "codecs/bytes.h"
#include "codecs/exif_block.h"
#include "codecs/tiff_entries.h"

namespace skyvault {
namespace {

/// Everything of the first directory, as it is.
std::vector<TiffValue> WholeDirectory(const TiffReader& reader, const TiffDirectory& directory) {
    std::vector<TiffValue> values;
    for (const TiffEntry& entry : directory.entries) {
        std::vector<std::byte> bytes = reader.Value(entry);
        if (bytes.empty()) continue;
        values.push_back({entry.tag, entry.type, static_cast<std::uint32_t>(entry.count), std::move(bytes)});
    }
    return values;
}

void RemoveTag(std::vector<TiffValue>& values, std::uint16_t tag) {
    std::erase_if(values, [&](const TiffValue& value) { return value.tag == tag; });
}

void AddBlob(std::vector<TiffValue>& values, std::uint16_t tag, std::uint16_t type,
             std::span<const std::byte> bytes) {
    if (bytes.empty()) return;
    values.push_back({tag, type, static_cast<std::uint32_t>(bytes.size()), {bytes.begin(), bytes.end()}});
}

/// The directory with what the metadata says in place of what the encoder did.
ExifTree NewDirectory(const ByteSource& file, const PhotoMetadata& metadata) {
    const TiffReader reader(file);
    const ByteSource block = SourceOf(metadata.exif);
    const TiffReader exif(block);
    ExifTree tree = ReadExifTree(exif, exif.FirstDirectory());
    if (tree.bigEndian != reader.IsBigEndian()) SwapByteOrder(tree);
    std::vector<TiffValue> values;
    if (const auto directory = reader.Directory(reader.FirstDirectory())) {
        values = WholeDirectory(reader, *directory);
    }
    for (const std::uint16_t tag : {tiff_tag::kXmp, tiff_tag::kExif, tiff_tag::kIcc, tiff_tag::kGps}) {
        RemoveTag(values, tag);
    }
    for (TiffValue& told : tree.main) {
        RemoveTag(values, told.tag);
        values.push_back(std::move(told));
    }
    AddBlob(values, tiff_tag::kXmp, tiff_type::kByte, BytesOfText(metadata.xmp));
    AddBlob(values, tiff_tag::kIcc, tiff_type::kUndefined, metadata.icc);
    tree.main = std::move(values);
    return tree;
}

}  // namespace

bool IsTiffStart(const ByteSource& file) {
    return TiffReader(file).IsTiff();
}

void ReadTiffMetadata(const ByteSource& file, PhotoMetadata& metadata) {
    const TiffReader reader(file);
    const std::optional<TiffDirectory> directory = reader.Directory(reader.FirstDirectory());
    if (!directory) return;
    const auto blob = [&](std::uint16_t tag) {
        const TiffEntry* const entry = directory->Find(tag);
        return entry != nullptr ? reader.Value(*entry) : std::vector<std::byte>();
    };
    metadata.icc = blob(tiff_tag::kIcc);
    metadata.xmp = TextOfBytes(blob(tiff_tag::kXmp));
    ExifTree tree = ReadExifTree(reader, reader.FirstDirectory());
    // Every TIFF file has a resolution and an orientation: they alone describe no photo.
    const auto storage = [](const TiffValue& value) {
        constexpr std::uint16_t kResolutionX = 282, kResolutionY = 283, kResolutionUnit = 296;
        return value.tag == tiff_tag::kOrientation || value.tag == kResolutionX ||
               value.tag == kResolutionY || value.tag == kResolutionUnit;
    };
    const bool describes =
        !tree.exif.empty() || !tree.gps.empty() || !std::all_of(tree.main.begin(), tree.main.end(), storage);
    if (describes) metadata.exif = ExifOfTree(std::move(tree));
}

int OrientationOfTiff(const ByteSource& file, std::uint32_t page) {
    const std::vector<std::uint64_t> pages = FindTiffDirectories(file.readAt);
    if (page >= pages.size()) return 1;
    const TiffReader reader(file);
    const std::optional<TiffDirectory> directory = reader.Directory(pages[page]);
    if (!directory) return 1;
    const auto told = reader.Number(directory->Find(tiff_tag::kOrientation));
    return told && *told >= 1 && *told <= 8 ? static_cast<int>(*told) : 1;
}

int ChannelsOfTiff(const ByteSource& file) {
    const TiffReader reader(file);
    const std::optional<TiffDirectory> directory = reader.Directory(reader.FirstDirectory());
    if (!directory) return 0;
    const auto samples = reader.Number(directory->Find(tiff_tag::kSamplesPerPixel));
    const TiffEntry* const extra = directory->Find(tiff_tag::kExtraSamples);
    const std::uint64_t extras = extra != nullptr ? extra->count : 0;
    const std::uint64_t all = samples.value_or(1);
    return all > extras && all - extras <= 4 ? static_cast<int>(all - extras) : 0;
}

bool TakesTiffMetadata(const ByteSource& file, const PhotoMetadata& metadata) {
    constexpr std::uint64_t kRoom = std::uint64_t{1} << 20;  // for the directories' tables
    const TiffReader reader(file);
    const std::uint64_t more = metadata.icc.size() + metadata.exif.size() + metadata.xmp.size() + kRoom;
    return reader.IsClassic() && file.size + more <= 0xffffffff &&
           reader.Directory(reader.FirstDirectory()).has_value();
}

bool WriteTiffMetadata(const ByteSource& file, const PhotoMetadata& metadata, const ByteSink& sink) {
    constexpr std::uint64_t kOffsetAt = 4, kHeaderSize = 8;
    const std::uint64_t at = file.size + file.size % 2;
    const bool bigEndian = TiffReader(file).IsBigEndian();
    std::uint32_t directoryAt = 0;
    const std::vector<std::byte> ours =
        WriteExifTree(NewDirectory(file, metadata), static_cast<std::uint32_t>(at), directoryAt);
    std::byte offset[4];
    (bigEndian ? SetBig32 : SetLittle32)(offset, directoryAt);
    const std::byte filler{};
    return CopyBytes(file, 0, kOffsetAt, sink) && sink(offset, sizeof offset) &&
           CopyBytes(file, kHeaderSize, file.size, sink) && sink(&filler, at - file.size) &&
           sink(ours.data(), ours.size());
}

}  // namespace skyvault
