#include "codecs/dds_cube_map.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "codecs/dds_container.h"
#include "codecs/dds_items.h"
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
    if (IsDecompressed(texture.Metadata().format)) {
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

/// What a readable file of the metadata becomes; its memory is that of the file's items, decompressed where
/// they must be, and of the pictures.
bool FactsOf(const DdsMetadata& metadata, PictureFacts& facts) {
    const bool compressed = IsDecompressed(metadata.format);
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

Outcome SaveDdsCubeMap(const std::wstring& path, const FaceSource& faces, const CubeMapWriting& writing) {
    if (path.empty()) return Failure(Reason::CannotWrite);
    std::uint32_t faceSize = 0, levels = 1;
    PixelFormat format = PixelFormat::None;
    DdsWriteRule rule{};
    std::vector<DdsStoredItem> items(kFaceOfItem.size());
    for (std::uint32_t level = 0; level < levels; ++level) {
        for (std::size_t f = 0; f < kFaceOfItem.size(); ++f) {
            Image face;
            Outcome given = faces(level, f, face);
            if (!given.IsDone()) return given;
            if (!face.IsValid()) return Failure(Reason::CannotWrite, path);
            if (level == 0 && f == 0) {
                faceSize = face.width;
                rule = writing.encoding == DdsFormat::Unknown
                           ? MakeDdsWriteRule(face.format, writing.keepAlpha, writing.compress)
                           : DdsWriteRuleOf(writing.encoding, writing.keepAlpha);
                format = writing.encoding == DdsFormat::Unknown ? face.format : rule.stored;
                if (writing.mips) levels = static_cast<std::uint32_t>(std::bit_width(faceSize));
                items.resize(kFaceOfItem.size() * levels);
            }
            const auto place = std::find(kFaceOfItem.begin(), kFaceOfItem.end(), f) - kFaceOfItem.begin();
            DdsStoredItem& item = items[static_cast<std::size_t>(place) * levels + level];
            const std::uint32_t side = LevelSide(faceSize, level);
            if (!StoreDdsItem(face, rule, side, side, item)) return Failure(Reason::CannotWrite, path);
            if (!item.pixels) item.pixels = std::move(face.pixels);
        }
    }
    OutputFile file(path);
    const bool written = WriteDdsItems(file.TemporaryPath(), rule, levels, items);
    if (!written || !file.Commit()) return file.Failed();
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
    const DdsWriteRule rule = MakeDdsWriteRule(image.format, HasAlpha(format), true);
    DdsStoredItem item;
    return StoreDdsItem(image, rule, image.width, image.height, item) &&
           WriteDdsItems(path, rule, 1, {&item, 1});
}

}  // namespace skyvault
