#include "image/dds_cube_map.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "image/dds_container.h"
#include "image/picture_files.h"
#include "image/pixel_convert.h"
#include "image/pixel_rows.h"
#include "platform/files.h"
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

/// A picture as an array item of a file: its pixels converted, or as they are where they fit already.
struct StoredItem {
    DdsItem item;
    ByteBuffer pixels;
    DdsTexture compressed;
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

bool StoreItem(const Image& image, const DdsMetadata& metadata, PixelFormat stored, bool keepAlpha,
               StoredItem& result) {
    if (!image.IsValid()) return false;
    const std::size_t rowPitch = std::size_t{BytesPerPixel(stored)} * metadata.width;
    result.item = {image.pixels.get(), metadata.width, metadata.height, rowPitch, rowPitch * metadata.height};
    const bool asItIs = image.format == stored && stored != PixelFormat::Rgba8 && keepAlpha &&
                        image.width == metadata.width && image.height == metadata.height;
    if (asItIs) return true;

    result.pixels = AllocateBytes(result.item.slicePitch);
    if (!result.pixels) return false;
    const bool opaque = !keepAlpha || !HasAlpha(image.format);
    for (std::uint32_t y = 0; y < metadata.height; ++y) {
        StoreRow(image, y, stored, opaque, result.pixels.get() + rowPitch * y, metadata.width);
    }
    result.item.pixels = result.pixels.get();
    return true;
}

/// Writes one picture, or six in the order of the file, in the size and channel type given by `metadata` and
/// `stored`, straight to the path. compress: 8-bit pictures as BC1.
bool WriteTexture(const std::wstring& path, DdsMetadata metadata, PixelFormat stored,
                  std::span<const Image* const> pictures, bool keepAlpha, bool compress) {
    std::array<StoredItem, kFaceOfItem.size()> storedItems;
    std::array<DdsItem, kFaceOfItem.size()> items;
    compress = compress && stored == PixelFormat::Rgba8;
    DdsMetadata single = metadata;
    single.format = WrittenFormat(ChannelType(stored));
    metadata.format = compress ? DdsFormat::Bc1 : single.format;
    metadata.arraySize = static_cast<std::uint32_t>(pictures.size());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        StoredItem& item = storedItems[i];
        if (!StoreItem(*pictures[i], metadata, stored, keepAlpha, item)) return false;
        if (compress) {
            // One after the other, so that only one item is held uncompressed.
            if (!CompressToBc1(single, {&item.item, 1}, item.compressed)) return false;
            item.item = item.compressed.Item(0);
            item.pixels.reset();
        }
        items[i] = item.item;
    }
    return SaveDds(path, metadata, std::span(items).first(pictures.size()));
}

bool WriteCubeMap(const std::wstring& path, const std::array<Image, 6>& faces, bool keepAlpha,
                  bool compress) {
    const Image& front = faces[0];
    if (path.empty() || !front.IsValid()) return false;
    std::array<const Image*, 6> pictures;
    for (std::size_t i = 0; i < pictures.size(); ++i) pictures[i] = &faces[kFaceOfItem[i]];
    DdsMetadata metadata;
    metadata.width = metadata.height = front.width;
    OutputFile file(path);
    return WriteTexture(file.TemporaryPath(), metadata, WithAlpha(front.format), pictures, keepAlpha,
                        compress) &&
           file.Commit();
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

bool LoadDdsCubeMap(const std::wstring& path, std::array<Image, 6>& faces, bool keepAlpha) {
    DdsTexture texture;
    const ReadRule* rule = LoadTexture(path, IsCubeMap, texture);
    if (!rule) return false;
    // The fourth byte counts as alpha here, also where the format says it is none.
    const AlphaUse alpha = keepAlpha ? AlphaUse::Keep : AlphaUse::OverBlack;
    std::array<Image, 6> read;
    for (std::size_t i = 0; i < kFaceOfItem.size(); ++i) {
        const DdsItem item = texture.Item(static_cast<std::uint32_t>(i));
        if (IsReadable(item, *rule) && !ReadItem(item, *rule, alpha, read[kFaceOfItem[i]])) return false;
    }
    for (std::size_t i = 0; i < read.size(); ++i) {
        if (read[i].IsValid()) faces[i] = std::move(read[i]);
    }
    return true;
}

bool SaveDdsCubeMap(const std::wstring& path, const std::array<Image, 6>& faces, bool keepAlpha,
                    bool compress, std::wstring* infoLog) {
    const bool ok = WriteCubeMap(path, faces, keepAlpha, compress);
    if (infoLog) {
        if (ok) {
            *infoLog += CubeMapInfo(path, faces[0].width, faces[0].format);
        } else {
            infoLog->clear();
        }
    }
    return ok;
}

std::wstring CubeMapInfo(const std::wstring& path, std::uint32_t faceSize, PixelFormat format) {
    const std::wstring edge = std::to_wstring(faceSize);
    return L"Path\t\t" + path + L"\n" +                            //
           L"Size\t\t" + FileSizeText(FileSizeOf(path)) + L"\n" +  //
           L"Resolution\t6 x " + edge + L" x " + edge + L"\n" +    //
           L"Projection\tCubemap\n" +                              //
           L"Format\t\t" + FormatName(format) + L"\n";
}

bool ReadDdsPicture(const std::wstring& path, Image& image) {
    DdsTexture texture;
    const ReadRule* rule = LoadTexture(path, IsSinglePicture, texture);
    const DdsItem item = texture.Item(0);
    return rule && IsReadable(item, *rule) &&
           ReadItem(item, *rule, rule->alphaless ? AlphaUse::Ignore : AlphaUse::Keep, image);
}

bool WriteDdsPicture(const Image& image, const std::wstring& path, PixelFormat format) {
    if (path.empty() || !image.IsValid()) return false;
    DdsMetadata metadata;
    metadata.width = image.width;
    metadata.height = image.height;
    const Image* const picture = &image;
    return WriteTexture(path, metadata, WithAlpha(image.format), {&picture, 1}, HasAlpha(format), true);
}

}  // namespace skyvault
