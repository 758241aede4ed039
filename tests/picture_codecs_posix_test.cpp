// The readers behind their libraries: nothing of a damaged file, all of one that only lacks its end mark.

#include <gtest/gtest.h>

#include "codecs/bmp_file_posix.h"
#include "codecs/gif_file_posix.h"
#include "codecs/jpeg_file_posix.h"
#include "codecs/png_file_posix.h"
#include "codecs/tiff_directories.h"
#include "codecs/tiff_write_posix.h"
#include "codecs/webp_file_posix.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

template <typename File>
bool Reads(const Bytes& bytes, Image& image) {
    const FileSource source(AsBytes(bytes));
    File file(source);
    return file.Select(0) && file.Read(image) && image.format == file.Facts().format;
}

TEST(PictureCodecs, AJpegMayLackItsEndMarkerAndNothingElse) {
    for (const char* group : {"stored", "posix"}) {
        for (const DataRow& row : DataGroup("pictures", group)) {
            if (!row[1].starts_with("jpeg")) continue;
            SCOPED_TRACE(row.where);
            const Bytes file = FromHex(row[3]);
            Image whole, image;
            ASSERT_TRUE(Reads<JpegFile>(file, whole));
            for (std::size_t size = 0; size < file.size(); ++size) {
                // Nobody can tell where fractions of bits end.
                const bool all = size + 2 >= file.size() && row[1] != "jpeg arithmetic";
                EXPECT_EQ(Reads<JpegFile>(Bytes(file.data(), file.data() + size), image), all) << size;
                EXPECT_TRUE(!all || SameBytes(image, whole)) << size;
            }
        }
    }
}

TEST(PictureCodecs, ADamagedPngIsRefused) {
    constexpr std::size_t kSignature = 8, kEndMark = 12;
    for (const DataRow& row : DataGroup("pictures", "stored")) {
        if (!row[1].starts_with("png")) continue;
        SCOPED_TRACE(row.where);
        const Bytes file = FromHex(row[3]);
        Image whole, image;
        ASSERT_TRUE(Reads<PngFile>(file, whole));
        for (std::size_t size = 0; size < file.size(); ++size) {
            EXPECT_EQ(Reads<PngFile>(Bytes(file.data(), file.data() + size), image),
                      size + kEndMark >= file.size())
                << size;
        }
        for (std::size_t at = kSignature; at + kEndMark < file.size(); ++at) {
            Bytes edited = file;
            edited[at] ^= 0x20;
            EXPECT_TRUE(!Reads<PngFile>(edited, image) || SameBytes(image, whole)) << at;
        }
    }
}

TEST(PictureCodecs, RowsOfRunsMayBeLeftOut) {
    Bytes file = MakeBmp(300, 40, 8, {255, 1, 45, 1, 0, 1}, {0, 0, 0, 0, 9, 8, 7, 0});
    file[30] = 1;
    Image image;
    ASSERT_TRUE(Reads<BmpFile>(file, image));
    EXPECT_EQ(image.GetPixel8(299, 39), Color8(7, 8, 9, 255));
}

TEST(PictureCodecs, NoByteOfABmpsPixelsMayBeMissing) {
    for (const char* group : {"stored", "posix"}) {
        for (const DataRow& row : DataGroup("pictures", group)) {
            if (!row[1].starts_with("bmp")) continue;
            SCOPED_TRACE(row.where);
            const Bytes file = FromHex(row[3]);
            Image whole, image;
            ASSERT_TRUE(Reads<BmpFile>(file, whole));
            const bool runs = row[1].find("runs") != std::string::npos;
            for (std::size_t size = 0; size < file.size(); ++size) {
                const bool read = Reads<BmpFile>(Bytes(file.data(), file.data() + size), image);
                // Of runs the last two bytes only say that the picture is done.
                EXPECT_TRUE(!read || (runs && SameBytes(image, whole))) << size;
            }
        }
    }
}

TEST(PictureCodecs, GifAndWebpFramesAreWholeOrRefused) {
    for (const DataRow& row : DataGroup("pictures", "posix")) {
        const bool gif = row[1].starts_with("gif");
        if (!gif && !row[1].starts_with("webp")) continue;
        SCOPED_TRACE(row.where);
        const Bytes file = FromHex(row[3]);
        Image whole, image;
        const auto reads = [&](const Bytes& bytes, Image& to) {
            return gif ? Reads<GifFile>(bytes, to) : Reads<WebpFile>(bytes, to);
        };
        ASSERT_TRUE(reads(file, whole));
        for (std::size_t size = 0; size < file.size(); ++size) {
            const bool read = reads(Bytes(file.data(), file.data() + size), image);
            EXPECT_TRUE(!read || SameBytes(image, whole)) << size;
            EXPECT_TRUE(!read || size + 4 >= file.size()) << size;
        }
    }
}

TEST(PictureCodecs, RunsOfABmpStayInThePicture) {
    const struct {
        const char* codes;  // of 4 × 2 pixels
        const char* rows;   // indices, top row first; none: refused
    } tables[][7] = {{{"0401 0402", ""},
                      {"0401 0000 0402", "22221111"},
                      {"0401 0000 0402 0000 0001", "22221111"},
                      {"0501 0000 0402 0001", ""},
                      {"0003 010203 00 0001", "00001230"},
                      {"0101 0002 0301 0001", "00001000"},
                      {"0101 0002 0401 0001", ""}},
                     {{"0412 0000 0434 0000 0001", "34341212"},
                      {"0003 1230 0000 0401 0001", "01011230"},
                      {"0005 12345000 0001", ""},
                      {"0000 0000 0401 0001", ""},
                      {"0401 0000 0000 0000 0001", ""},
                      {"0002 0002 0101 0001", ""},
                      {"0412 00", ""}}};
    for (std::uint32_t bits : {8, 4}) {
        Bytes palette(bits == 8 ? 1024 : 64);
        for (std::size_t i = 0; i < palette.size(); i += 4) palette[i + 2] = static_cast<std::uint8_t>(i / 4);
        for (const auto& [codes, rows] : tables[bits == 8 ? 0 : 1]) {
            std::string hex = codes, indices;
            std::erase(hex, ' ');
            Bytes file = MakeBmp(4, 2, bits, FromHex(hex), palette);
            file[30] = bits == 8 ? 1 : 2;
            Image image;
            if (Reads<BmpFile>(file, image)) {
                ForPixels(image, [&](int x, int y) { indices += std::to_string(image.GetPixel8(x, y).red); });
            }
            EXPECT_EQ(indices, rows) << bits << " bits: " << codes;
        }
    }
}

TEST(PictureCodecs, ATiffTellsNoTime) {
    constexpr std::uint32_t kWidth = 256, kDateTime = 306;
    const TemporaryFolder folder;
    ASSERT_TRUE(WriteTiff(SmoothPicture(PixelFormat::Rgb8), folder / L"a.tif", PixelFormat::Rgb8));
    const FileSource file(folder / L"a.tif");
    const ReadFileAt readAt = [&](std::uint64_t at, void* to, std::size_t n) { return file.Read(at, to, n); };
    const std::vector<std::uint64_t> directories = FindTiffDirectories(readAt);
    ASSERT_EQ(directories.size(), 1u);
    EXPECT_TRUE(TiffDirectoryHas(readAt, directories[0], kWidth));
    EXPECT_FALSE(TiffDirectoryHas(readAt, directories[0], kDateTime));
}

TEST(PictureCodecs, AJpegsQualityDecidesItsSizeAndAboveNinetyItsChroma) {
    constexpr std::uint8_t kFrame = 0xc0;
    const TemporaryFolder folder;
    std::size_t smaller = 0;
    for (const int quality : {1, 50, 90, 92, 100}) {
        ASSERT_TRUE(
            WriteJpeg(SmoothPicture(PixelFormat::Rgb8), folder / L"a.jpg", PixelFormat::Rgb8, quality));
        const Bytes file = ReadFile(folder / L"a.jpg"), frame = {0xff, kFrame};
        const auto at = std::search(file.begin(), file.end(), frame.begin(), frame.end());
        ASSERT_GT(file.end() - at, 11);
        EXPECT_EQ(at[11], quality > 90 ? 0x11 : 0x22) << quality;
        EXPECT_GT(file.size(), smaller) << quality;
        smaller = file.size();
        if (quality != kJpegQuality) continue;
        ASSERT_TRUE(WriteJpeg(SmoothPicture(PixelFormat::Rgb8), folder / L"b.jpg", PixelFormat::Rgb8, 0));
        EXPECT_EQ(ReadFile(folder / L"b.jpg"), file);
    }
}

TEST(PictureCodecs, DamagedScansAreRefused) {
    const TemporaryFolder folder;
    ASSERT_TRUE(WriteJpeg(SmoothPicture(PixelFormat::Rgb8), folder / L"a.jpg", PixelFormat::Rgb8, 0));
    const Bytes file = ReadFile(folder / L"a.jpg");
    Image image;
    ASSERT_TRUE(Reads<JpegFile>(file, image));
    // Codes of nothing but ones are none; data behind the last block are nobody's, and do no harm.
    for (const int from : {200, 100, 20}) {
        Bytes damaged = file;
        for (std::size_t at = file.size() - from; at + 3 < file.size(); at += 2)
            damaged[at] = 0xff, damaged[at + 1] = 0;
        EXPECT_FALSE(Reads<JpegFile>(damaged, image)) << from;
    }
    EXPECT_TRUE(Reads<JpegFile>(Join({file, Noise(100)}), image));
}

}  // namespace
}  // namespace skyvault::test
