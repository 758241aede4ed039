#include "image/tga_reader.h"

#include <gtest/gtest.h>

#include "image/picture_files.h"
#include "platform/debug_line.h"
#include "tests/made_files.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::TemporaryFolder;

using test::Bytes;
using test::TemporaryFolder;

/// 2 × 2, 24 bits, top row first: red, green / blue, white. A TGA stores blue first.
Bytes TrueColour() {
    Bytes tga = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 2, 0, 24, 0x20};
    test::Add(tga, {0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255});
    return tga;
}

/// 2 × 2 with a palette of two 24-bit entries, in the file's order (1, 2, 3) and (4, 5, 6).
Bytes ColourMapped() {
    Bytes tga = {0, 1, 1, 0, 0, 2, 0, 24, 0, 0, 0, 0, 2, 0, 2, 0, 8, 0x20};
    test::Add(tga, {1, 2, 3, 4, 5, 6, 0, 1, 1, 0});
    return tga;
}

bool Read(const Bytes& tga, Image& image) {
    return ReadTga({reinterpret_cast<const std::byte*>(tga.data()), tga.size()}, L"a.tga", image);
}

TEST(Tga, TrueColourIsTakenAsItStands) {
    const DebugLineCapture capture;
    Image image;
    ASSERT_TRUE(Read(TrueColour(), image));
    EXPECT_EQ(image.format, PixelFormat::Rgb8);
    EXPECT_EQ(image.topDown, 1);
    EXPECT_EQ(image.GetPixel8(0, 0), Color8(255, 0, 0, 255));
    EXPECT_EQ(image.GetPixel8(1, 0), Color8(0, 255, 0, 255));
    EXPECT_EQ(image.GetPixel8(0, 1), Color8(0, 0, 255, 255));
    EXPECT_EQ(capture.Text(), L"TGA a.tga is top-down: Y\n");

    Bytes four = TrueColour();
    four[12] = four[14] = 1;
    four[16] = 32;
    ASSERT_TRUE(Read(four, image));
    EXPECT_EQ(image.format, PixelFormat::Rgba8);
    EXPECT_EQ(image.GetPixel8(0, 0), Color8(255, 0, 0, 0));
}

TEST(Tga, BottomUpFilesComeOutTopRowFirst) {
    const DebugLineCapture capture;
    for (Bytes tga : {TrueColour(), ColourMapped()}) {
        Image topDown, bottomUp;
        ASSERT_TRUE(Read(tga, topDown));
        tga[17] = 0;
        ASSERT_TRUE(Read(tga, bottomUp));
        EXPECT_EQ(bottomUp.topDown, 0);
        for (int x = 0; x < 2; ++x) {
            EXPECT_EQ(bottomUp.GetPixel8(x, 0), topDown.GetPixel8(x, 1));
            EXPECT_EQ(bottomUp.GetPixel8(x, 1), topDown.GetPixel8(x, 0));
        }
    }
    EXPECT_NE(capture.Text().find(L"TGA a.tga is top-down: N\n"), std::wstring::npos);
}

TEST(Tga, PalettesHaveRedAndBlueExchanged) {
    const DebugLineCapture quiet;
    Image image;
    ASSERT_TRUE(Read(ColourMapped(), image));
    EXPECT_EQ(image.format, PixelFormat::Rgb8);
    EXPECT_EQ(image.GetPixel8(0, 0), Color8(1, 2, 3, 255));
    EXPECT_EQ(image.GetPixel8(1, 0), Color8(4, 5, 6, 255));
    EXPECT_EQ(image.GetPixel8(1, 1), Color8(1, 2, 3, 255));

    Bytes wide = {0, 1, 1, 0, 0, 2, 0, 32, 0, 0, 0, 0, 3, 0, 1, 0, 8, 0x20, 1, 2, 3, 9, 4, 5, 6, 9, 1, 0, 2};
    ASSERT_TRUE(Read(wide, image));
    EXPECT_EQ(image.GetPixel8(0, 0), Color8(4, 5, 6, 255));
    EXPECT_EQ(image.GetPixel8(1, 0), Color8(1, 2, 3, 255));
    EXPECT_EQ(image.GetPixel8(2, 0), Color8(0, 0, 0, 255)) << "an index beyond the palette";
}

TEST(Tga, HeaderBytesDecide) {
    const struct {
        const char* what;
        bool mapped;
        std::size_t at;
        std::uint8_t value;
        bool readable, lineWritten;
    } rows[] = {
        {"an ID field is not looked at", false, 0, 4, true, true},
        {"colour map of unknown type", false, 1, 2, false, false},
        {"true colour with a colour map", false, 1, 1, false, true},
        {"colour-mapped without a map", true, 1, 0, false, true},
        {"no picture", false, 2, 0, false, false},
        {"grey", false, 2, 3, false, false},
        {"packed, colour-mapped", false, 2, 9, false, false},
        {"packed, true colour", false, 2, 10, false, false},
        {"packed, grey", false, 2, 11, false, false},
        {"true colour as colour-mapped", false, 2, 1, false, true},
        {"first entry is not looked at", true, 3, 1, true, true},
        {"empty colour map", true, 5, 0, false, true},
        {"colour map longer than the file", true, 6, 255, true, true},
        {"entries of 16 bits", true, 7, 16, false, true},
        {"entries of 32 bits", true, 7, 32, true, true},
        {"origin is not looked at", false, 8, 9, true, true},
        {"no width", false, 12, 0, false, false},
        {"negative width", false, 13, 0x80, false, false},
        {"width beyond the data", false, 12, 3, false, true},
        {"no height", false, 14, 0, false, false},
        {"negative height", false, 15, 0xff, false, false},
        {"height beyond the data", false, 15, 0x7f, false, true},
        {"colour-mapped beyond the data", true, 12, 200, true, true},
        {"16 bits", false, 16, 16, false, false},
        {"8 bits of true colour", false, 16, 8, false, true},
        {"32 bits beyond the data", false, 16, 32, false, true},
        {"24 bits of indices", true, 16, 24, false, true},
        {"other descriptor bits", false, 17, 0x2f, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bytes tga = row.mapped ? ColourMapped() : TrueColour();
        tga[row.at] = row.value;
        const DebugLineCapture capture;
        Image image;
        EXPECT_EQ(Read(tga, image), row.readable);
        EXPECT_EQ(!capture.Text().empty(), row.lineWritten);
    }
}

TEST(Tga, EveryTruncationIsRefusedOrZero) {
    const DebugLineCapture quiet;
    const Bytes whole = TrueColour(), mapped = ColourMapped();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Image image;
        EXPECT_FALSE(Read(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), image))
            << size;
    }
    for (std::size_t size = 0; size < mapped.size(); ++size) {
        Image image;
        const bool ok =
            Read(Bytes(mapped.begin(), mapped.begin() + static_cast<std::ptrdiff_t>(size)), image);
        ASSERT_EQ(ok, size >= 18) << size;
        if (!ok) continue;
        // The last pixel has lost its index.
        EXPECT_EQ(image.GetPixel8(1, 1), Color8(0, 0, 0, 255)) << size;
    }
}

TEST(Tga, FewBytesCannotClaimMuchMemory) {
    const DebugLineCapture quiet;
    for (Bytes tga : {TrueColour(), ColourMapped()}) {
        tga[12] = tga[14] = 0xff;
        tga[13] = tga[15] = 0x7f;
        FailAllocationsAfter(0);
        const bool mapped = tga[2] == 1;
        Image image;
        EXPECT_FALSE(Read(tga, image)) << mapped;
        FailAllocationsAfter(-1);
        EXPECT_FALSE(Read(tga, image)) << mapped;
        EXPECT_EQ(image.pixels, nullptr) << mapped;
    }
    // A large picture that its file accounts for only in part is read.
    Bytes part = ColourMapped();
    part[13] = part[15] = 8;  // 2050 × 2050
    Image image;
    EXPECT_TRUE(Read(part, image));
    EXPECT_EQ(image.width, 2050u);
    part[13] = part[15] = 16;  // 4098 × 4098
    EXPECT_FALSE(Read(part, image));
}

TEST(Tga, FilesAreReadByExtension) {
    const TemporaryFolder folder;
    const DebugLineCapture capture;
    ASSERT_TRUE(test::WriteFile(folder / L"some.TgA", TrueColour()));
    EXPECT_EQ(LoadPicture(folder / L"some.TgA").GetPixel8(0, 0), Color8(255, 0, 0, 255));
    EXPECT_EQ(capture.Text(), L"TGA some.TgA is top-down: Y\n");
    ASSERT_TRUE(test::WriteFile(folder / L"bad.tga", {1, 2, 3}));
    const Image bad = LoadPicture(folder / L"bad.tga");
    EXPECT_EQ(bad.format, PixelFormat::None);
    EXPECT_EQ(bad.width, 0u);
}

}  // namespace
}  // namespace skyvault
