#include <DirectXTex.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

#include "codecs/dds_container.h"
#include "platform/file_handle.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/parallel_rows.h"

namespace skyvault {

struct DdsTexture::Contents {
    DirectX::ScratchImage image;
    DdsMetadata metadata;
};

namespace {

using DirectX::DDS_FLAGS_NONE;
using DirectX::Image;
using DirectX::ScratchImage;
using DirectX::TexMetadata;

// The library's own file functions where they can take any path. Elsewhere they go through the locale, which
// ends the program for a name it cannot express, and do not notice a full disk.
#ifdef _WIN32

bool ReadMetadata(const std::wstring& path, TexMetadata& metadata) {
    return SUCCEEDED(DirectX::GetMetadataFromDDSFile(path.c_str(), DDS_FLAGS_NONE, metadata));
}

bool ReadTexture(const std::wstring& path, ScratchImage& image) {
    return SUCCEEDED(DirectX::LoadFromDDSFile(path.c_str(), DDS_FLAGS_NONE, nullptr, image));
}

bool WriteTexture(const std::wstring& path, const TexMetadata& metadata, const std::vector<Image>& images) {
    return SUCCEEDED(
        DirectX::SaveToDDSFile(images.data(), images.size(), metadata, DDS_FLAGS_NONE, path.c_str()));
}

#else

constexpr std::size_t kLargestHeader = 148;  // magic number, header, DX10 extension

bool ReadMetadata(const std::wstring& path, TexMetadata& metadata) {
    FileHandle file;
    if (!file.Open(path, false, true)) return false;
    const std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(file.Size(), kLargestHeader));
    std::byte header[kLargestHeader];
    return file.Read(header, size) &&
           SUCCEEDED(DirectX::GetMetadataFromDDSMemory(header, size, DDS_FLAGS_NONE, metadata));
}

bool ReadTexture(const std::wstring& path, ScratchImage& image) {
    std::vector<std::byte> bytes;
    return ReadWholeFile(path, bytes) &&
           SUCCEEDED(DirectX::LoadFromDDSMemory(bytes.data(), bytes.size(), DDS_FLAGS_NONE, nullptr, image));
}

bool WriteTexture(const std::wstring& path, const TexMetadata& metadata, const std::vector<Image>& images) {
    std::byte header[kLargestHeader];
    std::size_t size = 0;
    FileHandle file;
    if (FAILED(DirectX::EncodeDDSHeader(metadata, DDS_FLAGS_NONE, header, sizeof header, size)) ||
        !file.Open(path, true, false) || !file.Write(header, size)) {
        return false;
    }
    for (const Image& image : images) {
        std::size_t rowBytes = 0, imageBytes = 0;
        if (FAILED(DirectX::ComputePitch(image.format, image.width, image.height, rowBytes, imageBytes))) {
            return false;
        }
        // Without what may lie between the rows.
        for (std::size_t row = 0; row < imageBytes / rowBytes; ++row) {
            if (!file.Write(image.pixels + image.rowPitch * row, rowBytes)) return false;
        }
        size += imageBytes;
    }
    return file.Truncate(size) && file.Close();
}

#endif

DXGI_FORMAT ToDxgi(DdsFormat format) {
    return static_cast<DXGI_FORMAT>(format);
}

DdsMetadata FromTexMetadata(const TexMetadata& metadata) {
    DdsMetadata result;
    result.width = static_cast<std::uint32_t>(metadata.width);
    result.height = static_cast<std::uint32_t>(metadata.height);
    result.depth = static_cast<std::uint32_t>(metadata.depth);
    result.arraySize = static_cast<std::uint32_t>(metadata.arraySize);
    result.mipLevels = static_cast<std::uint32_t>(metadata.mipLevels);
    result.format = static_cast<DdsFormat>(metadata.format);
    return result;
}

/// A texture of the array's size and levels; an array of six is a cube map.
TexMetadata ToTexMetadata(const DdsMetadata& metadata) {
    TexMetadata result{};
    result.width = metadata.width;
    result.height = metadata.height;
    result.depth = 1;
    result.arraySize = metadata.arraySize;
    result.mipLevels = metadata.mipLevels;
    result.miscFlags = metadata.arraySize == 6 ? std::uint32_t{DirectX::TEX_MISC_TEXTURECUBE} : 0;
    result.format = ToDxgi(metadata.format);
    result.dimension = DirectX::TEX_DIMENSION_TEXTURE2D;
    return result;
}

std::vector<Image> ToImages(std::span<const DdsItem> items, DdsFormat format) {
    std::vector<Image> images;
    for (const DdsItem& item : items) {
        // The library reads them only.
        auto* const pixels = reinterpret_cast<std::uint8_t*>(const_cast<std::byte*>(item.pixels));
        images.push_back({item.width, item.height, ToDxgi(format), item.rowPitch, item.slicePitch, pixels});
    }
    return images;
}

/// The formats that have a name here: others, which the library reads too, are of no use to the program.
bool IsKnown(DdsFormat format) {
    switch (format) {
        case DdsFormat::Rgba16Float:
        case DdsFormat::Rgba16Unorm:
        case DdsFormat::Rgba16Uint:
        case DdsFormat::Rgba8Unorm:
        case DdsFormat::Rgba8Uint:
        case DdsFormat::Bgra8:
        case DdsFormat::Bgrx8:
            return true;
        default:
            return IsDecompressed(format);
    }
}

/// The library asks for the memory a header speaks of before it looks at how long the file is. Formats it
/// widens while reading grow at most fourfold.
bool FitsFile(const TexMetadata& metadata, std::uint64_t fileSize) {
    std::size_t rowPitch = 0, slicePitch = 0;
    return SUCCEEDED(DirectX::ComputePitch(metadata.format, metadata.width, metadata.height, rowPitch,
                                           slicePitch)) &&
           slicePitch * metadata.arraySize * metadata.depth / 4 <= fileSize;
}

/// One row of pixels as Rgba8Unorm, from what the library decompresses to.
void ToRgbaRow(DXGI_FORMAT format, const std::uint8_t* source, std::uint8_t* row, std::size_t count) {
    if (format == DXGI_FORMAT_R8G8B8A8_UNORM) {
        std::memcpy(row, source, count * 4);
        return;
    }
    const bool grey = format == DXGI_FORMAT_R8_UNORM;
    for (std::size_t x = 0; x < count; ++x, row += 4) {
        row[0] = grey ? source[x] : source[2 * x];
        row[1] = grey ? source[x] : source[2 * x + 1];
        row[2] = grey ? source[x] : std::uint8_t{0};
        row[3] = 255;
    }
}

bool DecompressItem(const Image& compressed, const Image& result) {
    ScratchImage decompressed;
    if (FAILED(DirectX::Decompress(compressed, DXGI_FORMAT_UNKNOWN, decompressed))) return false;
    const Image& pixels = *decompressed.GetImage(0, 0, 0);
    const bool known = pixels.format == DXGI_FORMAT_R8G8B8A8_UNORM || pixels.format == DXGI_FORMAT_R8_UNORM ||
                       pixels.format == DXGI_FORMAT_R8G8_UNORM;
    if (!known) return false;
    for (std::size_t y = 0; y < pixels.height; ++y) {
        ToRgbaRow(pixels.format, pixels.pixels + pixels.rowPitch * y, result.pixels + result.rowPitch * y,
                  pixels.width);
    }
    return true;
}

/// Rows that one thread compresses at a time: of whole blocks, and of some tens of milliseconds in BC7.
constexpr std::size_t kCompressedRows = 16;

/// BC7's two other searches take minutes for a face.
DirectX::TEX_COMPRESS_FLAGS CompressionOf(DdsFormat format) {
    return format == DdsFormat::Bc7 ? DirectX::TEX_COMPRESS_BC7_QUICK : DirectX::TEX_COMPRESS_DEFAULT;
}

/// The contents, with the metadata that belong to them.
DdsTexture ToTexture(ScratchImage image) {
    DdsTexture texture;
    texture.contents->metadata = FromTexMetadata(image.GetMetadata());
    texture.contents->image = std::move(image);
    return texture;
}

}  // namespace

DdsTexture::DdsTexture() : contents(std::make_unique<Contents>()) {}
DdsTexture::~DdsTexture() = default;
DdsTexture::DdsTexture(DdsTexture&&) noexcept = default;
DdsTexture& DdsTexture::operator=(DdsTexture&&) noexcept = default;

const DdsMetadata& DdsTexture::Metadata() const {
    return contents->metadata;
}

DdsItem DdsTexture::Item(std::uint32_t item) const {
    const Image* const image = contents->image.GetImage(0, item, 0);
    if (!image) return {};
    return {reinterpret_cast<const std::byte*>(image->pixels), static_cast<std::uint32_t>(image->width),
            static_cast<std::uint32_t>(image->height), image->rowPitch, image->slicePitch};
}

bool ReadDdsMetadata(const std::wstring& path, DdsMetadata& metadata) {
    TexMetadata read{};
    if (!FileExists(path) || !ReadMetadata(path, read)) return false;
    metadata = FromTexMetadata(read);
    return true;
}

bool LoadDds(const std::wstring& path, DdsTexture& texture) {
    TexMetadata metadata{};
    ScratchImage image;
    if (!FileExists(path) || !ReadMetadata(path, metadata) ||
        !IsKnown(static_cast<DdsFormat>(metadata.format)) || !FitsFile(metadata, FileSizeOf(path)) ||
        !ReadTexture(path, image)) {
        return false;
    }
    texture = ToTexture(std::move(image));
    return true;
}

bool DecompressDds(const DdsTexture& compressed, DdsTexture& result) {
    const DdsMetadata& metadata = compressed.Metadata();
    if (!IsDecompressed(metadata.format)) return false;
    ScratchImage image;
    if (FAILED(image.Initialize2D(DXGI_FORMAT_R8G8B8A8_UNORM, metadata.width, metadata.height,
                                  metadata.arraySize, 1))) {
        return false;
    }
    for (std::uint32_t i = 0; i < metadata.arraySize; ++i) {
        const Image* const item = compressed.contents->image.GetImage(0, i, 0);
        if (!item || !DecompressItem(*item, *image.GetImage(0, i, 0))) return false;
    }
    result = ToTexture(std::move(image));
    return true;
}

bool CompressDds(DdsFormat format, const DdsMetadata& metadata, std::span<const DdsItem> items,
                 DdsTexture& result) {
    if (items.size() != metadata.arraySize || metadata.mipLevels != 1) return false;
    ScratchImage image;
    if (FAILED(image.Initialize2D(ToDxgi(format), metadata.width, metadata.height, items.size(), 1)))
        return false;
    const std::vector<Image> sources = ToImages(items, metadata.format);
    const std::size_t bandsPerItem = (metadata.height + kCompressedRows - 1) / kCompressedRows;
    std::atomic<bool> failed = false;
    // The library spreads its work only where it was built with OpenMP.
    ParallelBands(static_cast<int>(bandsPerItem * items.size()), true, [&](int band) {
        const std::size_t item = static_cast<std::size_t>(band) / bandsPerItem;
        const std::size_t top = static_cast<std::size_t>(band) % bandsPerItem * kCompressedRows;
        Image rows = sources[item];
        rows.pixels += rows.rowPitch * top;
        rows.height = std::min(kCompressedRows, rows.height - top);
        rows.slicePitch = rows.rowPitch * rows.height;
        ScratchImage blocks;
        if (FAILED(DirectX::Compress(rows, ToDxgi(format), CompressionOf(format), 0.5f, blocks))) {
            failed = true;
            return;
        }
        const Image& to = *image.GetImage(0, item, 0);
        std::memcpy(to.pixels + to.rowPitch * (top / 4), blocks.GetPixels(), blocks.GetPixelsSize());
    });
    if (failed) return false;
    result = ToTexture(std::move(image));
    return true;
}

bool SaveDds(const std::wstring& path, const DdsMetadata& metadata, std::span<const DdsItem> items) {
    return WriteTexture(path, ToTexMetadata(metadata), ToImages(items, metadata.format));
}

}  // namespace skyvault
