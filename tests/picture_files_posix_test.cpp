#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "image/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/made_files.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::TemporaryFolder;

using test::Bytes;
using test::TemporaryFolder;
using enum PixelFormat;

Bytes Floats(std::initializer_list<float> values) {
    Bytes bytes;
    for (const float value : values) {
        std::uint32_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        test::AddLittle(bytes, bits, 4);
    }
    return bytes;
}

TEST(PictureFilesPosix, FloatsAreShownAndHalvesKept) {
    const TemporaryFolder folder;
    // Linear light: 0.5 is 188 on the screen.
    ASSERT_TRUE(test::WriteFile(
        folder / L"float.tif",
        test::MakeTiff(2, 1, 2, {32, 32, 32}, Floats({0.5f, 0, 9, -1, 1, 0.25f}), {{339, {3, 3, 3}}})));
    const Image image = LoadPicture(folder / L"float.tif");
    EXPECT_EQ(image.format, Rgba8);
    EXPECT_EQ(image.GetPixel8(0, 0), Color8(188, 0, 255, 255));
    EXPECT_EQ(image.GetPixel8(1, 0), Color8(0, 255, 137, 255));

    for (const PixelFormat format : {GreyHalf, RgbHalf, RgbaHalf}) {
        Image halves(5, 3, format);
        for (std::size_t i = 0; i < halves.ByteCount(); ++i) {
            halves.pixels[i] = static_cast<std::byte>(i % 2 ? 0x3c + i % 4 : i * 7);
        }
        ASSERT_TRUE(SavePicture(halves, folder / L"half.tif"));
        const Image read = LoadPicture(folder / L"half.tif");
        ASSERT_EQ(read.format, format);
        EXPECT_EQ(std::memcmp(read.pixels.get(), halves.pixels.get(), halves.ByteCount()), 0);
    }
}

TEST(PictureFilesPosix, OrientationTagsTurnNothing) {
    const TemporaryFolder folder;
    ASSERT_TRUE(test::WriteFile(folder / L"a.tif",
                                test::MakeTiff(2, 1, 2, {8, 8, 8}, {1, 2, 3, 4, 5, 6}, {{0x112, {6}}})));
    const Image tiff = LoadPicture(folder / L"a.tif");
    ASSERT_EQ(tiff.width, 2u);
    EXPECT_EQ(tiff.GetPixel8(0, 0), Color8(1, 2, 3, 255));

    Image source(20, 10, Rgb8);
    source.Fill(PixelValue(Color8(1, 2, 3, 255)));
    ASSERT_TRUE(SavePicture(source, folder / L"a.jpg"));
    Bytes jpeg = test::ReadFile(folder / L"a.jpg");
    const Bytes exif = {0xff, 0xe1, 0,    34, 'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0,
                        1,    0,    0x12, 1,  3,   0,   1,   0,   0, 0, 6,   0,   0,  0, 0, 0, 0, 0};
    jpeg.insert(jpeg.begin() + 2, exif.begin(), exif.end());
    ASSERT_TRUE(test::WriteFile(folder / L"turned.jpg", jpeg));
    EXPECT_EQ(LoadPicture(folder / L"turned.jpg").width, 20u);
}

TEST(PictureFilesPosix, HeifIsWrittenWhereItsEncoderIsInstalled) {
    const TemporaryFolder folder;
    for (const std::uint32_t width : {5u, 70u}) {
        Image source(width, 9, Rgb8);
        source.Fill(PixelValue(Color8(200, 100, 50, 255)));
        if (!SavePicture(source, folder / L"a.heic")) GTEST_SKIP() << "no HEIF encoder";
        const Image read = LoadPicture(folder / L"a.heic");
        ASSERT_EQ(read.width, width);
        EXPECT_NEAR(read.GetPixel8(4, 8).red, 200, 4);
        EXPECT_NEAR(read.GetPixel8(4, 8).blue, 50, 4);
    }
}

TEST(PictureFilesPosix, PipesAndForbiddenFilesAreRefusedAtOnce) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(ToUtf8(folder / L"pipe.png").c_str(), 0600), 0);
    EXPECT_FALSE(LoadPicture(folder / L"pipe.png").IsValid());

    Image source(4, 4, Rgb8);
    source.Fill(PixelValue(Color8(1, 2, 3, 255)));
    ASSERT_TRUE(SavePicture(source, folder / L"secret.png"));
    ASSERT_EQ(chmod(ToUtf8(folder / L"secret.png").c_str(), 0), 0);
    if (geteuid() == 0) GTEST_SKIP() << "root may read and write everything";
    EXPECT_FALSE(LoadPicture(folder / L"secret.png").IsValid());
    EXPECT_FALSE(SavePicture(source, folder / L"secret.png"));
    ASSERT_EQ(chmod(ToUtf8(folder.Path()).c_str(), 0500), 0);
    EXPECT_FALSE(SavePicture(source, folder / L"new.png"));
    ASSERT_EQ(chmod(ToUtf8(folder.Path()).c_str(), 0700), 0);
    EXPECT_FALSE(FileExists(folder / L"new.png"));
}

}  // namespace
}  // namespace skyvault
