#include "codecs/dds_header_builtin.h"

#include <algorithm>
#include <bit>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

// Offsets of the fields.
enum At : std::size_t {
    kMagicAt = 0,
    kHeaderSizeAt = 4,
    kFlagsAt = 8,
    kHeightAt = 12,
    kWidthAt = 16,
    kPitchAt = 20,
    kDepthAt = 24,
    kMipLevelsAt = 28,
    kToolAt = 68,
    kFormatSizeAt = 76,
    kFormatFlagsAt = 80,
    kFourCcAt = 84,
    kBitCountAt = 88,
    kMasksAt = 92,
    kCapsAt = 108,
    kCaps2At = 112,
    kShortHeaderEnd = 128,
    kDxgiFormatAt = 128,
    kDimensionAt = 132,
    kMiscAt = 136,
    kArraySizeAt = 140,
    kLongHeaderEnd = kLongestDdsHeader,
};

constexpr std::size_t kPaletteBytes = 256 * 4;

// Of the header.
constexpr std::uint32_t kHasHeight = 0x2;
constexpr std::uint32_t kHasPitch = 0x8;
constexpr std::uint32_t kHasTexture = 0x1007;  // caps, height, width, pixel format
constexpr std::uint32_t kHasMipLevels = 0x20000;
constexpr std::uint32_t kHasLinearSize = 0x80000;
constexpr std::uint32_t kHasDepth = 0x800000;
constexpr std::uint32_t kCapsComplex = 0x8;
constexpr std::uint32_t kCapsTexture = 0x1000;
constexpr std::uint32_t kCapsMipLevels = 0x400000;
constexpr std::uint32_t kCaps2CubeMap = 0x200;
constexpr std::uint32_t kCaps2AllFaces = 0xfe00;

// Of the pixel format.
constexpr std::uint32_t kAlphaPixels = 0x1;
constexpr std::uint32_t kAlphaOnly = 0x2;
constexpr std::uint32_t kFourCc = 0x4;
constexpr std::uint32_t kPalette = 0x20;
constexpr std::uint32_t kRgb = 0x40;
constexpr std::uint32_t kLuminance = 0x20000;
constexpr std::uint32_t kBumpLuminance = 0x40000;
constexpr std::uint32_t kBump = 0x80000;
constexpr std::uint32_t kToolSrgb = 0x40000000;  // written by one tool only
constexpr std::uint32_t kToolFlags = 0xc0000000;

// Of the DX10 part.
constexpr std::uint32_t kMiscCubeMap = 0x4;
constexpr std::uint32_t kTexture1D = 2, kTexture2D = 3, kTexture3D = 4;

// What hardware can hold.
constexpr std::uint32_t kLargestSide = 16384;
constexpr std::uint32_t kMostMipLevels = 15;
constexpr std::uint32_t kMostItems = 2048;

constexpr std::uint32_t Code(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

struct CodedFormat {
    std::uint32_t fourCc;
    std::uint32_t dxgiFormat;
};

// Where a format has two codes, the first is the one to write.
constexpr CodedFormat kCodedFormats[] = {
    {Code("DXT1"), 71},
    {Code("DXT3"), 74},
    {Code("DXT2"), 74},
    {Code("DXT5"), 77},
    {Code("DXT4"), 77},
    // DXT5 with its channels in another order, taken as it stands.
    {Code("A2D5"), 77},
    {Code("xGBR"), 77},
    {Code("RxBG"), 77},
    {Code("RBxG"), 77},
    {Code("xRBG"), 77},
    {Code("RGxB"), 77},
    {Code("xGxR"), 77},
    {Code("GXRB"), 77},
    {Code("GRXB"), 77},
    {Code("RXGB"), 77},
    {Code("BRGX"), 77},
    {Code("BC4U"), 80},
    {Code("ATI1"), 80},
    {Code("BC4S"), 81},
    {Code("BC5U"), 83},
    {Code("ATI2"), 83},
    {Code("A2XY"), 83},
    {Code("BC5S"), 84},
    {Code("BC6H"), 95},
    {Code("BC7L"), 98},
    {Code("BC7\0"), 98},
    {Code("RGBG"), 68},
    {Code("GRGB"), 69},
    {Code("YUY2"), 107},
    {Code("UYVY"), 107},
    // Numbers of Direct3D 9.
    {36, 11},
    {110, 13},
    {111, 54},
    {112, 34},
    {113, 10},
    {114, 41},
    {115, 16},
    {116, 2},
};

struct MaskedFormat {
    std::uint32_t flags;
    std::uint32_t bits;
    std::uint32_t masks[4];  ///< red, green, blue, alpha
    std::uint32_t dxgiFormat;
    DdsStorage storage = DdsStorage::Plain;
};

constexpr std::uint32_t kRgba = kRgb | kAlphaPixels;

constexpr MaskedFormat kMaskedFormats[] = {
    {kRgba, 32, {0xff0000, 0xff00, 0xff, 0xff000000}, 87},
    {kRgb, 32, {0xff0000, 0xff00, 0xff, 0}, 88},
    {kRgba, 32, {0xff, 0xff00, 0xff0000, 0xff000000}, 28},
    {kRgb, 32, {0xff, 0xff00, 0xff0000, 0}, 28, DdsStorage::Xbgr8},
    {kRgb, 24, {0xff0000, 0xff00, 0xff, 0}, 28, DdsStorage::Bgr8},
    {kRgba, 16, {0xe0, 0x1c, 0x3, 0xff00}, 28, DdsStorage::A8R3G3B2},
    {kPalette, 8, {}, 28, DdsStorage::Palette},
    {kPalette | kAlphaPixels, 16, {}, 28, DdsStorage::A8Palette},
    {kBumpLuminance, 16, {0x1f, 0x3e0, 0xfc00, 0}, 28, DdsStorage::L6V5U5},
    {kBumpLuminance, 32, {0xff, 0xff00, 0xff0000, 0}, 28, DdsStorage::X8L8V8U8},
    // The rest can be described, not read.
    {kRgb, 32, {0xffff, 0xffff0000, 0, 0}, 35},
    {kRgba, 32, {0x3ff, 0xffc00, 0x3ff00000, 0xc0000000}, 24},
    {kRgba, 32, {0x3ff00000, 0xffc00, 0x3ff, 0xc0000000}, 24},
    {kRgb, 16, {0xf800, 0x7e0, 0x1f, 0}, 85},
    {kRgba, 16, {0x7c00, 0x3e0, 0x1f, 0x8000}, 86},
    {kRgb, 16, {0x7c00, 0x3e0, 0x1f, 0}, 86},
    {kRgb, 8, {0xe0, 0x1c, 0x3, 0}, 85},
    {kLuminance, 8, {0xff, 0, 0, 0}, 61},
    {kLuminance, 16, {0xffff, 0, 0, 0}, 56},
    {kLuminance | kAlphaPixels, 16, {0xff, 0, 0, 0xff00}, 49},
    {kLuminance | kAlphaPixels, 8, {0xff, 0, 0, 0xff00}, 49},
    {kRgb, 8, {0xff, 0, 0, 0}, 61},
    {kRgb, 16, {0xffff, 0, 0, 0}, 56},
    {kRgba, 16, {0xff, 0, 0, 0xff00}, 49},
    {kAlphaOnly, 8, {0, 0, 0, 0xff}, 65},
    {kRgb, 32, {0xffffffff, 0, 0, 0}, 41},
    {kRgba, 16, {0xf00, 0xf0, 0xf, 0xf000}, 115},
    {kRgb, 16, {0xf00, 0xf0, 0xf, 0}, 115},
    {kLuminance | kAlphaPixels, 8, {0xf, 0, 0, 0xf0}, 115},
    {kBump, 16, {0xff, 0xff00, 0, 0}, 51},
    {kBump, 32, {0xff, 0xff00, 0xff0000, 0xff000000}, 31},
    {kBump, 32, {0xffff, 0xffff0000, 0, 0}, 37},
    {kBump | kAlphaPixels, 32, {0x3ff00000, 0xffc00, 0x3ff, 0xc0000000}, 24},
};

std::uint32_t Field(std::span<const std::byte> bytes, std::size_t at) {
    return Little32(bytes.data() + at);
}

/// Only the masks that mean something for the kind of format have to agree.
bool MasksAgree(const MaskedFormat& format, std::span<const std::byte> file) {
    const auto agrees = [&](std::size_t i) { return Field(file, kMasksAt + 4 * i) == format.masks[i]; };
    if (format.flags & kPalette) return true;
    if (format.flags & kAlphaOnly) return agrees(3);
    if ((format.flags & kAlphaPixels) && !agrees(3)) return false;
    const bool oneColour = (format.flags & (kLuminance | kBump)) != 0;
    return agrees(0) && (oneColour || (agrees(1) && agrees(2)));
}

std::uint32_t Srgb(std::uint32_t dxgiFormat) {
    switch (dxgiFormat) {
        case 28:
        case 71:
        case 74:
        case 77:
        case 98:
            return dxgiFormat + 1;
        case 87:
            return 91;
        case 88:
            return 93;
        default:
            return dxgiFormat;
    }
}

bool FindShortFormat(std::span<const std::byte> file, DdsHeader& header) {
    std::uint32_t flags = Field(file, kFormatFlagsAt);
    const bool toolFlags = Field(file, kToolAt) == Code("NVTT");
    const bool srgb = toolFlags && (flags & kToolSrgb) != 0;
    if (toolFlags) flags &= ~kToolFlags;

    std::uint32_t dxgiFormat = 0;
    if (flags & kFourCc) {
        const auto* found = std::ranges::find(kCodedFormats, Field(file, kFourCcAt), &CodedFormat::fourCc);
        if (found == std::end(kCodedFormats)) return false;
        dxgiFormat = found->dxgiFormat;
    } else {
        const auto* found = std::ranges::find_if(kMaskedFormats, [&](const MaskedFormat& format) {
            return format.flags == flags && format.bits == Field(file, kBitCountAt) &&
                   MasksAgree(format, file);
        });
        if (found == std::end(kMaskedFormats)) return false;
        dxgiFormat = found->dxgiFormat;
        header.storage = found->storage;
    }
    header.metadata.format = static_cast<DdsFormat>(srgb ? Srgb(dxgiFormat) : dxgiFormat);
    return true;
}

/// The part after "DX10"; arraySize: of 64 bits, since a hostile one times six is larger than 32.
bool ParseLongPart(std::span<const std::byte> file, DdsHeader& header, std::uint64_t& arraySize) {
    if (file.size() < kLongHeaderEnd) return false;
    DdsMetadata& metadata = header.metadata;
    const std::uint32_t format = Field(file, kDxgiFormatAt);
    // Numbers that name no format, and the palette formats of video.
    if (format < 1 || format > 191 || (format >= 111 && format <= 114)) return false;
    metadata.format = static_cast<DdsFormat>(format);
    arraySize = std::max(Field(file, kArraySizeAt), 1u);
    switch (Field(file, kDimensionAt)) {
        case kTexture1D:
            if ((Field(file, kFlagsAt) & kHasHeight) && metadata.height != 1) return false;
            metadata.height = 1;
            return true;
        case kTexture2D:
            if (Field(file, kMiscAt) & kMiscCubeMap) arraySize *= 6;
            return true;
        case kTexture3D:
            header.volume = true;
            return (Field(file, kFlagsAt) & kHasDepth) && arraySize == 1;
        default:
            return false;
    }
}

bool ParseShortPart(std::span<const std::byte> file, DdsHeader& header, std::uint64_t& arraySize) {
    const std::uint32_t caps2 = Field(file, kCaps2At);
    header.volume = (Field(file, kFlagsAt) & kHasDepth) != 0;
    if (!header.volume && (caps2 & kCaps2CubeMap)) {
        if ((caps2 & kCaps2AllFaces) != kCaps2AllFaces) return false;
        arraySize = 6;
    }
    return FindShortFormat(file, header);
}

std::uint32_t Halved(std::uint32_t size) {
    return std::max(size / 2, 1u);
}

/// Bytes of a row as the file has them.
std::uint64_t StoredRowPitch(const DdsHeader& header) {
    const std::uint64_t width = header.metadata.width;
    switch (header.storage) {
        case DdsStorage::Bgr8:
            return 3 * width;
        case DdsStorage::A8R3G3B2:
        case DdsStorage::A8Palette:
        case DdsStorage::L6V5U5:
            return 2 * width;
        case DdsStorage::Palette:
            return width;
        default:
            return DdsRowPitch(header.metadata.format, header.metadata.width);
    }
}

std::uint64_t BytesPerUnit(DdsFormat format) {
    switch (format) {
        case DdsFormat::Rgba16Float:
        case DdsFormat::Rgba16Unorm:
        case DdsFormat::Rgba16Uint:
        case DdsFormat::Bc1:
        case DdsFormat::Bc4:
            return 8;
        case DdsFormat::Rgba8Unorm:
        case DdsFormat::Rgba8Uint:
        case DdsFormat::Bgra8:
        case DdsFormat::Bgrx8:
            return 4;
        case DdsFormat::Bc2:
        case DdsFormat::Bc3:
        case DdsFormat::Bc5:
        case DdsFormat::Bc6h:
        case DdsFormat::Bc7:
            return 16;
        default:
            return 0;
    }
}

}  // namespace

std::uint64_t DdsRowPitch(DdsFormat format, std::uint32_t width) {
    const std::uint64_t units = IsBlockCompressed(format) ? (std::uint64_t{width} + 3) / 4 : width;
    return units * BytesPerUnit(format);
}

std::uint32_t DdsRowCount(DdsFormat format, std::uint32_t height) {
    return IsBlockCompressed(format) ? height / 4 + (height % 4 != 0) : height;
}

bool ParseDdsHeader(std::span<const std::byte> file, DdsHeader& header) {
    header = {};
    if (file.size() < kShortHeaderEnd || Field(file, kMagicAt) != Code("DDS ") ||
        Field(file, kHeaderSizeAt) != 124 || Field(file, kFormatSizeAt) != 32)
        return false;
    DdsMetadata& metadata = header.metadata;
    metadata.width = Field(file, kWidthAt);
    metadata.height = Field(file, kHeightAt);
    metadata.mipLevels = std::max(Field(file, kMipLevelsAt), 1u);

    const bool longForm = (Field(file, kFormatFlagsAt) & kFourCc) && Field(file, kFourCcAt) == Code("DX10");
    std::uint64_t arraySize = 1;
    if (!(longForm ? ParseLongPart(file, header, arraySize) : ParseShortPart(file, header, arraySize)))
        return false;
    if (header.volume) metadata.depth = Field(file, kDepthAt);

    if (metadata.width > kLargestSide || metadata.height > kLargestSide ||
        metadata.mipLevels > kMostMipLevels || arraySize > kMostItems || metadata.depth > kMostItems)
        return false;
    metadata.arraySize = static_cast<std::uint32_t>(arraySize);
    header.pixelsAt = longForm ? kLongHeaderEnd : kShortHeaderEnd;
    if (header.storage == DdsStorage::Palette || header.storage == DdsStorage::A8Palette) {
        header.paletteAt = header.pixelsAt;
        header.pixelsAt += kPaletteBytes;
    }
    return true;
}

bool LayOutDdsFile(const DdsHeader& header, std::uint64_t fileSize, DdsLayout& layout) {
    // The header's limits keep every product below 2^45.
    DdsHeader level = header;
    DdsMetadata& size = level.metadata;
    const bool readable = BytesPerUnit(size.format) > 0 && size.format != DdsFormat::Bc6h;
    if (!readable || size.width == 0 || size.height == 0 || size.depth == 0) return false;
    layout = {};
    for (std::uint32_t i = 0; i < header.metadata.mipLevels; ++i) {
        const bool smallest = size.width == 1 && size.height == 1 && size.depth == 1;
        const std::uint64_t rowPitch = StoredRowPitch(level);
        const std::uint64_t slicePitch = rowPitch * DdsRowCount(size.format, size.height);
        if (i == 0) {
            layout.rowPitch = rowPitch;
            layout.slicePitch = slicePitch;
        }
        layout.itemPitch += slicePitch * size.depth;
        if (smallest && i + 1 < header.metadata.mipLevels) return false;
        size.width = Halved(size.width);
        size.height = Halved(size.height);
        size.depth = Halved(size.depth);
    }
    return fileSize >= header.pixelsAt &&
           fileSize - header.pixelsAt >= layout.itemPitch * header.metadata.arraySize;
}

std::size_t MakeDdsHeader(const DdsMetadata& metadata, std::array<std::byte, kLongestDdsHeader>& header) {
    const std::uint64_t rowPitch = DdsRowPitch(metadata.format, metadata.width);
    const std::uint64_t slicePitch = rowPitch * DdsRowCount(metadata.format, metadata.height);
    const auto mostLevels =
        static_cast<std::uint32_t>(std::bit_width(std::max(metadata.width, metadata.height)));
    if (slicePitch == 0 || slicePitch > 0xffffffffu || metadata.arraySize > 0xffff ||
        metadata.mipLevels == 0 || metadata.mipLevels > mostLevels)
        return 0;

    header = {};
    const auto put = [&](std::size_t at, std::uint32_t value) { SetLittle32(&header[at], value); };
    const bool cubeMap = metadata.arraySize == 6;
    const bool blocks = IsBlockCompressed(metadata.format);
    put(kMagicAt, Code("DDS "));
    put(kHeaderSizeAt, 124);
    put(kFlagsAt, kHasTexture | kHasMipLevels | (blocks ? kHasLinearSize : kHasPitch));
    put(kHeightAt, metadata.height);
    put(kWidthAt, metadata.width);
    put(kPitchAt, static_cast<std::uint32_t>(blocks ? slicePitch : rowPitch));
    put(kDepthAt, 1);
    put(kMipLevelsAt, metadata.mipLevels);
    put(kFormatSizeAt, 32);
    const bool levels = metadata.mipLevels > 1;
    put(kCapsAt, kCapsTexture | (cubeMap || levels ? kCapsComplex : 0) | (levels ? kCapsMipLevels : 0));
    put(kCaps2At, cubeMap ? kCaps2AllFaces : 0);

    // The short form knows no arrays but cube maps, and no codes for BC6H and BC7 that every reader takes.
    const auto format = static_cast<std::uint32_t>(metadata.format);
    if (metadata.arraySize == 1 || cubeMap) {
        const auto* coded = std::ranges::find(kCodedFormats, format, &CodedFormat::dxgiFormat);
        const bool longOnly = metadata.format == DdsFormat::Bc6h || metadata.format == DdsFormat::Bc7;
        if (coded != std::end(kCodedFormats) && !longOnly) {
            put(kFormatFlagsAt, kFourCc);
            put(kFourCcAt, coded->fourCc);
            return kShortHeaderEnd;
        }
        const auto* masked = std::ranges::find(kMaskedFormats, format, &MaskedFormat::dxgiFormat);
        if (masked != std::end(kMaskedFormats)) {
            put(kFormatFlagsAt, masked->flags);
            put(kBitCountAt, masked->bits);
            for (std::size_t i = 0; i < 4; ++i) put(kMasksAt + 4 * i, masked->masks[i]);
            return kShortHeaderEnd;
        }
    }
    put(kFormatFlagsAt, kFourCc);
    put(kFourCcAt, Code("DX10"));
    put(kDxgiFormatAt, format);
    put(kDimensionAt, kTexture2D);
    put(kMiscAt, cubeMap ? kMiscCubeMap : 0);
    put(kArraySizeAt, cubeMap ? 1 : metadata.arraySize);
    return kLongHeaderEnd;
}

}  // namespace skyvault
