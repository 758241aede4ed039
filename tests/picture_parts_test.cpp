// The parts that picture files are read and written with.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "image/area_scale.h"
#include "image/gif_frames.h"
#include "image/indexed_picture.h"
#include "image/picture_codec.h"
#include "image/picture_header.h"
#include "tests/made_files.h"

namespace skyvault {
namespace {

using test::Bytes;
using enum PixelFormat;

std::span<const std::byte> AsBytes(const Bytes& bytes) {
    return {reinterpret_cast<const std::byte*>(bytes.data()), bytes.size()};
}

TEST(PictureHeader, KnowsKindsBySignatureAndRefusesContradictions) {
    const struct {
        const char* what;
        Bytes bytes;
        PictureKind kind;
        bool sound;
    } rows[] = {
        {"empty", {}, PictureKind::Unknown, false},
        {"text", {'h', 'e', 'l', 'l', 'o'}, PictureKind::Unknown, false},
        {"jpeg", {0xff, 0xd8, 0xff, 0xe0}, PictureKind::Jpeg, true},
        {"png", test::MakePng(3, 4, 8, 2, {}), PictureKind::Png, true},
        {"png without height", test::MakePng(3, 0, 8, 2, {}), PictureKind::Png, false},
        {"png wider than a number", test::MakePng(0x80000000u, 4, 8, 2, {}), PictureKind::Png, false},
        {"gif", test::MakeGif({{1, 0, 0, 0}}), PictureKind::Gif, true},
        {"tiff", {'I', 'I', 42, 0, 8, 0, 0, 0}, PictureKind::Tiff, true},
        {"tiff the other way round", {'M', 'M', 0, 42}, PictureKind::Tiff, true},
        {"large tiff", {'I', 'I', 43, 0}, PictureKind::Tiff, true},
        {"heif", {0, 0, 0, 24, 'f', 't', 'y', 'p', 'h', 'e', 'i', 'c'}, PictureKind::Heif, true},
        {"movie", {0, 0, 0, 24, 'f', 't', 'y', 'p', 'q', 't', ' ', ' '}, PictureKind::Unknown, false},
        {"webp", {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'E', 'B', 'P'}, PictureKind::Webp, true},
        {"sound", {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'}, PictureKind::Unknown, false},
        {"bmp", test::MakeBmp(3, 4, 24, {}), PictureKind::Bmp, true},
        {"bmp top row first", test::MakeBmp(3, -4, 24, {}), PictureKind::Bmp, true},
        {"bmp of negative width", test::MakeBmp(-3, 4, 24, {}), PictureKind::Bmp, false},
        {"bmp of lowest height", test::MakeBmp(3, INT32_MIN, 24, {}), PictureKind::Bmp, false},
        {"bmp of 7 bits", test::MakeBmp(3, 4, 7, {}), PictureKind::Bmp, false},
        {"bmp with too large a palette", test::MakeBmp(3, 4, 1, {}, Bytes(12)), PictureKind::Bmp, false},
    };
    for (const auto& row : rows) {
        const PictureHeader header = ReadPictureHeader(AsBytes(row.bytes));
        EXPECT_EQ(header.kind, row.kind) << row.what;
        EXPECT_EQ(header.sound, row.sound) << row.what;
    }
    Bytes packed = test::MakeBmp(3, 4, 24, {});
    packed[30] = 1;  // run lengths are for 8 bits
    EXPECT_FALSE(ReadPictureHeader(AsBytes(packed)).sound);
    Bytes masks = test::MakeBmp(3, 4, 32, Bytes(60));
    masks[30] = 3;
    EXPECT_FALSE(ReadPictureHeader(AsBytes(masks)).sound) << "other masks than blue, green, red";
}

TEST(GifFrames, CountsUpToTheFirstDamage) {
    const Bytes whole = test::MakeGif({{5, 2, 1, 2}, {0, 1, 3, 3}});
    GifFrame frame;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::uint32_t count = ReadGifFrames(AsBytes(whole).first(size), 0, frame);
        EXPECT_LE(count, 2u);
        if (size < 29) {
            EXPECT_EQ(count, 0u) << size;
        }
        if (size >= whole.size() - 1) {
            EXPECT_EQ(count, 2u) << size;
        }
    }
    EXPECT_EQ(frame.delay, 5u);
    EXPECT_EQ(frame.disposal, 2u);
    EXPECT_EQ(frame.left, 1u);
    EXPECT_EQ(frame.top, 2u);
    GifFrame untouched;
    untouched.delay = 99;
    EXPECT_EQ(ReadGifFrames(AsBytes(whole), 2, untouched), 2u);
    EXPECT_EQ(untouched.delay, 99u);
}

TEST(FitInto, KeepsTheAspectRatioAndDropsFractions) {
    const struct {
        PictureSize size, target, fitted;
    } rows[] = {{{4000, 2000}, {1000, 1000}, {1000, 500}},
                {{100, 200}, {1000, 50}, {25, 50}},
                {{10, 10}, {25, 30}, {25, 25}},
                {{1000, 3}, {100, 100}, {100, 0}},
                {{3, 2}, {5, 5}, {5, 3}},
                {{1, 1}, {0xffffffff, 0xffffffff}, {4294967040u, 4294967040u}}};
    for (const auto& row : rows) {
        EXPECT_EQ(FitInto(row.size, row.target), row.fitted) << row.size.width << " x " << row.size.height;
    }
}

TEST(AreaScale, ConstantsStayAndMeansAreKept) {
    for (const PixelFormat format :
         {Grey8, Grey16, GreyHalf, Rgb8, Rgb16, RgbHalf, Rgba8, Rgba16, RgbaHalf}) {
        SCOPED_TRACE(static_cast<int>(format));
        Image constant(7, 5, format);
        constant.Fill(PixelValue(Color8(200, 100, 50, 25)));
        for (const auto& [width, height] : {std::pair{3u, 2u}, {1u, 1u}, {7u, 5u}, {20u, 11u}}) {
            const Image scaled = ScaleByArea(constant, width, height);
            ASSERT_TRUE(scaled.IsValid());
            for (std::uint32_t y = 0; y < height; ++y) {
                for (std::uint32_t x = 0; x < width; ++x) {
                    ASSERT_EQ(scaled.GetPixel8(static_cast<int>(x), static_cast<int>(y)),
                              constant.GetPixel8(0, 0));
                }
            }
        }
    }
    Image board(4, 2, Grey8);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 4; ++x) {
            const auto value = static_cast<std::uint8_t>(x < 2 ? ((x + y) % 2 ? 255 : 0) : 10 * (x + y));
            board.SetPixel(x, y, Color8(value, value, value, 255));
        }
    }
    const Image half = ScaleByArea(board, 2, 1);
    EXPECT_EQ(half.GetPixel8(0, 0).red, 128);
    EXPECT_EQ(half.GetPixel8(1, 0).red, 30);
    // Two thirds of the first pixel and one of the second, and so on.
    Image three(3, 1, Grey8), scaled;
    for (int x = 0; x < 3; ++x) three.SetPixel(x, 0, Color8(static_cast<std::uint8_t>(90 * x), 0, 0, 255));
    scaled = ScaleByArea(three, 2, 1);
    EXPECT_EQ(scaled.GetPixel8(0, 0).red, 30);
    EXPECT_EQ(scaled.GetPixel8(1, 0).red, 150);
    EXPECT_FALSE(ScaleByArea(three, 0, 1).IsValid());
    EXPECT_FALSE(ScaleByArea(Image(), 1, 1).IsValid());
}

Color8 Shown(const IndexedPicture& indexed, const Image& image, int x, int y) {
    return indexed.colours.at(std::to_integer<std::size_t>(
        indexed.indices[static_cast<std::size_t>(y) * image.width + static_cast<std::size_t>(x)]));
}

TEST(IndexedPicture, ManyColoursAreNearOnTheWholeAndFewAreExact) {
    Image many(128, 128, Rgb8);
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x) {
            many.SetPixel(x, y,
                          Color8(static_cast<std::uint8_t>(2 * x), static_cast<std::uint8_t>(2 * y),
                                 static_cast<std::uint8_t>(x + y), 255));
        }
    }
    IndexedPicture indexed;
    ASSERT_TRUE(MakeIndexed(many, Rgb8, indexed));
    EXPECT_EQ(indexed.colours.size(), 256u);
    EXPECT_EQ(indexed.transparent, -1);
    // Dithering makes the mean of a neighbourhood right.
    for (int blockY = 8; blockY < 120; blockY += 8) {
        for (int blockX = 8; blockX < 120; blockX += 8) {
            int wanted[3] = {}, shown[3] = {};
            for (int y = blockY; y < blockY + 8; ++y) {
                for (int x = blockX; x < blockX + 8; ++x) {
                    const Color8 a = many.GetPixel8(x, y), b = Shown(indexed, many, x, y);
                    wanted[0] += a.red, wanted[1] += a.green, wanted[2] += a.blue;
                    shown[0] += b.red, shown[1] += b.green, shown[2] += b.blue;
                }
            }
            for (int i = 0; i < 3; ++i)
                ASSERT_NEAR(wanted[i] / 64.0, shown[i] / 64.0, 6) << blockX << " " << blockY;
        }
    }

    Image few(16, 17, Rgba8);
    for (int y = 0; y < 17; ++y) {
        for (int x = 0; x < 16; ++x) {
            few.SetPixel(x, y,
                         Color8(static_cast<std::uint8_t>(x * 16), static_cast<std::uint8_t>(y * 15), 7,
                                static_cast<std::uint8_t>(y == 16 ? 127 : 128)));
        }
    }
    // 256 colours and the transparent one are one too many, without it they fit.
    ASSERT_TRUE(MakeIndexed(few, Rgba8, indexed));
    EXPECT_EQ(indexed.colours.size(), 256u);
    ASSERT_GE(indexed.transparent, 0);
    EXPECT_EQ(Shown(indexed, few, 3, 16).alpha, 0);
    EXPECT_EQ(Shown(indexed, few, 3, 15).alpha, 255);
    const Image opaque = few.CopyRect(PixelRect{0, 0, 15, 15});
    ASSERT_TRUE(MakeIndexed(opaque, Rgba8, indexed));
    EXPECT_EQ(indexed.transparent, -1);
    EXPECT_EQ(Shown(indexed, opaque, 5, 9), Color8(80, 135, 7, 255));
}

TEST(IndexedPicture, LackOfMemoryIsAResult) {
    Image image(64, 64, Rgba16);
    image.Fill(PixelValue(Color8(1, 2, 3, 255)));
    for (int allowed = 0; allowed < 2; ++allowed) {
        FailAllocationsAfter(allowed);
        IndexedPicture indexed;
        EXPECT_FALSE(MakeIndexed(image, Rgb8, indexed)) << allowed;
        FailAllocationsAfter(-1);
    }
}

}  // namespace
}  // namespace skyvault
