#include "codecs/dds_container_builtin.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <functional>
#include <utility>

#include "codecs/block_decode_builtin.h"
#include "codecs/block_encode_builtin.h"
#include "codecs/dds_header_builtin.h"
#include "codecs/dds_storage_builtin.h"
#include "platform/file_handle.h"
#include "platform/parallel_rows.h"

namespace skyvault {
namespace {

// Below these sizes starting threads takes longer than the work.
constexpr std::uint64_t kParallelPixelsDecoding = 1 << 20;
constexpr std::uint64_t kParallelPixelsEncoding = 1 << 16;

/// Reads exactly n bytes of a file at an offset; false when they are not there.
using ReadAt = std::function<bool(std::uint64_t offset, void* destination, std::size_t n)>;

/// A texture of the format, its pixels uninitialised; null without memory.
std::unique_ptr<DdsTexture::Contents> NewContents(const DdsMetadata& metadata) {
    const std::uint64_t rowPitch = DdsRowPitch(metadata.format, metadata.width);
    const std::uint64_t slicePitch = rowPitch * DdsRowCount(metadata.format, metadata.height);
    auto contents = std::make_unique<DdsTexture::Contents>();
    contents->metadata = metadata;
    contents->rowPitch = static_cast<std::size_t>(rowPitch);
    contents->slicePitch = static_cast<std::size_t>(slicePitch);
    contents->pixels = AllocateBytes(static_cast<std::size_t>(slicePitch * metadata.arraySize));
    if (!contents->pixels) contents.reset();
    return contents;
}

bool LoadItems(const DdsHeader& header, const DdsLayout& layout, const ReadAt& readAt, DdsTexture& texture) {
    std::array<std::byte, kDdsPaletteBytes> palette{};
    if (header.paletteAt != 0 && !readAt(header.paletteAt, palette.data(), palette.size())) return false;
    const DdsMetadata& metadata = header.metadata;
    auto contents = NewContents(metadata);
    if (!contents) return false;

    // Pixels stored otherwise are no larger than what they become; where they are smaller they pass
    // through a row of their own.
    ByteBuffer storedRow;
    if (layout.rowPitch != contents->rowPitch) {
        storedRow = AllocateBytes(static_cast<std::size_t>(layout.rowPitch));
        if (!storedRow) return false;
    }
    for (std::uint32_t item = 0; item < metadata.arraySize; ++item) {
        std::uint64_t from = header.pixelsAt + layout.itemPitch * item;
        std::byte* to = contents->pixels.get() + contents->slicePitch * item;
        if (header.storage == DdsStorage::Plain) {
            if (!readAt(from, to, contents->slicePitch)) return false;
            continue;
        }
        for (std::uint32_t y = 0; y < metadata.height; ++y) {
            std::byte* stored = storedRow ? storedRow.get() : to;
            if (!readAt(from, stored, static_cast<std::size_t>(layout.rowPitch))) return false;
            ExpandDdsRow(header.storage, palette, stored, metadata.width, to);
            from += layout.rowPitch;
            to += contents->rowPitch;
        }
    }
    texture.contents = std::move(contents);
    return true;
}

/// Runs work(item, row of blocks) for all items; on several threads when the pixels are at least as many.
void ForBlockRows(const DdsMetadata& metadata, std::uint64_t parallelFrom,
                  const std::function<void(std::uint32_t item, std::uint32_t row)>& work) {
    const std::uint32_t rows = DdsRowCount(DdsFormat::Bc1, metadata.height);
    const std::uint64_t pixels = std::uint64_t{metadata.width} * metadata.height * metadata.arraySize;
    // Several rows at a time, so that handing out a band costs nothing beside it.
    const std::uint32_t rowsPerBand = std::max(1u, 8192 / std::max(metadata.width, 1u));
    const std::uint32_t bandsPerItem = (rows + rowsPerBand - 1) / rowsPerBand;
    ParallelBands(static_cast<int>(bandsPerItem * metadata.arraySize), pixels >= parallelFrom, [&](int band) {
        const std::uint32_t item = static_cast<std::uint32_t>(band) / bandsPerItem;
        const std::uint32_t first = static_cast<std::uint32_t>(band) % bandsPerItem * rowsPerBand;
        for (std::uint32_t row = first; row < std::min(rows, first + rowsPerBand); ++row) work(item, row);
    });
}

/// A row of blocks to up to four rows of pixels.
void DecodeBlockRow(DdsFormat format, const std::byte* blocks, std::byte* pixels, std::uint32_t width,
                    std::uint32_t rowCount) {
    const std::size_t rowPitch = std::size_t{4} * width;
    const std::size_t blockBytes = static_cast<std::size_t>(DdsRowPitch(format, 1));
    for (std::uint32_t x = 0; x < width; x += 4, blocks += blockBytes) {
        BlockPixels block;
        DecodeBlock(format, blocks, block);
        const std::size_t bytes = 4 * std::min<std::size_t>(4, width - x);
        for (std::uint32_t y = 0; y < rowCount; ++y)
            std::memcpy(pixels + y * rowPitch + std::size_t{4} * x, block.data() + 16 * y, bytes);
    }
}

/// Up to four rows of pixels to a row of blocks. Blocks that stand out over the edge repeat pixels of the
/// picture, the columns (and rows) numbered here. Block: sixteen pixels of the item's format.
template <typename Block>
void EncodeBlockRow(const DdsItem& item, std::uint32_t top, std::byte* blocks, std::size_t blockBytes,
                    void (*encode)(const Block& pixels, std::byte* block)) {
    constexpr std::size_t kPixelBytes = sizeof(Block) / 16;
    constexpr std::uint32_t kRepeated[5][4] = {{}, {0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, 1}, {0, 1, 2, 3}};
    const auto& rows = kRepeated[std::min(4u, item.height - top)];
    for (std::uint32_t x = 0; x < item.width; x += 4, blocks += blockBytes) {
        const auto& columns = kRepeated[std::min(4u, item.width - x)];
        Block block;
        for (std::size_t i = 0; i < 16; ++i) {
            std::memcpy(
                block.data() + 4 * i,
                item.pixels + (top + rows[i / 4]) * item.rowPitch + kPixelBytes * (x + columns[i % 4]),
                kPixelBytes);
        }
        encode(block, blocks);
    }
}

/// What EncodeBlockRow takes for a format of blocks.
void EncodeBlockRow(DdsFormat format, const DdsItem& item, std::uint32_t top, std::byte* blocks) {
    const std::size_t blockBytes = DdsBlockBytes(format);
    if (format == DdsFormat::Bc1) EncodeBlockRow(item, top, blocks, blockBytes, EncodeBc1Block);
    if (format == DdsFormat::Bc3) EncodeBlockRow(item, top, blocks, blockBytes, EncodeBc3Block);
    if (format == DdsFormat::Bc6h) EncodeBlockRow(item, top, blocks, blockBytes, EncodeBc6hBlock);
    if (format == DdsFormat::Bc7) EncodeBlockRow(item, top, blocks, blockBytes, EncodeBc7Block);
}

/// The format that CompressDds makes the blocks of; Unknown where it does not make them.
DdsFormat FormatCompressed(DdsFormat blocks) {
    const bool colours = blocks == DdsFormat::Bc1 || blocks == DdsFormat::Bc3 || blocks == DdsFormat::Bc7;
    if (colours) return DdsFormat::Rgba8Unorm;
    return blocks == DdsFormat::Bc6h ? DdsFormat::Rgba16Float : DdsFormat::Unknown;
}

}  // namespace

DdsTexture::DdsTexture() : contents(std::make_unique<Contents>()) {}
DdsTexture::~DdsTexture() = default;
DdsTexture::DdsTexture(DdsTexture&&) noexcept = default;
DdsTexture& DdsTexture::operator=(DdsTexture&&) noexcept = default;

const DdsMetadata& DdsTexture::Metadata() const {
    assert(contents);
    return contents->metadata;
}

DdsItem DdsTexture::Item(std::uint32_t item) const {
    assert(contents);
    if (!contents->pixels || item >= contents->metadata.arraySize) return {};
    return {contents->pixels.get() + contents->slicePitch * item, contents->metadata.width,
            contents->metadata.height, contents->rowPitch, contents->slicePitch};
}

bool ReadDdsMetadata(const std::wstring& path, DdsMetadata& metadata) {
    FileHandle file;
    if (!file.Open(path, false, true) || file.Size() > kLargestDdsFile) return false;
    std::array<std::byte, kLongestDdsHeader> start{};
    const auto startSize = static_cast<std::size_t>(std::min<std::uint64_t>(file.Size(), start.size()));
    DdsHeader header;
    if (!file.Read(start.data(), startSize) || !ParseDdsHeader({start.data(), startSize}, header))
        return false;
    metadata = header.metadata;
    return true;
}

bool LoadDds(const std::wstring& path, DdsTexture& texture) {
    FileHandle file;
    if (!file.Open(path, false, true)) return false;
    const std::uint64_t fileSize = file.Size();
    if (fileSize > kLargestDdsFile) return false;
    std::array<std::byte, kLongestDdsHeader> start{};
    const auto startSize = static_cast<std::size_t>(std::min<std::uint64_t>(fileSize, start.size()));
    DdsHeader header;
    DdsLayout layout;
    if (!file.Read(start.data(), startSize) || !ParseDdsHeader({start.data(), startSize}, header) ||
        !LayOutDdsFile(header, fileSize, layout))
        return false;
    const ReadAt readAt = [&](std::uint64_t offset, void* destination, std::size_t n) {
        return file.Seek(offset) && file.Read(destination, n);
    };
    return LoadItems(header, layout, readAt, texture);
}

bool ParseDds(std::span<const std::byte> file, DdsTexture& texture) {
    DdsHeader header;
    DdsLayout layout;
    if (!ParseDdsHeader(file.first(std::min(file.size(), kLongestDdsHeader)), header) ||
        !LayOutDdsFile(header, file.size(), layout))
        return false;
    const ReadAt readAt = [&](std::uint64_t offset, void* destination, std::size_t n) {
        if (offset > file.size() || n > file.size() - offset) return false;
        std::memcpy(destination, file.data() + offset, n);
        return true;
    };
    return LoadItems(header, layout, readAt, texture);
}

bool DecompressDds(const DdsTexture& compressed, DdsTexture& result) {
    const DdsFormat format = compressed.Metadata().format;
    if (!IsDecompressed(format) || !compressed.contents->pixels) return false;
    DdsMetadata metadata = compressed.Metadata();
    metadata.format = DdsFormat::Rgba8Unorm;
    metadata.mipLevels = 1;
    auto contents = NewContents(metadata);
    if (!contents) return false;
    ForBlockRows(metadata, kParallelPixelsDecoding, [&](std::uint32_t item, std::uint32_t row) {
        const DdsItem from = compressed.Item(item);
        DecodeBlockRow(
            format, from.pixels + row * from.rowPitch,
            contents->pixels.get() + contents->slicePitch * item + std::size_t{4} * row * contents->rowPitch,
            metadata.width, std::min(4u, metadata.height - 4 * row));
    });
    result.contents = std::move(contents);
    return true;
}

bool CompressDds(DdsFormat format, const DdsMetadata& source, std::span<const DdsItem> items,
                 DdsTexture& result) {
    if (FormatCompressed(format) == DdsFormat::Unknown || source.format != FormatCompressed(format) ||
        source.depth != 1 || items.size() != source.arraySize)
        return false;
    for (const DdsItem& item : items) {
        if (!item.pixels || item.width == 0 || item.width != source.width || item.height == 0 ||
            item.height != source.height)
            return false;
    }
    DdsMetadata metadata = source;
    metadata.format = format;
    metadata.mipLevels = 1;
    auto contents = NewContents(metadata);
    if (!contents) return false;
    ForBlockRows(metadata, kParallelPixelsEncoding, [&](std::uint32_t item, std::uint32_t row) {
        EncodeBlockRow(format, items[item], 4 * row,
                       contents->pixels.get() + contents->slicePitch * item + row * contents->rowPitch);
    });
    result.contents = std::move(contents);
    return true;
}

bool SaveDds(const std::wstring& path, const DdsMetadata& metadata, std::span<const DdsItem> items) {
    if (metadata.width == 0 || metadata.height == 0 || metadata.depth != 1 || items.empty() ||
        items.size() != std::uint64_t{metadata.arraySize} * metadata.mipLevels)
        return false;
    std::array<std::byte, kLongestDdsHeader> header;
    const std::size_t headerSize = MakeDdsHeader(metadata, header);
    if (headerSize == 0) return false;
    const auto rowBytes = [&](const DdsItem& item) {
        return static_cast<std::size_t>(DdsRowPitch(metadata.format, item.width));
    };
    for (std::size_t i = 0; i < items.size(); ++i) {
        const DdsItem& item = items[i];
        const auto level = static_cast<std::uint32_t>(i % metadata.mipLevels);
        if (!item.pixels || item.width != LevelSide(metadata.width, level) ||
            item.height != LevelSide(metadata.height, level) || item.rowPitch < rowBytes(item))
            return false;
    }

    FileHandle file;
    if (!file.Open(path, true, false) || !file.Write(header.data(), headerSize)) return false;
    std::uint64_t size = headerSize;
    for (const DdsItem& item : items) {
        const std::uint32_t rows = DdsRowCount(metadata.format, item.height);
        size += std::uint64_t{rowBytes(item)} * rows;
        if (item.rowPitch == rowBytes(item)) {
            if (!file.Write(item.pixels, item.rowPitch * rows)) return false;
            continue;
        }
        for (std::uint32_t y = 0; y < rows; ++y)
            if (!file.Write(item.pixels + y * item.rowPitch, rowBytes(item))) return false;
    }
    return file.Truncate(size) && file.Close();
}

}  // namespace skyvault
