#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "image/bmp_file_posix.h"
#include "image/oiio_codec_posix.h"
#include "image/picture_codec.h"
#include "image/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/made_files.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

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

/// Whether our reader and OpenImageIO make the same of a file, pictures and sizes alike.
void ExpectBothReadTheSame(const std::wstring& path, const Bytes& file, const std::string& what) {
    ASSERT_TRUE(test::WriteFile(path, file)) << what;
    Image ours, theirs;
    const bool read = DecodePicture(path, 0, 0, 0, ours);
    ASSERT_EQ(read, DecodeWithOiio(path, 0, {}, theirs)) << what;
    PictureSize size, theirSize;
    ASSERT_EQ(MeasurePicture(path, size), MeasureWithOiio(path, theirSize)) << what;
    ASSERT_EQ(size, theirSize) << what;
    if (!read) return;
    ASSERT_EQ(ours.format, theirs.format) << what;
    ASSERT_TRUE(ours.width == theirs.width && ours.height == theirs.height) << what;
    ASSERT_EQ(std::memcmp(ours.pixels.get(), theirs.pixels.get(), ours.ByteCount()), 0) << what;
}

TEST(PictureFilesPosix, OurBmpReaderAgreesWithTheLibrary) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.bmp";
    auto noise = [state = 1u](std::size_t count) mutable {
        Bytes bytes(count);
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>((state = state * 69069 + 1) >> 16);
        return bytes;
    };
    struct Shape {
        std::int32_t width, height;
        int bits;
        std::size_t colours;  // of a palette; 0: the 256 of a header that tells none
    };
    std::vector<Shape> shapes;
    for (const int bits : {8, 24, 32}) {
        for (const std::int32_t width : {1, 2, 3, 4, 5, 70}) {
            shapes.push_back({width, 3, bits, 200});
            shapes.push_back({width, -4, bits, 256});
        }
        shapes.push_back({1030, 301, bits, 0});  // more than is read at once
    }
    for (const Shape& shape : shapes) {
        const std::size_t rowBytes = (static_cast<std::size_t>(shape.width * shape.bits / 8) + 3) / 4 * 4;
        const Bytes rows = noise(rowBytes * static_cast<std::size_t>(std::abs(shape.height)));
        const Bytes palette = noise(shape.bits == 8 ? 4 * (shape.colours ? shape.colours : 256) : 0);
        Bytes file = test::MakeBmp(shape.width, shape.height, shape.bits, rows, palette);
        if (shape.colours == 0) std::fill_n(&file[46], 4, std::uint8_t{0});
        const std::string what = std::to_string(shape.width) + " x " + std::to_string(shape.height) + ", " +
                                 std::to_string(shape.bits) + " bits";
        ExpectBothReadTheSame(path, file, what);
        EXPECT_TRUE(PlainBmp(path).IsOpen()) << what;
    }
    // Every header, hostile and cut: one byte of the largest kind at a time, then all lengths.
    for (const int bits : {8, 24, 32}) {
        for (const int headerSize : {12, 16, 40, 52, 56, 64, 108, 124}) {
            const std::string kind = std::to_string(bits) + " bits, header of " + std::to_string(headerSize);
            Bytes file = test::MakeBmp(5, 3, bits, noise(60), bits == 8 ? noise(8) : Bytes());
            file.insert(file.begin() + 54, static_cast<std::size_t>(std::max(headerSize - 40, 0)), 0);
            file[10] = static_cast<std::uint8_t>(file[10] + std::max(headerSize - 40, 0));
            file[14] = static_cast<std::uint8_t>(headerSize);
            for (const std::uint8_t alphaMask : {std::uint8_t{0}, std::uint8_t{255}}) {
                if (headerSize > 52) file[69] = alphaMask;
                ExpectBothReadTheSame(path, file, kind);
            }
            // Of the two kinds that programs write; the sanitized build takes 20 ms for each of these.
            const bool usual = headerSize == 40 || headerSize == 124;
            for (std::size_t at = 2; usual && at < 70; ++at) {
                for (const int value : {1, 128, 255}) {
                    Bytes edited = file;
                    edited[at] = static_cast<std::uint8_t>(value);
                    ExpectBothReadTheSame(
                        path, edited, kind + ", byte " + std::to_string(at) + " " + std::to_string(value));
                }
            }
            for (std::size_t size = 0; size < file.size(); size += 1 + size / 10) {
                const auto end = file.begin() + static_cast<std::ptrdiff_t>(size);
                ExpectBothReadTheSame(path, Bytes(file.begin(), end),
                                      kind + ", cut at " + std::to_string(size));
            }
            if (HasFatalFailure()) return;
        }
    }
}

TEST(PictureFilesPosix, OurBmpFilesHoldWhatTheLibraryWouldWrite) {
    const TemporaryFolder folder;
    for (const std::uint32_t width : {1u, 2u, 3u, 4u, 601u}) {
        for (const PixelFormat format : {Rgb8, Grey8, Rgba16}) {
            Image image = test::RandomImage(width, 301, format);
            const std::wstring ours = folder / L"ours.bmp", theirs = folder / L"theirs.bmp";
            ASSERT_TRUE(EncodePicture(image, ours, PictureContainer::Bmp, format));
            ASSERT_TRUE(EncodeWithOiio(image, theirs, PictureContainer::Bmp, format));
            Bytes a = test::ReadFile(ours), b = test::ReadFile(theirs);
            ASSERT_EQ(a.size(), b.size());
            // The library counts pixels where bytes belong, and knows no resolution.
            std::copy(&a[34], &a[46], &b[34]);
            EXPECT_EQ(a, b) << width;
            EXPECT_EQ(a[34] | a[35] << 8 | a[36] << 16, static_cast<int>(a.size()) - 54) << width;
        }
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
