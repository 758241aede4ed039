#include "image/dds_container.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/made_dds.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::Bytes;
using test::Coded;
using test::DdsFields;
using test::Dx10;
using test::FourCc;
using test::MakeDds;
using test::TemporaryFolder;

constexpr std::uint32_t kVolume = 0x801007;
constexpr std::uint32_t kCubeMap = 0xfe00;

struct Expected {
    std::uint32_t width, height, depth, arraySize, mipLevels, format;
};

struct HeaderCase {
    const char* name;
    DdsFields fields;
    std::optional<Expected> expected;  ///< none: refused
};

TEST(DdsHeader, WhatItSaysAndWhichAreRefused) {
    const DdsFields plain;
    const HeaderCase cases[] = {
        {"plain", plain, {{4, 4, 1, 1, 1, 28}}},
        {"size 0", {.width = 0, .height = 0}, {{0, 0, 1, 1, 1, 28}}},
        {"largest", {.width = 16384, .height = 16384, .mipLevels = 15}, {{16384, 16384, 1, 1, 15, 28}}},
        {"too wide", {.width = 16385}, {}},
        {"too high", {.height = 65535}, {}},
        {"too many levels", {.mipLevels = 16}, {}},
        {"more levels than the size has", {.mipLevels = 9}, {{4, 4, 1, 1, 9, 28}}},
        {"pitch is not looked at", {.pitch = 0xffffffff}, {{4, 4, 1, 1, 1, 28}}},
        {"not a DDS file", {.magic = FourCc("DDX ")}, {}},
        {"header size", {.headerSize = 128}, {}},
        {"format size", {.formatSize = 24}, {}},

        {"cube map", {.caps2 = kCubeMap}, {{4, 4, 1, 6, 1, 28}}},
        {"cube map, one face missing", {.caps2 = kCubeMap & ~0x400u}, {}},
        {"faces, but no cube map", {.caps2 = kCubeMap & ~0x200u}, {{4, 4, 1, 1, 1, 28}}},
        {"volume", {.depth = 3, .flags = kVolume}, {{4, 4, 3, 1, 1, 28}}},
        {"volume of no depth", {.depth = 0, .flags = kVolume}, {{4, 4, 0, 1, 1, 28}}},
        {"volume by its caps alone", {.depth = 3, .caps2 = 0x200000}, {{4, 4, 1, 1, 1, 28}}},
        {"volume too deep", {.depth = 2049, .flags = kVolume}, {}},
        {"a volume is no cube map", {.depth = 2, .flags = kVolume, .caps2 = kCubeMap}, {{4, 4, 2, 1, 1, 28}}},

        {"DXT1", Coded(FourCc("DXT1")), {{4, 4, 1, 1, 1, 71}}},
        {"DXT2", Coded(FourCc("DXT2")), {{4, 4, 1, 1, 1, 74}}},
        {"DXT3", Coded(FourCc("DXT3")), {{4, 4, 1, 1, 1, 74}}},
        {"DXT4", Coded(FourCc("DXT4")), {{4, 4, 1, 1, 1, 77}}},
        {"DXT5", Coded(FourCc("DXT5")), {{4, 4, 1, 1, 1, 77}}},
        {"RXGB", Coded(FourCc("RXGB")), {{4, 4, 1, 1, 1, 77}}},
        {"ATI1", Coded(FourCc("ATI1")), {{4, 4, 1, 1, 1, 80}}},
        {"BC4U", Coded(FourCc("BC4U")), {{4, 4, 1, 1, 1, 80}}},
        {"BC4S", Coded(FourCc("BC4S")), {{4, 4, 1, 1, 1, 81}}},
        {"ATI2", Coded(FourCc("ATI2")), {{4, 4, 1, 1, 1, 83}}},
        {"BC5U", Coded(FourCc("BC5U")), {{4, 4, 1, 1, 1, 83}}},
        {"number 36", Coded(36), {{4, 4, 1, 1, 1, 11}}},
        {"number 113", Coded(113), {{4, 4, 1, 1, 1, 10}}},
        {"number 116", Coded(116), {{4, 4, 1, 1, 1, 2}}},
        {"unknown code", Coded(FourCc("DXT9")), {}},
        {"alpha, red, green, blue", {.masks = {0xff0000, 0xff00, 0xff, 0xff000000}}, {{4, 4, 1, 1, 1, 87}}},
        {"red, green, blue",
         {.formatFlags = 0x40, .masks = {0xff0000, 0xff00, 0xff, 0}},
         {{4, 4, 1, 1, 1, 88}}},
        {"blue, green, red", {.formatFlags = 0x40}, {{4, 4, 1, 1, 1, 28}}},
        {"24 bits",
         {.formatFlags = 0x40, .bits = 24, .masks = {0xff0000, 0xff00, 0xff, 0}},
         {{4, 4, 1, 1, 1, 28}}},
        {"24 bits, red first: nobody's format", {.formatFlags = 0x40, .bits = 24}, {}},
        {"16 bits",
         {.formatFlags = 0x40, .bits = 16, .masks = {0xf800, 0x7e0, 0x1f, 0}},
         {{4, 4, 1, 1, 1, 85}}},
        {"grey", {.formatFlags = 0x20000, .bits = 8, .masks = {0xff}}, {{4, 4, 1, 1, 1, 61}}},
        {"odd masks", {.masks = {0xff, 0xff00, 0xff0000, 0x7f000000}}, {}},
        {"sRGB of one tool", Coded(FourCc("DXT1"), {.tool = FourCc("NVTT")}), {{4, 4, 1, 1, 1, 71}}},

        {"DX10", Dx10({.format = 98}), {{4, 4, 1, 1, 1, 98}}},
        {"DX10, sRGB", Dx10({.format = 29}), {{4, 4, 1, 1, 1, 29}}},
        {"DX10, no format", Dx10({.format = 0}), {}},
        {"DX10, palette format", Dx10({.format = 113}), {}},
        {"DX10, number out of range", Dx10({.format = 192}), {}},
        {"DX10, cube map", Dx10({.misc = 4}), {{4, 4, 1, 6, 1, 28}}},
        {"DX10, two cube maps", Dx10({.misc = 4, .arraySize = 2}), {{4, 4, 1, 12, 1, 28}}},
        {"DX10, array of six", Dx10({.arraySize = 6}), {{4, 4, 1, 6, 1, 28}}},
        {"DX10, array size 0", Dx10({.arraySize = 0}), {{4, 4, 1, 1, 1, 28}}},
        {"DX10, array too large", Dx10({.arraySize = 2049}), {}},
        {"DX10, six times that is small in 32 bits", Dx10({.misc = 4, .arraySize = 0x2aaaaaab}), {}},
        {"DX10, the short form's cube map flags mean nothing",
         Dx10({}, {.caps2 = kCubeMap}),
         {{4, 4, 1, 1, 1, 28}}},
        {"DX10, no dimension", Dx10({.dimension = 0}), {}},
        {"DX10, line", Dx10({.dimension = 2}, {.height = 1}), {{4, 1, 1, 1, 1, 28}}},
        {"DX10, line with a height", Dx10({.dimension = 2}), {}},
        {"DX10, volume", Dx10({.dimension = 4}, {.depth = 2, .flags = kVolume}), {{4, 4, 2, 1, 1, 28}}},
        {"DX10, volume without the flag", Dx10({.dimension = 4}, {.depth = 2}), {}},
        {"DX10, array of volumes",
         Dx10({.dimension = 4, .arraySize = 2}, {.depth = 2, .flags = kVolume}),
         {}},
    };
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const HeaderCase& row : cases) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(test::WriteFile(path, MakeDds(row.fields)));
        DdsMetadata metadata;
        ASSERT_EQ(ReadDdsMetadata(path, metadata), row.expected.has_value());
        if (!row.expected) continue;
        EXPECT_EQ(metadata.width, row.expected->width);
        EXPECT_EQ(metadata.height, row.expected->height);
        EXPECT_EQ(metadata.depth, row.expected->depth);
        EXPECT_EQ(metadata.arraySize, row.expected->arraySize);
        EXPECT_EQ(metadata.mipLevels, row.expected->mipLevels);
        EXPECT_EQ(static_cast<std::uint32_t>(metadata.format), row.expected->format);
    }
}

TEST(DdsHeader, NoFileFolderOrCutHeaderIsRefused) {
    const TemporaryFolder folder;
    DdsMetadata metadata;
    DdsTexture texture;
    EXPECT_FALSE(ReadDdsMetadata(folder / L"none.dds", metadata));
    EXPECT_FALSE(LoadDds(folder / L"none.dds", texture));
    EXPECT_FALSE(ReadDdsMetadata(folder.Path(), metadata));
    EXPECT_FALSE(LoadDds(folder.Path(), texture));
    for (const DdsFields& fields : {DdsFields{}, Dx10({})}) {
        const Bytes whole = MakeDds(fields);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const std::wstring path = folder / L"cut.dds";
            ASSERT_TRUE(test::WriteFile(path, Bytes(whole.begin(), whole.begin() + size)));
            ASSERT_FALSE(ReadDdsMetadata(path, metadata)) << size;
        }
    }
}

Bytes Counting(std::size_t count) {
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(i * 7 + i / 256));
    return bytes;
}

Bytes PixelsOf(const DdsItem& item, std::size_t rowBytes, std::uint32_t rows) {
    Bytes pixels;
    for (std::uint32_t y = 0; y < rows; ++y) {
        const auto* row = reinterpret_cast<const std::uint8_t*>(item.pixels + y * item.rowPitch);
        test::Add(pixels, Bytes(row, row + rowBytes));
    }
    return pixels;
}

struct LoadCase {
    const char* name;
    DdsFields fields;
    std::size_t size;       ///< of all pixels in the file
    std::size_t itemPitch;  ///< from one array item to the next
    std::size_t rowBytes;
    std::uint32_t rows;
};

TEST(DdsLoad, EveryItemsLargestLevelAndNoFileThatIsTooShort) {
    const LoadCase cases[] = {
        {"one picture", {.width = 3, .height = 2}, 24, 24, 12, 2},
        {"blue first",
         {.width = 3, .height = 2, .masks = {0xff0000, 0xff00, 0xff, 0xff000000}},
         24,
         24,
         12,
         2},
        {"blue first without alpha: its byte stays as it is",
         {.width = 3, .height = 2, .formatFlags = 0x40, .masks = {0xff0000, 0xff00, 0xff, 0}},
         24,
         24,
         12,
         2},
        {"halves", Coded(113, {.width = 3, .height = 2}), 48, 48, 24, 2},
        {"unsigned numbers", Dx10({.format = 12}, {.width = 3, .height = 2}), 48, 48, 24, 2},
        // 5 × 3: then 2 × 1 and 1 × 1.
        {"cube map with levels",
         {.width = 5, .height = 3, .mipLevels = 3, .caps2 = kCubeMap},
         432,
         72,
         20,
         3},
        {"array", Dx10({.format = 30, .arraySize = 3}, {.width = 2, .height = 2}), 48, 16, 8, 2},
        // Two slices of 4 × 4, one of 2 × 2, one of 1 × 1.
        {"volume", {.depth = 2, .mipLevels = 3, .flags = kVolume}, 148, 148, 16, 4},
        // Blocks: 2 × 1, then one each for 2 × 1 and 1 × 1.
        {"BC1", Coded(FourCc("DXT1"), {.width = 5, .height = 3, .mipLevels = 3, .caps2 = kCubeMap}), 192, 32,
         16, 1},
        {"BC7", Dx10({.format = 98}, {.width = 9, .height = 5}), 96, 96, 48, 2},
    };
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const LoadCase& row : cases) {
        SCOPED_TRACE(row.name);
        const Bytes pixels = Counting(row.size);
        ASSERT_TRUE(test::WriteFile(path, MakeDds(row.fields, pixels)));
        DdsTexture texture;
        ASSERT_TRUE(LoadDds(path, texture));
        const std::uint32_t items = texture.Metadata().arraySize;
        EXPECT_EQ(items * row.itemPitch, row.size);
        for (std::uint32_t i = 0; i < items; ++i) {
            const DdsItem item = texture.Item(i);
            ASSERT_NE(item.pixels, nullptr);
            EXPECT_EQ(item.width, row.fields.width);
            EXPECT_EQ(item.height, row.fields.height);
            EXPECT_EQ(item.slicePitch, row.rowBytes * row.rows);
            const auto start = pixels.begin() + static_cast<std::ptrdiff_t>(i * row.itemPitch);
            EXPECT_EQ(PixelsOf(item, row.rowBytes, row.rows),
                      Bytes(start, start + static_cast<std::ptrdiff_t>(item.slicePitch)));
        }
        EXPECT_EQ(texture.Item(items).pixels, nullptr);

        Bytes longer = pixels;
        longer.push_back(0);
        ASSERT_TRUE(test::WriteFile(path, MakeDds(row.fields, longer)));
        EXPECT_TRUE(LoadDds(path, texture));
        for (const std::size_t size : {row.size - 1, row.size / 2, std::size_t{0}}) {
            ASSERT_TRUE(
                test::WriteFile(path, MakeDds(row.fields, Bytes(pixels.begin(), pixels.begin() + size))));
            EXPECT_FALSE(LoadDds(path, texture)) << size;
        }
    }
}

TEST(DdsLoad, ClaimsThatNoFileFillsAreRefused) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    const DdsFields cases[] = {
        {.width = 0},
        {.height = 0},
        {.depth = 0, .flags = kVolume},
        {.mipLevels = 4},
        {.width = 1, .height = 1, .mipLevels = 2},
        {.width = 16384, .height = 16384},
        Dx10({.format = 10, .arraySize = 2048}, {.width = 16384, .height = 16384, .mipLevels = 15}),
        {.width = 16384, .height = 16384, .depth = 2048, .mipLevels = 15, .flags = kVolume},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        ASSERT_TRUE(test::WriteFile(path, MakeDds(cases[i], Counting(400))));
        DdsTexture texture;
        EXPECT_FALSE(LoadDds(path, texture)) << "case " << i;
    }
}

TEST(DdsLoad, OldStoragesBecomeRedGreenBlueAlpha) {
    Bytes palette(1024);
    for (std::size_t i = 0; i < 256; ++i) {
        palette[4 * i] = static_cast<std::uint8_t>(i);
        palette[4 * i + 1] = static_cast<std::uint8_t>(255 - i);
        palette[4 * i + 2] = 9;
    }
    Bytes palettePixels = palette, alphaPalettePixels = palette;
    test::Add(palettePixels, {3, 200});
    test::Add(alphaPalettePixels, {3, 77, 200, 255});
    const struct {
        const char* name;
        DdsFields fields;
        Bytes stored, expected;
    } cases[] = {
        {"no alpha", {.formatFlags = 0x40}, {1, 2, 3, 4, 5, 6, 7, 8}, {1, 2, 3, 255, 5, 6, 7, 255}},
        {"24 bits",
         {.formatFlags = 0x40, .bits = 24, .masks = {0xff0000, 0xff00, 0xff, 0}},
         {1, 2, 3, 4, 5, 6},
         {3, 2, 1, 255, 6, 5, 4, 255}},
        // 101 110 01: red 5/7, green 6/7, blue 1/3; then 001 011 10.
        {"332 with alpha",
         {.bits = 16, .masks = {0xe0, 0x1c, 3, 0xff00}},
         {0xb9, 50, 0x2e, 0},
         {182, 219, 85, 50, 36, 109, 170, 0}},
        {"palette",
         {.formatFlags = 0x20, .bits = 8, .masks = {}},
         palettePixels,
         {3, 252, 9, 0, 200, 55, 9, 0}},
        {"palette and alpha",
         {.formatFlags = 0x21, .bits = 16, .masks = {0, 0, 0, 0xff00}},
         alphaPalettePixels,
         {3, 252, 9, 77, 200, 55, 9, 255}},
        // Luminance 63 and 1 of 63; u −16 and 0; v 15 and −1, of −16 .. 15.
        {"luminance and two signed",
         {.formatFlags = 0x40000, .bits = 16, .masks = {0x1f, 0x3e0, 0xfc00, 0}},
         {0xf0, 0xfd, 0xe0, 0x07},
         {255, 0, 255, 255, 4, 132, 123, 255}},
        {"luminance and two signed bytes",
         {.formatFlags = 0x40000, .masks = {0xff, 0xff00, 0xff0000, 0}},
         {0x80, 0x7f, 10, 99, 0, 0xff, 20, 99},
         {10, 0, 255, 255, 20, 128, 127, 255}},
    };
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        DdsFields fields = row.fields;
        fields.width = 1;
        fields.height = 2;
        ASSERT_TRUE(test::WriteFile(path, MakeDds(fields, row.stored)));
        DdsTexture texture;
        ASSERT_TRUE(LoadDds(path, texture));
        EXPECT_EQ(texture.Metadata().format, DdsFormat::Rgba8Unorm);
        EXPECT_EQ(PixelsOf(texture.Item(0), 4, 2), row.expected);
        Bytes cut = row.stored;
        cut.pop_back();
        ASSERT_TRUE(test::WriteFile(path, MakeDds(fields, cut)));
        EXPECT_FALSE(LoadDds(path, texture));
    }
}

struct SaveCase {
    DdsFormat format;
    std::uint32_t width, height, arraySize;
    DdsFields header;  ///< what other programs read
    std::size_t itemBytes;
};

TEST(DdsSave, TheHeaderOtherProgramsKnow) {
    const DdsFields picture = {
        .width = 5, .height = 3, .depth = 1, .mipLevels = 1, .flags = 0x2100f, .pitch = 20};
    DdsFields wide = picture;
    wide.pitch = 40;
    DdsFields blocks = picture;
    blocks.flags = 0xa1007;
    blocks.pitch = 16;
    DdsFields cube = picture;
    cube.width = cube.height = 4;
    cube.pitch = 16;
    cube.caps2 = kCubeMap;
    const SaveCase cases[] = {
        {DdsFormat::Rgba8Unorm, 5, 3, 1, picture, 60},
        {DdsFormat::Rgba16Unorm, 5, 3, 1, Coded(36, wide), 120},
        {DdsFormat::Rgba16Float, 5, 3, 1, Coded(113, wide), 120},
        {DdsFormat::Bc1, 5, 3, 1, Coded(FourCc("DXT1"), blocks), 16},
        {DdsFormat::Rgba8Unorm, 4, 4, 6, cube, 64},
        {DdsFormat::Rgba16Uint, 5, 3, 1, Dx10({.format = 12}, wide), 120},
    };
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE("case " + std::to_string(i));
        const SaveCase& row = cases[i];
        DdsMetadata metadata;
        metadata.width = row.width;
        metadata.height = row.height;
        metadata.arraySize = row.arraySize;
        metadata.format = row.format;
        const Bytes pixels = Counting(row.itemBytes * row.arraySize);
        std::vector<DdsItem> items;
        const std::size_t rows = row.format == DdsFormat::Bc1 ? (row.height + 3) / 4 : row.height;
        for (std::uint32_t item = 0; item < row.arraySize; ++item)
            items.push_back({reinterpret_cast<const std::byte*>(pixels.data()) + item * row.itemBytes,
                             row.width, row.height, row.itemBytes / rows, row.itemBytes});
        // An older, longer file under the name leaves nothing behind.
        ASSERT_TRUE(test::WriteFile(path, Bytes(5000, 1)));
        ASSERT_TRUE(SaveDds(path, metadata, items));
        Bytes expected = MakeDds(row.header, pixels);
        if (row.arraySize == 6) expected[108] = 8;  // "complex"
        EXPECT_EQ(test::ReadFile(path), expected);
    }
    DdsMetadata metadata;
    metadata.width = metadata.height = 1;
    metadata.format = DdsFormat::Rgba8Unorm;
    const Bytes pixel = {1, 2, 3, 4};
    const DdsItem item = {reinterpret_cast<const std::byte*>(pixel.data()), 1, 1, 4, 4};
    EXPECT_FALSE(SaveDds(folder / L"no such folder/a.dds", metadata, {&item, 1}));
}

TEST(DdsSave, RowsFurtherApartThanTheyAreLong) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    DdsMetadata metadata;
    metadata.width = metadata.height = 2;
    metadata.format = DdsFormat::Rgba8Unorm;
    const Bytes pixels = Counting(24);
    const DdsItem item = {reinterpret_cast<const std::byte*>(pixels.data()), 2, 2, 12, 24};
    ASSERT_TRUE(SaveDds(path, metadata, {&item, 1}));
    DdsTexture texture;
    ASSERT_TRUE(LoadDds(path, texture));
    EXPECT_EQ(PixelsOf(texture.Item(0), 8, 2), PixelsOf(item, 8, 2));
}

}  // namespace
}  // namespace skyvault
