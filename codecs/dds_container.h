// What the program asks of a DDS library: headers, pixels, block compression.
//
// Implemented twice behind this header: dds_container_directxtex.cpp where CMake finds DirectXTex, and
// dds_container_builtin.cpp otherwise. Both accept and refuse the same files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace skyvault {

/// The DXGI formats the program handles, by their DXGI_FORMAT number; a file may hold any other number.
enum class DdsFormat : std::uint32_t {
    Unknown = 0,
    Rgba16Float = 10,
    Rgba16Unorm = 11,
    Rgba16Uint = 12,
    Rgba8Unorm = 28,
    Rgba8Uint = 30,
    Bc1 = 71,
    Bc2 = 74,
    Bc3 = 77,
    Bc4 = 80,
    Bc5 = 83,
    Bgra8 = 87,
    Bgrx8 = 88,
    Bc6h = 95,  ///< unsigned; written only
    Bc7 = 98,
};

/// The formats of blocks of 4 × 4 pixels.
constexpr bool IsBlockCompressed(DdsFormat format) {
    switch (format) {
        case DdsFormat::Bc6h:
        case DdsFormat::Bc1:
        case DdsFormat::Bc2:
        case DdsFormat::Bc3:
        case DdsFormat::Bc4:
        case DdsFormat::Bc5:
        case DdsFormat::Bc7:
            return true;
        default:
            return false;
    }
}

/// The formats DecompressDds takes.
constexpr bool IsDecompressed(DdsFormat format) {
    return IsBlockCompressed(format) && format != DdsFormat::Bc6h;
}

/// Bytes of a block of a block-compressed format.
constexpr std::size_t DdsBlockBytes(DdsFormat format) {
    return format == DdsFormat::Bc1 || format == DdsFormat::Bc4 ? 8 : 16;
}

struct DdsMetadata {
    std::uint32_t width = 0, height = 0;
    std::uint32_t depth = 1;
    std::uint32_t arraySize = 1;  ///< six for each cube of a cube map
    std::uint32_t mipLevels = 1;
    DdsFormat format = DdsFormat::Unknown;
};

/// One picture of a texture in its own format: row 0 first, rows rowPitch bytes apart (of 4 × 4 blocks for
/// block-compressed formats), slicePitch bytes in all. Not owned.
struct DdsItem {
    const std::byte* pixels = nullptr;
    std::uint32_t width = 0, height = 0;
    std::size_t rowPitch = 0, slicePitch = 0;
};

/// A side of a mip level: halved for each level, at least 1.
constexpr std::uint32_t LevelSide(std::uint32_t side, std::uint32_t level) {
    return side >> level > 0 ? side >> level : 1;
}

/// A texture in memory.
class DdsTexture {
  public:
    DdsTexture();
    ~DdsTexture();
    DdsTexture(DdsTexture&&) noexcept;
    DdsTexture& operator=(DdsTexture&&) noexcept;

    const DdsMetadata& Metadata() const;

    /// The largest mip level of an array item, its first slice; pixels null when the texture has none.
    DdsItem Item(std::uint32_t item) const;

    struct Contents;
    std::unique_ptr<Contents> contents;  ///< never null but after a move
};

/// The header alone. False for a file that cannot be opened or whose header no reader would accept.
bool ReadDdsMetadata(const std::wstring& path, DdsMetadata& metadata);

/// The whole file. False also when it is shorter than its header says, or without memory; memory is asked
/// for only after the header was found to fit the file's size.
bool LoadDds(const std::wstring& path, DdsTexture& texture);

/// Block-compressed to Rgba8Unorm, every array item's largest mip level: BC4 as grey, BC5 with blue 0, both
/// opaque. False for any other format, or without memory.
bool DecompressDds(const DdsTexture& compressed, DdsTexture& result);

/// Items of one mip level to blocks: Rgba8Unorm to BC1 (pixels whose alpha is below one half become
/// transparent, all others opaque), BC3 or BC7; Rgba16Float to BC6H, which has no alpha and nothing below 0.
bool CompressDds(DdsFormat format, const DdsMetadata& metadata, std::span<const DdsItem> items,
                 DdsTexture& result);

/// Writes the items, for each array item its mip levels from large to small, as a DDS file; an array of six
/// as a cube map. The bytes go straight to the path: give it a temporary name. False when the file cannot be
/// written whole, or a level does not have its size.
bool SaveDds(const std::wstring& path, const DdsMetadata& metadata, std::span<const DdsItem> items);

}  // namespace skyvault
