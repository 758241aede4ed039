#include "codecs/picture_files.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "codecs/picture_codec.h"
#include "platform/files.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

TEST(PictureFiles, EveryFormatComesBackFromEveryContainer) {
    const TemporaryFolder folder;
    const auto containers = TableOf<std::wstring, double, bool, std::string>("containers");
    for (const auto& [where, extension, difference, keepsAlpha, exactFormats] : containers) {
        for (const PixelFormat format : AllFormats()) {
            const std::wstring label = std::wstring(FormatName(format)) + L" as " + extension;
            SCOPED_TRACE(ToUtf8(label));
            const std::string number = std::to_string(static_cast<int>(format));
            const bool exact = exactFormats.find(number) != std::string::npos;
            Image source = exact ? RandomImage(37, 23, format) : SmoothPicture(format);
            ASSERT_TRUE(Saved(source, folder / label));
            const Image read = Loaded(folder / label);
            EXPECT_TRUE(read.topDown == 1 && read.frameCount == 1 && read.frameDelay == 0);
            // A half of 0.5 is 127 as 8 bits, and 128 after it has been 16 bits.
            const int step = ChannelType(format) == ChannelKind::Half ? 1 : 0;
            EXPECT_LE(Difference(source, read, keepsAlpha), difference + step);
            EXPECT_TRUE(!exact || SameBytes(read, source));
        }
    }
    EXPECT_EQ(folder.FileCount(), containers.size() * AllFormats().size());
    // Grey of 16 bits in a TIFF may come back as colour, but not with 8 bits.
    Image grey = RandomImage(2, 2, Grey16);
    ASSERT_TRUE(Saved(grey, folder / L"grey.tif"));
    EXPECT_EQ(Loaded(folder / L"grey.tif").GetPixel16(0, 0).red, grey.GetPixel16(0, 0).red);
}

TEST(PictureFiles, TheAskedFormatIsWrittenAndTheInfoLogDescribesWhatWasWritten) {
    const TemporaryFolder folder;
    Image source = SmoothPicture(Rgba16);
    std::wstring log;
    for (const PixelFormat format : {Grey8, Grey16, Rgb8, Rgb16, Rgba8}) {
        ASSERT_TRUE(Saved(source, folder / L"a.png", format, &log));
        EXPECT_EQ(Loaded(folder / L"a.png").format, format);
        EXPECT_TRUE(log.ends_with(std::wstring(L"\nFormat\t\t") + FormatName(format) + L"\n"));
    }
    ASSERT_TRUE(Saved(source, folder / L"a.jpg", Grey8));
    EXPECT_EQ(Loaded(folder / L"a.jpg").format, Grey8);
    EXPECT_EQ(source.format, Rgba16);
    // Grey is the red channel, also in a file that only knows colour.
    const std::wstring path = folder / L"grey.bmp";
    ASSERT_TRUE(Saved(source, path, Grey8, &log));
    const std::uint8_t red = source.GetPixel8(30, 20).red;
    EXPECT_EQ(Loaded(path).GetPixel8(30, 20), Color8(red, red, red, 255));
    // 54 bytes of headers and 23 rows of 112 bytes.
    EXPECT_EQ(log, L"Path\t\t" + path + L"\nSize\t\t2 KB\nResolution\t37 x 23\nFormat\t\tLDR 8 bpp R int\n");
    const std::pair<std::uint64_t, const wchar_t*> sizes[] = {
        {0, L"0 bytes"},    {1023, L"1023 bytes"},    {1024, L"1 KB"},      {1048575, L"1023 KB"},
        {3500000, L"3 MB"}, {1073741823, L"1023 MB"}, {5000000000, L"4 GB"}};
    for (const auto& [bytes, text] : sizes) EXPECT_EQ(FileSizeText(bytes), text) << bytes;
}

TEST(PictureFiles, BleedingIsForWrittenAlphaOnly) {
    const TemporaryFolder folder;
    const Color8 clear(0, 0, 0, 0), seen(200, 100, 50, 255);
    const struct {
        PixelFormat format;
        bool bleed;
        Color8 after, read;
    } rows[] = {{Rgb8, true, clear, Color8()},
                {None, false, clear, clear},
                {None, true, Color8(200, 100, 50, 0), Color8(200, 100, 50, 0)}};
    for (const auto& row : rows) {
        Image image = Filled(3, 1, Rgba8, clear);
        image.SetPixel(0, 0, seen);
        ASSERT_TRUE(Saved(image, folder / L"a.png", row.format, nullptr, row.bleed));
        EXPECT_EQ(image.GetPixel8(1, 0), row.after) << &row - rows;
        EXPECT_EQ(Loaded(folder / L"a.png").GetPixel8(1, 0), row.read) << &row - rows;
    }
}

TEST(PictureFiles, WhatNoContainerTakesLeavesTheOlderFile) {
    const TemporaryFolder folder;
    Image small = SmoothPicture(Rgb8), empty, tooWide = Filled(70000, 1, Rgb8, Color8(1, 2, 3, 255));
    const std::wstring path = folder / L"a.png";
    ASSERT_TRUE(Saved(tooWide, path) && Saved(small, path));
    for (const wchar_t* name : {L"a.webp", L"a.tga", L"a", L"a.jpg", L"a.gif"}) {
        std::wstring log = L"before";
        EXPECT_FALSE(Saved(tooWide, folder / name, None, &log)) << ToUtf8(name);
        EXPECT_EQ(log, L"");
    }
    EXPECT_FALSE(Saved(small, L"") || Saved(empty, path));
    EXPECT_EQ(Loaded(path).width, small.width);
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST(PictureFiles, CutFilesAreRefusedOrHaveTheirSize) {
    const TemporaryFolder folder;
    for (const wchar_t* name : {L"junk.jpg", L"junk.tga"})
        EXPECT_EQ(Loaded(folder.Write(name, "no picture")).format, None) << ToUtf8(name);
    for (const wchar_t* extension : {L".bmp", L".png", L".tif", L".jpg", L".gif"}) {
        const std::wstring path = folder / (std::wstring(L"a") + extension);
        Image source = SmoothPicture(Rgb8);
        ASSERT_TRUE(Saved(source, path));
        const Bytes whole = ReadFile(path);
        for (std::size_t size = 0; size < whole.size(); size += 1 + size / 8) {
            SCOPED_TRACE(ToUtf8(extension) + " cut at " + std::to_string(size));
            ASSERT_TRUE(
                WriteFile(path, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
            // What is left of a picture may be shown; of a JPEG it would be grey.
            const Image image = Loaded(path);
            const bool mayBeRead = extension[1] != L'j' && size >= 20;
            EXPECT_TRUE(!image.IsValid() || (mayBeRead && image.width == source.width));
        }
    }
}

TEST(PictureFiles, ContentsDecideTheReaderAndNamesAreUnicode) {
    const TemporaryFolder folder;
    Image source = SmoothPicture(Rgb8);
    std::wstring path = folder / L"a.png";
    ASSERT_TRUE(Saved(source, path));
    for (const wchar_t* name : {L"a.jpg", L"no extension", L"\U0001F304 Gr\u00fc\u00dfe \u65e5.PnG"}) {
        ASSERT_TRUE(MoveToNewName(path, folder / name));
        path = folder / name;
        EXPECT_TRUE(SameBytes(Loaded(path), source)) << ToUtf8(name);
    }
    EXPECT_TRUE(Saved(source, path) && FileExists(path));
    const std::vector<std::wstring> extensions = ReadableExtensions();
    for (const wchar_t* extension : {L"BMP", L"JPG", L"JPEG", L"PNG", L"TIF", L"TIFF", L"GIF"})
        EXPECT_EQ(std::count(extensions.begin(), extensions.end(), extension), 1) << ToUtf8(extension);
}

TEST(PictureFiles, TargetSizesFitThePictureInside) {
    const TemporaryFolder folder;
    const Color8 colour(10, 20, 30, 255);
    Image source = Filled(400, 200, Rgb8, colour);
    ASSERT_TRUE(Saved(source, folder / L"a.png"));
    const PictureSize rows[][2] = {
        {{100, 100}, {100, 50}}, {{100, 0}, {400, 200}}, {{0, 100}, {400, 200}}, {{1, 1}, {0, 0}}};
    for (const auto& [target, size] : rows) {
        const Image image = Loaded(folder / L"a.png", 0, target);
        EXPECT_EQ((PictureSize{image.width, image.height}), size) << target.width << " x " << target.height;
        if (size.width == 0) continue;
        EXPECT_EQ(image.GetPixel8(-1, 0), colour) << target.width << " x " << target.height;
    }
    // Also where the pixels are converted first.
    ASSERT_TRUE(WriteFile(folder / L"a.bmp", MakeBmp(4, 2, 8, Bytes(8, 1), {0, 0, 0, 0, 30, 20, 10, 0})));
    const Image palette = Loaded(folder / L"a.bmp", 0, {2, 2});
    EXPECT_EQ(palette.width, 2u);
    EXPECT_EQ(palette.GetPixel8(1, 0), colour);
}

TEST(PictureFiles, AnimationsTellTheirFrames) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.gif";
    for (const DataRow& row : DataGroup("pictures", "gif")) {
        SCOPED_TRACE(row.where);
        ASSERT_TRUE(WriteFile(path, FromHex(row[3])));
        const std::vector<std::uint32_t> told = Numbers(row[2]);
        const auto frames = static_cast<std::uint32_t>(told.size() / 4);
        for (std::uint32_t i = 0; i < frames; ++i) {
            const std::uint32_t delay = told[4 * i] == 0 ? 100 : 10 * told[4 * i], disposal = told[4 * i + 1];
            const std::uint32_t left = told[4 * i + 2], top = told[4 * i + 3];
            const Image image = Loaded(path, i);
            EXPECT_EQ(image.GetPixel8(static_cast<int>(left), static_cast<int>(top)), Color8(255, 0, 0, 255));
            EXPECT_EQ(image.format, Rgba8);
            using Facts = std::array<std::uint32_t, 7>;
            EXPECT_EQ((Facts{image.frameCount, image.frameDelay, image.frameDisposal, image.frameLeft,
                             image.frameTop, image.frameWidth, image.frameHeight}),
                      // Of a single picture nothing is told.
                      (frames == 1 ? Facts{1} : Facts{frames, delay, disposal, left, top, 1, 1}));
        }
        EXPECT_FALSE(Loaded(path, frames).IsValid());
    }
}

TEST(PictureFiles, GifKeepsFewColoursExactlyAndTransparency) {
    const TemporaryFolder folder;
    Image image(32, 2, Rgba8);
    for (int x = 0; x < 32; ++x) {
        image.SetPixel(x, 0, Color8(9, 9, 9, static_cast<std::uint8_t>(x * 4)));
        image.SetPixel(x, 1, Color8(static_cast<std::uint8_t>(x * 8), 0, 255, 255));
    }
    ASSERT_TRUE(Saved(image, folder / L"a.gif"));
    const Image read = Loaded(folder / L"a.gif");
    for (int x = 0; x < 32; ++x) {
        EXPECT_EQ(read.GetPixel8(x, 0).alpha, 0) << x;
        EXPECT_EQ(read.GetPixel8(x, 1), image.GetPixel8(x, 1)) << x;
    }
    // Written without alpha, nothing is transparent.
    ASSERT_TRUE(Saved(image, folder / L"b.gif", Rgb8));
    EXPECT_EQ(Loaded(folder / L"b.gif").GetPixel8(5, 0), Color8(9, 9, 9, 255));

    // Codes of every length: noise soon fills the table of strings, and one long run does not.
    for (const int colours : {1, 2, 3, 4, 5, 16, 17, 255, 256}) {
        Image grey = RandomImage(130, 130, Grey8);
        for (std::size_t i = 0; i < grey.ByteCount(); ++i)
            grey.pixels[i] =
                static_cast<std::byte>(i < 4000 ? 0 : static_cast<int>(grey.pixels[i]) % colours);
        ASSERT_TRUE(Saved(grey, folder / L"a.gif")) << colours;
        EXPECT_EQ(Difference(grey, Loaded(folder / L"a.gif")), 0) << colours;
    }
}

TEST(PictureFiles, StoredKindsOfPixelsAreReadAndHeadersThatClaimTheWorldNotBelieved) {
    const TemporaryFolder folder;
    for (const DataRow& row : DataGroup("pictures", "stored")) ExpectPixels(folder / L"picture", row);
    for (const DataRow& row : DataGroup("pictures", "claim")) {
        ASSERT_TRUE(WriteFile(folder / L"claim", FromHex(row[3])));
        // A GIF frame may be read without its canvas.
        EXPECT_LE(Loaded(folder / L"claim").width, 1u) << row.where;
    }
}

}  // namespace
}  // namespace skyvault::test
