#include <gtest/gtest.h>
#include <sys/stat.h>

#include "codecs/picture_files.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

TEST(PictureFilesPosix, FloatsAreShownAsOnAScreenHalvesKeptAndPhotosStandUpright) {
    const TemporaryFolder folder;
    for (const DataRow& row : DataGroup("pictures", "posix")) ExpectPixels(folder / L"picture", row);
    for (const PixelFormat format : {GreyHalf, RgbHalf, RgbaHalf}) {
        Image halves = RandomImage(5, 3, format);
        ASSERT_TRUE(Saved(halves, folder / L"half.tif"));
        EXPECT_TRUE(SameBytes(Loaded(folder / L"half.tif"), halves)) << static_cast<int>(format);
    }
}

TEST(PictureFilesPosix, HeifIsWrittenWhereItsEncoderIsInstalled) {
    const TemporaryFolder folder;
    for (const std::uint32_t width : {5u, 70u}) {
        Image source = Filled(width, 9, Rgb8, Color8(200, 100, 50, 255));
        if (!Saved(source, folder / L"a.heic")) GTEST_SKIP() << "no HEIF encoder";
        const Image read = Loaded(folder / L"a.heic");
        ASSERT_EQ(read.width, width);
        EXPECT_NEAR(read.GetPixel8(4, 8).red, 200, 4);
        EXPECT_NEAR(read.GetPixel8(4, 8).blue, 50, 4);
    }
}

TEST(PictureFilesPosix, PipesAreRefusedAtOnce) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(ToUtf8(folder / L"pipe.png").c_str(), 0600), 0);
    EXPECT_FALSE(Loaded(folder / L"pipe.png").IsValid());
}

}  // namespace
}  // namespace skyvault::test
