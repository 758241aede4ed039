#include "codecs/dds_items.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "image/pixel_rows.h"

namespace skyvault {
namespace {

/// The uncompressed format of a channel type.
DdsFormat PlainFormat(ChannelKind kind) {
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

void StoreRows(const Image& image, const DdsWriteRule& rule, std::uint32_t firstRow, const DdsItem& size,
               std::byte* pixels) {
    const bool opaque = !rule.keepAlpha || !HasAlpha(image.format);
    for (std::uint32_t y = 0; y < size.height; ++y) {
        StoreRow(image, firstRow + y, rule.stored, opaque, pixels + size.rowPitch * y, size.width);
    }
}

/// Compresses a picture some rows of blocks at a time, so that little of it is held converted.
bool StoreCompressed(const Image& image, const DdsWriteRule& rule, DdsStoredItem& result) {
    constexpr std::uint32_t kBlockEdge = 4;
    constexpr std::uint32_t kStripRows = 512;
    DdsItem& item = result.item;
    item.rowPitch = (std::size_t{item.width} + kBlockEdge - 1) / kBlockEdge * DdsBlockBytes(rule.written);
    item.slicePitch = item.rowPitch * ((std::size_t{item.height} + kBlockEdge - 1) / kBlockEdge);
    const std::size_t rowPitch = std::size_t{BytesPerPixel(rule.stored)} * item.width;
    const ByteBuffer strip = AllocateBytes(rowPitch * std::min(kStripRows, item.height));
    result.pixels = AllocateBytes(item.slicePitch);
    if (!strip || !result.pixels) return false;
    std::byte* to = result.pixels.get();
    for (std::uint32_t y = 0; y < item.height; y += kStripRows) {
        DdsMetadata metadata;
        metadata.format = PlainFormat(ChannelType(rule.stored));
        metadata.width = item.width;
        metadata.height = std::min(kStripRows, item.height - y);
        const DdsItem rows{strip.get(), metadata.width, metadata.height, rowPitch,
                           rowPitch * metadata.height};
        StoreRows(image, rule, y, rows, strip.get());
        DdsTexture compressed;
        if (!CompressDds(rule.written, metadata, {&rows, 1}, compressed)) return false;
        const DdsItem blocks = compressed.Item(0);
        std::memcpy(to, blocks.pixels, blocks.slicePitch);
        to += blocks.slicePitch;
    }
    item.pixels = result.pixels.get();
    return true;
}

}  // namespace

DdsWriteRule MakeDdsWriteRule(PixelFormat format, bool keepAlpha, bool compress) {
    const PixelFormat stored = WithAlpha(format);
    const bool blocks = compress && stored == PixelFormat::Rgba8;
    return {blocks ? DdsFormat::Bc1 : PlainFormat(ChannelType(stored)), stored, keepAlpha};
}

DdsWriteRule DdsWriteRuleOf(DdsFormat written, bool keepAlpha) {
    switch (written) {
        case DdsFormat::Rgba16Unorm:
            return {written, PixelFormat::Rgba16, keepAlpha};
        case DdsFormat::Rgba16Float:
        case DdsFormat::Bc6h:
            return {written, PixelFormat::RgbaHalf, keepAlpha};
        default:
            return {written, PixelFormat::Rgba8, keepAlpha};
    }
}

bool StoreDdsItem(const Image& image, const DdsWriteRule& rule, std::uint32_t width, std::uint32_t height,
                  DdsStoredItem& result) {
    if (!image.IsValid()) return false;
    result.item.width = width;
    result.item.height = height;
    if (IsBlockCompressed(rule.written)) return StoreCompressed(image, rule, result);
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

bool WriteDdsItems(const std::wstring& path, const DdsWriteRule& rule, std::uint32_t levels,
                   std::span<const DdsStoredItem> stored) {
    std::vector<DdsItem> items;
    for (const DdsStoredItem& one : stored) items.push_back(one.item);
    DdsMetadata metadata;
    metadata.width = items.front().width;
    metadata.height = items.front().height;
    metadata.arraySize = static_cast<std::uint32_t>(stored.size() / levels);
    metadata.mipLevels = levels;
    metadata.format = rule.written;
    return SaveDds(path, metadata, items);
}

}  // namespace skyvault
