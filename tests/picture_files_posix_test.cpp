#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

#include "codecs/bmp_file_posix.h"
#include "codecs/oiio_codec_posix.h"
#include "codecs/picture_codec.h"
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

/// Whether our reader and OpenImageIO make the same of a file, pictures and sizes alike.
void ExpectBothReadTheSame(const std::wstring& path, const Bytes& file) {
    SCOPED_TRACE(file.size());
    ASSERT_TRUE(WriteFile(path, file));
    Image ours, theirs;
    const bool read = DecodePicture(path, 0, 0, 0, ours).IsDone();
    ASSERT_EQ(read, DecodeWithOiio(path, 0, {}, theirs).IsDone());
    PictureFacts facts, theirFacts;
    ASSERT_EQ(InspectPicture(path, facts).IsDone(), InspectWithOiio(path, theirFacts).IsDone());
    ASSERT_EQ(facts.size, theirFacts.size);
    ASSERT_EQ(facts.format, theirFacts.format);
    if (!read) return;
    ASSERT_TRUE(SameBytes(ours, theirs));
}

TEST(PictureFilesPosix, OurBmpReaderAgreesWithTheLibrary) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.bmp";
    // The last is more than is read at once, with a header that tells no number of colours: all 256.
    const std::pair<std::int32_t, std::int32_t> sizes[] = {{1, 3},  {1, -4}, {2, 3},   {3, -4},    {4, 3},
                                                           {5, -4}, {70, 3}, {70, -4}, {1030, 301}};
    for (const std::uint32_t bits : {8, 24, 32}) {
        for (const auto& [width, height] : sizes) {
            const std::size_t rowBytes = (static_cast<std::size_t>(width) * bits / 8 + 3) / 4 * 4;
            const Bytes palette = Noise(bits != 8 ? 0 : height == 3 ? 4 * 200 : 4 * 256, 2);
            Bytes file = MakeBmp(width, height, bits,
                                 Noise(rowBytes * static_cast<std::size_t>(std::abs(height))), palette);
            if (width == 1030) std::fill_n(&file[46], 4, std::uint8_t{0});
            SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << bits << " bits");
            ExpectBothReadTheSame(path, file);
            EXPECT_TRUE(PlainBmp(path).IsOpen());
        }
        // Every header, hostile and cut: one byte of the largest kind at a time, then all lengths.
        for (const int headerSize : {12, 16, 40, 52, 56, 64, 108, 124}) {
            SCOPED_TRACE(testing::Message() << bits << " bits, header of " << headerSize);
            Bytes file = MakeBmp(5, 3, bits, Noise(60), Noise(bits == 8 ? 8 : 0, 2));
            file.insert(file.begin() + 54, static_cast<std::size_t>(std::max(headerSize - 40, 0)), 0);
            file[10] = static_cast<std::uint8_t>(file[10] + std::max(headerSize - 40, 0));
            file[14] = static_cast<std::uint8_t>(headerSize);
            const auto expectWithByte = [&](std::size_t at, int value) {
                Bytes edited = file;
                edited[at] = static_cast<std::uint8_t>(value);
                SCOPED_TRACE(testing::Message() << "byte " << at << " " << value);
                ExpectBothReadTheSame(path, edited);
            };
            expectWithByte(14, headerSize);
            if (headerSize > 52) expectWithByte(69, 255);  // a mask for alpha
            // Of the two kinds that programs write; the sanitized build takes 20 ms for each of these.
            const bool usual = headerSize == 40 || headerSize == 124;
            for (std::size_t at = 2; usual && at < 70; ++at)
                for (const int value : {1, 128, 255}) expectWithByte(at, value);
            for (std::size_t size = 0; size < file.size(); size += 1 + size / 10)
                ExpectBothReadTheSame(path, Bytes(file.data(), file.data() + size));
            if (HasFatalFailure()) return;
        }
    }
}

TEST(PictureFilesPosix, OurBmpFilesHoldWhatTheLibraryWouldWrite) {
    const TemporaryFolder folder;
    for (const std::uint32_t width : {1u, 2u, 3u, 4u, 601u}) {
        for (const PixelFormat format : {Rgb8, Grey8, Rgba16}) {
            Image image = RandomImage(width, 301, format);
            const std::wstring ours = folder / L"ours.bmp", theirs = folder / L"theirs.bmp";
            ASSERT_TRUE(EncodePicture(image, ours, PictureContainer::Bmp, format));
            ASSERT_TRUE(EncodeWithOiio(image, theirs, PictureContainer::Bmp, format));
            Bytes a = ReadFile(ours), b = ReadFile(theirs);
            ASSERT_EQ(a.size(), b.size());
            // The library counts pixels where bytes belong, and knows no resolution.
            std::copy(&a[34], &a[46], &b[34]);
            EXPECT_EQ(a, b) << width;
            EXPECT_EQ(a[34] | a[35] << 8 | a[36] << 16, static_cast<int>(a.size()) - 54) << width;
        }
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
