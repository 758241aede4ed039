// The parts that picture files are read and written with.

#include <gtest/gtest.h>

#include "codecs/gif_frames.h"
#include "codecs/indexed_picture.h"
#include "codecs/picture_header.h"
#include "codecs/tga_reader.h"
#include "image/area_scale.h"
#include "platform/debug_line.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

TEST(PictureHeader, KnowsKindsBySignatureAndRefusesContradictions) {
    const char* const kinds[] = {"Unknown", "Bmp", "Jpeg", "Png", "Tiff", "Gif", "Heif", "Webp"};
    for (const DataRow& row : DataGroup("pictures", "header")) {
        const PictureHeader header = ReadPictureHeader(AsBytes(FromHex(row[3])));
        EXPECT_EQ(std::string(kinds[static_cast<int>(header.kind)]) + (header.sound ? " sound" : " -"),
                  row[2])
            << row.where;
    }
}

/// 2 × 2 pixels of 24 bits, top row first: themselves, or in a palette of two.
Bytes MadeTga(bool mapped) {
    return FromHex(DataGroup("pictures", "tga")[mapped ? 4 : 0][3]);
}

bool Read(const Bytes& tga, Image& image) {
    return ReadTga(AsBytes(tga), L"a.tga", image);
}

TEST(Tga, PixelsComeFromTheRowsThatHoldThem) {
    const TemporaryFolder folder;
    for (const DataRow& row : DataGroup("pictures", "tga")) {
        const DebugLineCapture capture;
        ExpectPixels(folder / L"some.TgA", row);
        const bool topDown = row[1].ends_with("top row first");
        EXPECT_EQ(capture.Text(),
                  topDown ? L"TGA some.TgA is top-down: Y\n" : L"TGA some.TgA is top-down: N\n");
        EXPECT_EQ(Loaded(folder / L"some.TgA").topDown, topDown) << row.where;
    }
}

TEST(Tga, HeaderBytesDecide) {
    for (const DataRow& row : DataTable("tga_headers")) {
        SCOPED_TRACE(row.where + ": " + row[0]);
        Bytes tga = MadeTga(row[1] == "mapped");
        tga.at(Numbers(row[2])[0]) = static_cast<std::uint8_t>(Numbers(row[2])[1]);
        const DebugLineCapture capture;
        Image image;
        const std::string read = Read(tga, image) ? "read" : "refused";
        EXPECT_EQ(read + (capture.Text().empty() ? " silent" : " line"), row[3]);
    }
}

TEST(Tga, CutFilesAreRefusedOrZeroAndCannotClaimMuchMemory) {
    const DebugLineCapture quiet;
    Image image;
    for (const bool mapped : {false, true}) {
        Bytes tga = MadeTga(mapped);
        for (std::size_t size = 0; size < tga.size(); ++size) {
            image.Clear();
            ASSERT_EQ(Read(Bytes(tga.data(), tga.data() + size), image), mapped && size >= 18) << size;
            // The last pixel has lost its index.
            EXPECT_EQ(image.GetPixel8(1, 1), Color8()) << size;
        }
        tga[12] = tga[14] = 0xff;
        tga[13] = tga[15] = 0x7f;
        image.Clear();
        EXPECT_TRUE(!Read(tga, image) && image.pixels == nullptr) << mapped;
    }
    // A large picture that its file accounts for only in part is read.
    for (const std::uint8_t high : Bytes{8, 16}) {  // 2050 × 2050, 4098 × 4098
        Bytes part = MadeTga(true);
        part[13] = part[15] = high;
        EXPECT_EQ(Read(part, image), high == 8);
    }
}

TEST(GifFrames, CountsUpToTheFirstDamage) {
    const Bytes whole = FromHex(DataGroup("pictures", "gif").back()[3]);
    GifFrame frame;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::uint32_t count = ReadGifFrames(AsBytes(whole).first(size), 0, frame);
        EXPECT_LE(count, size < 29 ? 0u : 2u) << size;
        EXPECT_GE(count, size >= whole.size() - 1 ? 2u : 0u) << size;
    }
    EXPECT_TRUE(frame.delay == 5 && frame.disposal == 2 && frame.left == 1 && frame.top == 2);
    GifFrame untouched{.delay = 99};
    EXPECT_EQ(ReadGifFrames(AsBytes(whole), 2, untouched), 2u);
    EXPECT_EQ(untouched.delay, 99u);
}

TEST(AreaScale, MeansAreKeptAndFractionsOfTheSizeDropped) {
    EXPECT_EQ(FitInto({1000, 3}, {100, 100}), (PictureSize{100, 0}));
    EXPECT_EQ(FitInto({3, 2}, {5, 5}), (PictureSize{5, 3}));
    EXPECT_EQ(FitInto({1, 1}, {0xffffffff, 0xffffffff}), (PictureSize{4294967040u, 4294967040u}));
    // Rows of grey: all four of a 2 × 2 area, then two thirds of a pixel and one third of the next.
    const auto scaled = [](std::uint32_t width, const Bytes& values, std::uint32_t newWidth) {
        Image image(width, static_cast<std::uint32_t>(values.size()) / width, Grey8);
        std::memcpy(image.pixels.get(), values.data(), values.size());
        const Image result = ScaleByArea(image, newWidth, 1);
        return std::pair{result.GetPixel8(0, 0).red, result.GetPixel8(1, 0).red};
    };
    EXPECT_EQ(scaled(4, {0, 255, 20, 30, 255, 0, 30, 40}, 2),
              (std::pair<std::uint8_t, std::uint8_t>{128, 30}));
    EXPECT_EQ(scaled(3, {0, 90, 180}, 2), (std::pair<std::uint8_t, std::uint8_t>{30, 150}));
    EXPECT_FALSE(ScaleByArea(RandomImage(3, 1, Grey8), 0, 1).IsValid());
    EXPECT_FALSE(ScaleByArea(Image(), 1, 1).IsValid());
}

Image Shown(const IndexedPicture& indexed, const Image& image) {
    Image shown(image.width, image.height, Rgba8);
    const std::byte* index = indexed.indices.get();
    ForPixels(shown, [&](int x, int y) {
        shown.SetPixel(x, y, indexed.colours.at(std::to_integer<std::size_t>(*index++)));
    });
    return shown;
}

TEST(IndexedPicture, ManyColoursAreNearOnTheWholeAndTheTransparentOneHasRoom) {
    const Image many = SmoothPicture(Rgb8, 128, 128);
    IndexedPicture indexed;
    ASSERT_TRUE(MakeIndexed(many, Rgb8, indexed));
    EXPECT_EQ(indexed.colours.size(), 256u);
    EXPECT_EQ(indexed.transparent, -1);
    // Dithering makes the mean of a neighbourhood right.
    const Image wanted = ScaleByArea(many, 16, 16), means = ScaleByArea(Shown(indexed, many), 16, 16);
    for (int at = 0; at < 14 * 14; ++at) {
        const Color8 a = wanted.GetPixel8(1 + at % 14, 1 + at / 14),
                     b = means.GetPixel8(1 + at % 14, 1 + at / 14);
        ASSERT_TRUE(std::abs(a.red - b.red) <= 6 && std::abs(a.green - b.green) <= 6 &&
                    std::abs(a.blue - b.blue) <= 6)
            << at;
    }

    // 256 colours, and 16 pixels that are transparent.
    Image few(16, 17, Rgba8);
    const auto part = [](int value) { return static_cast<std::uint8_t>(value); };
    ForPixels(few, [&](int x, int y) {
        few.SetPixel(x, y, Color8(part(x * 16), part(y * 15), 7, y < 16 ? 128 : 127));
    });
    // They are one too many with the transparent one.
    ASSERT_TRUE(MakeIndexed(few, Rgba8, indexed));
    EXPECT_EQ(indexed.colours.size(), 256u);
    ASSERT_GE(indexed.transparent, 0);
    for (const int y : {15, 16}) EXPECT_EQ(Shown(indexed, few).GetPixel8(3, y).alpha, y == 15 ? 255 : 0);

    const DebugLineCapture quiet;
    for (int allowed = 0; allowed < 2; ++allowed) {
        FailAllocationsAfter(allowed);
        EXPECT_FALSE(MakeIndexed(few, Rgb16, indexed)) << allowed;
        FailAllocationsAfter(-1);
    }
}

}  // namespace
}  // namespace skyvault::test
