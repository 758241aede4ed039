#include "codecs/dds_cube_map.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "codecs/dds_container.h"
#include "codecs/picture_files.h"
#include "image/pixel_rows.h"
#include "platform/files.h"
#include "platform/memory_budget.h"
#include "platform/output_file.h"

namespace skyvault {

namespace {

/// The face (front, right, back, left, top, bottom) that a file's array item holds.
constexpr std::array<std::size_t, 6> kFaceOfItem = {1, 3, 4, 5, 0, 2};

struct ReadRule {
    DdsFormat stored;
    PixelFormat format;
    bool redFirst;   ///< where the picture's format stores blue first
    bool alphaless;  ///< the fourth byte means nothing
};
constexpr std::array kReadRules = {
    ReadRule{DdsFormat::Rgba16Float, PixelFormat::RgbaHalf, false, false},
    ReadRule{DdsFormat::Rgba16Unorm, PixelFormat::Rgba16, false, false},
    ReadRule{DdsFormat::Rgba16Uint, PixelFormat::Rgba16, false, false},
    ReadRule{DdsFormat::Rgba8Unorm, PixelFormat::Rgba8, true, false},
    ReadRule{DdsFormat::Rgba8Uint, PixelFormat::Rgba8, true, false},
    ReadRule{DdsFormat::Bgra8, PixelFormat::Rgba8, false, false},
    ReadRule{DdsFormat::Bgrx8, PixelFormat::Rgba8, false, true},
};

const ReadRule* FindReadRule(DdsFormat stored) {
    const auto rule = std::find_if(kReadRules.begin(), kReadRules.end(),
                                   [&](const ReadRule& row) { return row.stored == stored; });
    return rule != kReadRules.end() ? &*rule : nullptr;
}

enum class AlphaUse { Keep, OverBlack, Ignore };

/// The item is there and has the size of a picture of the format.
bool IsReadable(const DdsItem& item, const ReadRule& rule) {
    return item.pixels &&
           item.slicePitch == std::size_t{BytesPerPixel(rule.format)} * item.width * item.height;
}

/// A readable item's picture; false without memory.
bool ReadItem(const DdsItem& item, const ReadRule& rule, AlphaUse alpha, Image& image) {
    image = Image(item.width, item.height, rule.format);
    if (!image.IsValid()) return false;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::byte* const row = image.Row(y);
        std::memcpy(row, item.pixels + item.rowPitch * y, image.stride);
        if (rule.redFirst) SwapRedAndBlueRow(rule.format, row, image.width);
        if (alpha == AlphaUse::OverBlack) FlattenRow(rule.format, row, image.width, Color8(0, 0, 0, 255));
        if (alpha == AlphaUse::Ignore) MakeRowOpaque(rule.format, row, image.width);
    }
    return true;
}

/// Loads the file when its header fits, decompressed where it must be; the rule for its pixels, or null.
template <typename Fits>
const ReadRule* LoadTexture(const std::wstring& path, Fits fits, DdsTexture& texture) {
    if (!LoadDds(path, texture) || !fits(texture.Metadata())) return nullptr;
    if (IsBlockCompressed(texture.Metadata().format)) {
        DdsTexture decompressed;
        if (!DecompressDds(texture, decompressed)) return nullptr;
        texture = std::move(decompressed);
    }
    return FindReadRule(texture.Metadata().format);
}

bool IsCubeMap(const DdsMetadata& metadata) {
    return metadata.width != 0 && metadata.width == metadata.height && metadata.depth <= 1 &&
           metadata.arraySize == kFaceOfItem.size();
}

bool IsSinglePicture(const DdsMetadata& metadata) {
    return metadata.width != 0 && metadata.height != 0 && metadata.depth <= 1 && metadata.arraySize == 1;
}

DdsFormat WrittenFormat(ChannelKind kind) {
    switch (kind) {
        case ChannelKind::Int8:
            return DdsFormat::Rgba8Unorm;
        case ChannelKind::Int16:
            return DdsFormat::Rgba16Unorm;
        case ChannelKind::Half:
            return DdsFormat::Rgba16Float;
        case ChannelKind::None:
            break;
    }
    return DdsFormat::Unknown;
}

/// How the pictures of a file are stored.
struct WriteRule {
    PixelFormat stored;
    bool keepAlpha;
    bool compress;  ///< BC1; stored is Rgba8 then
};

WriteRule MakeWriteRule(PixelFormat format, bool keepAlpha, bool compress) {
    const PixelFormat stored = WithAlpha(format);
    return {stored, keepAlpha, compress && stored == PixelFormat::Rgba8};
}

/// A picture as an array item of a file: its pixels converted, or the picture itself where it fits already.
struct StoredItem {
    DdsItem item;
    ByteBuffer pixels;
};

/// One row of `count` pixels in the format `stored`, from a picture that goes on around its edges.
void StoreRow(const Image& image, std::uint32_t y, PixelFormat stored, bool opaque, std::byte* row,
              std::uint32_t count) {
    const std::size_t pixelBytes = BytesPerPixel(stored);
    for (std::uint32_t x = 0; x < count; x += std::min(image.width, count - x)) {
        ConvertRow(image.format, image.Row(y % image.height), stored, row + pixelBytes * x,
                   std::min(image.width, count - x));
    }
    if (opaque) MakeRowOpaque(stored, row, count);
    if (stored == PixelFormat::Rgba8) SwapRedAndBlueRow(stored, row, count);
}

void StoreRows(const Image& image, const WriteRule& rule, std::uint32_t firstRow, const DdsItem& size,
               std::byte* pixels) {
    const bool opaque = !rule.keepAlpha || !HasAlpha(image.format);
    for (std::uint32_t y = 0; y < size.height; ++y) {
        StoreRow(image, firstRow + y, rule.stored, opaque, pixels + size.rowPitch * y, size.width);
    }
}

/// Compresses a picture some rows of blocks at a time, so that little of it is held converted.
bool StoreCompressed(const Image& image, const WriteRule& rule, StoredItem& result) {
    constexpr std::uint32_t kBlockEdge = 4, kBlockBytes = 8;
    constexpr std::uint32_t kStripRows = 512;
    DdsItem& item = result.item;
    item.rowPitch = (std::size_t{item.width} + kBlockEdge - 1) / kBlockEdge * kBlockBytes;
    item.slicePitch = item.rowPitch * ((std::size_t{item.height} + kBlockEdge - 1) / kBlockEdge);
    const std::size_t rowPitch = std::size_t{BytesPerPixel(rule.stored)} * item.width;
    const ByteBuffer strip = AllocateBytes(rowPitch * std::min(kStripRows, item.height));
    result.pixels = AllocateBytes(item.slicePitch);
    if (!strip || !result.pixels) return false;
    std::byte* to = result.pixels.get();
    for (std::uint32_t y = 0; y < item.height; y += kStripRows) {
        DdsMetadata metadata;
        metadata.format = WrittenFormat(ChannelKind::Int8);
        metadata.width = item.width;
        metadata.height = std::min(kStripRows, item.height - y);
        const DdsItem rows{strip.get(), metadata.width, metadata.height, rowPitch,
                           rowPitch * metadata.height};
        StoreRows(image, rule, y, rows, strip.get());
        DdsTexture compressed;
        if (!CompressToBc1(metadata, {&rows, 1}, compressed)) return false;
        const DdsItem blocks = compressed.Item(0);
        std::memcpy(to, blocks.pixels, blocks.slicePitch);
        to += blocks.slicePitch;
    }
    item.pixels = result.pixels.get();
    return true;
}

/// The picture as an item of the file's size; it must outlive the item, which may be its own pixels.
bool StoreItem(const Image& image, const WriteRule& rule, std::uint32_t width, std::uint32_t height,
               StoredItem& result) {
    if (!image.IsValid()) return false;
    result.item.width = width;
    result.item.height = height;
    if (rule.compress) return StoreCompressed(image, rule, result);
    DdsItem& item = result.item;
    item.rowPitch = std::size_t{BytesPerPixel(rule.stored)} * width;
    item.slicePitch = item.rowPitch * height;
    const bool asItIs = image.format == rule.stored && rule.stored != PixelFormat::Rgba8 && rule.keepAlpha &&
                        image.width == width && image.height == height;
    if (!asItIs) {
        result.pixels = AllocateBytes(item.slicePitch);
        if (!result.pixels) return false;
        StoreRows(image, rule, 0, item, result.pixels.get());
    }
    item.pixels = asItIs ? image.pixels.get() : result.pixels.get();
    return true;
}

/// Writes the items, all of one size, straight to the path.
bool WriteItems(const std::wstring& path, const WriteRule& rule, std::span<const StoredItem> stored) {
    std::array<DdsItem, kFaceOfItem.size()> items;
    for (std::size_t i = 0; i < stored.size(); ++i) items[i] = stored[i].item;
    DdsMetadata metadata;
    metadata.width = items[0].width;
    metadata.height = items[0].height;
    metadata.arraySize = static_cast<std::uint32_t>(stored.size());
    metadata.format = rule.compress ? DdsFormat::Bc1 : WrittenFormat(ChannelType(rule.stored));
    return SaveDds(path, metadata, std::span(items).first(stored.size()));
}

/// What a readable file of the metadata becomes; its memory is that of the file's items, decompressed where
/// they must be, and of the pictures.
bool FactsOf(const DdsMetadata& metadata, PictureFacts& facts) {
    const bool compressed = IsBlockCompressed(metadata.format);
    const ReadRule* const rule = FindReadRule(compressed ? DdsFormat::Rgba8Unorm : metadata.format);
    if (!rule || metadata.width == 0 || metadata.height == 0) return false;
    facts.size = {metadata.width, metadata.height};
    facts.format = rule->format;
    facts.frameCount = 1;
    const std::uint64_t pixels = std::uint64_t{metadata.width} * metadata.height * metadata.arraySize;
    facts.memory = pixels * (2 * BytesPerPixel(rule->format) + (compressed ? 1 : 0));
    return true;
}

}  // namespace

DdsKind GetDdsKind(const std::wstring& path) {
    DdsMetadata metadata;
    if (!ReadDdsMetadata(path, metadata) || metadata.width == 0 || metadata.height == 0) {
        return DdsKind::Unusable;
    }
    if (metadata.arraySize == 1) return metadata.depth < 2 ? DdsKind::Picture : DdsKind::Volume;
    const bool cubeMap = metadata.arraySize == kFaceOfItem.size() && metadata.width == metadata.height;
    return cubeMap ? DdsKind::CubeMap : DdsKind::Unusable;
}

Outcome LoadDdsCubeMap(const std::wstring& path, std::array<Image, 6>& faces, bool keepAlpha) {
    PictureFacts facts;
    if (!InspectDds(path, facts)) return Failure(Reason::CannotOpen, path);
    Outcome within = WithinMemoryBudget(path, facts.memory);
    if (!within.IsDone()) return within;
    DdsTexture texture;
    const ReadRule* rule = LoadTexture(path, IsCubeMap, texture);
    if (!rule) return Failure(Reason::CannotOpen, path);
    // The fourth byte counts as alpha here, also where the format says it is none.
    const AlphaUse alpha = keepAlpha ? AlphaUse::Keep : AlphaUse::OverBlack;
    std::array<Image, 6> read;
    for (std::size_t i = 0; i < kFaceOfItem.size(); ++i) {
        const DdsItem item = texture.Item(static_cast<std::uint32_t>(i));
        if (IsReadable(item, *rule) && !ReadItem(item, *rule, alpha, read[kFaceOfItem[i]])) {
            return Failure(Reason::CannotOpen, path);
        }
    }
    for (std::size_t i = 0; i < read.size(); ++i) {
        if (read[i].IsValid()) faces[i] = std::move(read[i]);
    }
    return {};
}

Outcome SaveDdsCubeMap(const std::wstring& path, const FaceSource& faces, bool keepAlpha, bool compress) {
    if (path.empty()) return Failure(Reason::CannotWrite);
    std::uint32_t faceSize = 0;
    PixelFormat format = PixelFormat::None;
    WriteRule rule{};
    std::array<StoredItem, kFaceOfItem.size()> items;
    for (std::size_t f = 0; f < items.size(); ++f) {
        Image face;
        Outcome given = faces(f, face);
        if (!given.IsDone()) return given;
        if (!face.IsValid()) return Failure(Reason::CannotWrite, path);
        if (f == 0) {
            faceSize = face.width;
            format = face.format;
            rule = MakeWriteRule(format, keepAlpha, compress);
        }
        const auto place = std::find(kFaceOfItem.begin(), kFaceOfItem.end(), f) - kFaceOfItem.begin();
        StoredItem& item = items[static_cast<std::size_t>(place)];
        if (!StoreItem(face, rule, faceSize, faceSize, item)) return Failure(Reason::CannotWrite, path);
        if (!item.pixels) item.pixels = std::move(face.pixels);
    }
    OutputFile file(path);
    if (!WriteItems(file.TemporaryPath(), rule, items) || !file.Commit()) return file.Failed();
    return {.infoLog = CubeMapInfo(path, faceSize, format)};
}

bool InspectDds(const std::wstring& path, PictureFacts& facts) {
    DdsMetadata metadata;
    return ReadDdsMetadata(path, metadata) && FactsOf(metadata, facts);
}

bool ReadDdsPicture(const std::wstring& path, Image& image) {
    DdsTexture texture;
    const ReadRule* rule = LoadTexture(path, IsSinglePicture, texture);
    const DdsItem item = texture.Item(0);
    return rule && IsReadable(item, *rule) &&
           ReadItem(item, *rule, rule->alphaless ? AlphaUse::Ignore : AlphaUse::Keep, image);
}

bool WriteDdsPicture(const Image& image, const std::wstring& path, PixelFormat format) {
    if (path.empty()) return false;
    const WriteRule rule = MakeWriteRule(image.format, HasAlpha(format), true);
    StoredItem item;
    return StoreItem(image, rule, image.width, image.height, item) && WriteItems(path, rule, {&item, 1});
}

}  // namespace skyvault
