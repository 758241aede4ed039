#include "codecs/dds_container.h"

#include <gtest/gtest.h>

#include "platform/debug_line.h"
#include "tests/made_dds.h"

namespace skyvault::test {
namespace {

TEST(DdsHeader, WhatItSaysAndWhichAreRefused) {
    const TemporaryFolder folder;
    for (const DataRow& row : DataGroup("dds", "header")) {
        ASSERT_TRUE(WriteDds(folder / L"a.dds", row[2]));
        DdsMetadata m;
        const bool read = ReadDdsMetadata(folder / L"a.dds", m);
        std::ostringstream told;
        told << m.width << " " << m.height << " " << m.depth << " " << m.arraySize << " " << m.mipLevels
             << " " << static_cast<std::uint32_t>(m.format);
        EXPECT_EQ(read ? told.str() : "refused", row[3]) << row.where;
    }
    DdsMetadata metadata;
    for (const char* const fields : {"", "dx10=28"}) {
        const Bytes whole = MakeDds(fields);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            ASSERT_TRUE(WriteFile(folder / L"cut.dds", Bytes(whole.data(), whole.data() + size)));
            ASSERT_FALSE(ReadDdsMetadata(folder / L"cut.dds", metadata)) << size;
        }
    }
}

Bytes PixelsOf(const DdsItem& item, std::size_t rowBytes, std::uint32_t rows) {
    Bytes pixels;
    for (std::uint32_t y = 0; y < rows; ++y) {
        const auto* row = reinterpret_cast<const std::uint8_t*>(item.pixels + y * item.rowPitch);
        pixels.insert(pixels.end(), row, row + rowBytes);
    }
    return pixels;
}

/// The file is refused where there is no memory, and whether some was asked for before.
void ExpectRefused(const std::wstring& path, bool asked = false) {
    const DebugLineCapture lines;
    DdsTexture texture;
    FailAllocationsAfter(0);
    EXPECT_FALSE(LoadDds(path, texture));
    FailAllocationsAfter(-1);
    EXPECT_EQ(lines.Text().empty(), !asked);
}

TEST(DdsLoad, EveryItemsLargestLevelAndNoFileThatIsTooShort) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const DataRow& row : DataGroup("dds", "load")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::uint32_t> told = Numbers(row[3]);
        const std::size_t size = told[0], itemPitch = told[1], rowBytes = told[2],
                          itemBytes = rowBytes * told[3];
        const Bytes pixels = Noise(size);
        DdsTexture texture;
        ASSERT_TRUE(WriteDds(path, row[2], pixels) && LoadDds(path, texture));
        const DdsMetadata& metadata = texture.Metadata();
        EXPECT_EQ(metadata.arraySize * itemPitch, size);
        for (std::uint32_t i = 0; i < metadata.arraySize; ++i) {
            const DdsItem item = texture.Item(i);
            ASSERT_NE(item.pixels, nullptr);
            EXPECT_TRUE(item.width == metadata.width && item.height == metadata.height);
            EXPECT_EQ(item.slicePitch, itemBytes);
            const std::uint8_t* const start = pixels.data() + i * itemPitch;
            EXPECT_EQ(PixelsOf(item, rowBytes, told[3]), Bytes(start, start + itemBytes));
        }
        EXPECT_EQ(texture.Item(metadata.arraySize).pixels, nullptr);

        EXPECT_TRUE(WriteDds(path, row[2], Join({pixels, {0}})) && LoadDds(path, texture));
        for (const std::size_t less : {size - 1, size / 2, std::size_t{0}}) {
            ASSERT_TRUE(WriteDds(path, row[2], Bytes(pixels.data(), pixels.data() + less)));
            ExpectRefused(path);
        }
        EXPECT_FALSE(LoadDds(path, texture));
        EXPECT_NE(texture.Item(0).pixels, nullptr) << "what was loaded before stays";
    }
    for (const DataRow& row : DataGroup("dds", "claim")) {
        SCOPED_TRACE(row.where);
        ASSERT_TRUE(WriteDds(path, row[2], Bytes(400)));
        ExpectRefused(path);
    }
}

TEST(DdsLoad, OldStoragesBecomeRedGreenBlueAlpha) {
    Bytes palette;
    for (std::uint32_t i = 0; i < 256; ++i) palette = Join({palette, Little(1, {i, 255 - i, 9, 0})});
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const DataRow& row : DataGroup("dds", "storage")) {
        SCOPED_TRACE(row.where);
        const std::string fields = "width=1 height=2 " + row[2];
        Bytes stored = Join({row[1].starts_with("palette") ? palette : Bytes(), FromHex(row[3])});
        DdsTexture texture;
        ASSERT_TRUE(WriteDds(path, fields, stored) && LoadDds(path, texture));
        EXPECT_EQ(texture.Metadata().format, DdsFormat::Rgba8Unorm);
        EXPECT_EQ(PixelsOf(texture.Item(0), 4, 2), FromHex(row[4]));
        ExpectRefused(path, true);
        stored.pop_back();
        ASSERT_TRUE(WriteDds(path, fields, stored));
        ExpectRefused(path);
    }
}

TEST(DdsSave, TheHeaderOtherProgramsKnow) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const DataRow& row : DataGroup("dds", "save")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::uint32_t> told = Numbers(row[3]);
        const DdsMetadata metadata{.width = told[1],
                                   .height = told[2],
                                   .arraySize = told[3],
                                   .format = static_cast<DdsFormat>(told[0])};
        const Bytes pixels = Noise(std::size_t{told[3]} * told[4]);
        const std::size_t rows = metadata.format == DdsFormat::Bc1 ? 1 : metadata.height,
                          rowBytes = told[4] / rows;
        const Bytes expected =
            MakeDds("width=" + std::to_string(told[1]) + " height=" + std::to_string(told[2]) +
                        " depth=1 levels=1 " + row[2],
                    pixels);
        // The rows as they are, and further apart than they are long.
        for (const std::size_t pitch : {rowBytes, rowBytes + 4}) {
            Bytes spread(pixels.size() / rowBytes * pitch, 7);
            for (std::size_t y = 0; y < pixels.size() / rowBytes; ++y)
                std::copy_n(&pixels[y * rowBytes], rowBytes, &spread[y * pitch]);
            std::vector<DdsItem> items;
            for (std::size_t i = 0; i < told[3]; ++i)
                items.push_back(
                    {AsBytes(spread).data() + i * rows * pitch, told[1], told[2], pitch, pitch * rows});
            // An older, longer file under the name leaves nothing behind.
            ASSERT_TRUE(WriteFile(path, Bytes(5000, 1)) && SaveDds(path, metadata, items));
            EXPECT_EQ(ReadFile(path), expected);
            EXPECT_FALSE(SaveDds(folder / L"no such folder/a.dds", metadata, items));
        }
    }
}

}  // namespace
}  // namespace skyvault::test
