// The readers behind their libraries: nothing of a damaged file, all of one that only lacks its end mark.

#include <gtest/gtest.h>

#include "codecs/jpeg_file_posix.h"
#include "codecs/png_file_posix.h"
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
            EXPECT_FALSE(Reads<PngFile>(edited, image)) << at;
        }
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
