#include "image/picture_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "image/picture_codec.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/made_files.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::Bytes;
using test::TemporaryFolder;
using enum PixelFormat;

constexpr PixelFormat kAllFormats[] = {Grey8,   Grey16, GreyHalf, Rgb8,    Rgb16,
                                       RgbHalf, Rgba8,  Rgba16,   RgbaHalf};

/// A smooth picture whose channels and rows all differ, alpha going from 0 to full.
Image MakePicture(PixelFormat format, int width = 37, int height = 23) {
    Image image(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), format);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.SetPixel(x, y,
                           Color8(static_cast<std::uint8_t>(x * 255 / width),
                                  static_cast<std::uint8_t>(y * 255 / height),
                                  static_cast<std::uint8_t>((x + y) * 127 / (width + height)),
                                  static_cast<std::uint8_t>(x * 255 / (width - 1))));
        }
    }
    return image;
}

/// Mean difference of red, green and blue where the source can be seen, and the largest one of alpha.
struct Difference {
    double colour = 0;
    int alpha = 0;
};
Difference Compare(const Image& source, const Image& read) {
    Difference difference;
    int count = 0;
    for (int y = 0; y < static_cast<int>(source.height); ++y) {
        for (int x = 0; x < static_cast<int>(source.width); ++x) {
            const Color8 a = source.GetPixel8(x, y), b = read.GetPixel8(x, y);
            difference.alpha = std::max(difference.alpha, std::abs(a.alpha - b.alpha));
            if (a.alpha < 128) continue;
            difference.colour +=
                std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue);
            count += 3;
        }
    }
    difference.colour /= count;
    return difference;
}

std::vector<std::wstring> NamesIn(const TemporaryFolder& folder) {
    return FindFiles(folder.Path());
}

TEST(PictureFiles, ExtensionsChooseTheContainer) {
    using enum PictureContainer;
    const struct {
        const wchar_t* extension;
        PictureContainer container;
    } rows[] = {{L"BMP", Bmp},
                {L"JPG", Jpeg},
                {L"JPEG", Jpeg},
                {L"JPE", Jpeg},
                {L"JFIF", Jpeg},
                {L"PNG", Png},
                {L"TIF", Tiff},
                {L"TIFF", Tiff},
                {L"GIF", Gif},
                {L"HEIC", Heif},
                {L"HEIF", Heif},
                {L"WEBP", PictureContainer::None},
                {L"TGA", PictureContainer::None},
                {L"png", PictureContainer::None},
                {L"", PictureContainer::None}};
    for (const auto& row : rows) {
        EXPECT_EQ(ContainerOfExtension(row.extension), row.container) << ToUtf8(row.extension);
    }
}

TEST(PictureFiles, SizesAreToldInWholeUnits) {
    const struct {
        std::uint64_t bytes;
        const wchar_t* text;
    } rows[] = {{0, L"0 bytes"},          {1023, L"1023 bytes"}, {1024, L"1 KB"},
                {1048575, L"1023 KB"},    {1048576, L"1 MB"},    {3500000, L"3 MB"},
                {1073741823, L"1023 MB"}, {1073741824, L"1 GB"}, {5000000000, L"4 GB"}};
    for (const auto& row : rows) EXPECT_EQ(FileSizeText(row.bytes), row.text) << row.bytes;
}

TEST(PictureFiles, EveryFormatComesBackFromEveryContainer) {
    const struct {
        const wchar_t* extension;
        double colour;
        bool keepsAlpha;
    } rows[] = {{L".bmp", 0, false},
                {L".png", 0, true},
                {L".tif", 0, true},
                {L".jpg", 4, false},
                {L".gif", 8, false}};
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        for (const PixelFormat format : kAllFormats) {
            const std::wstring label = std::wstring(FormatName(format)) + L" as " + row.extension;
            SCOPED_TRACE(ToUtf8(label));
            Image source = MakePicture(format);
            const std::wstring path = folder / label;
            ASSERT_TRUE(SavePicture(source, path));
            const Image read = LoadPicture(path);
            ASSERT_TRUE(read.IsValid());
            ASSERT_EQ(read.width, source.width);
            ASSERT_EQ(read.height, source.height);
            EXPECT_EQ(read.topDown, 1);
            EXPECT_EQ(read.frameCount, 1u);
            EXPECT_EQ(read.frameDelay, 0u);
            // A half of 0.5 is 127 as 8 bits, and 128 after it has been 16 bits.
            const int step = ChannelType(format) == ChannelKind::Half ? 1 : 0;
            const Difference difference = Compare(source, read);
            EXPECT_LE(difference.colour, row.colour + step);
            if (row.keepsAlpha) {
                EXPECT_LE(difference.alpha, step);
            }
        }
    }
    EXPECT_EQ(NamesIn(folder).size(), std::size(rows) * std::size(kAllFormats));
}

TEST(PictureFiles, LosslessContainersKeepFormatAndDepth) {
    const struct {
        const wchar_t* name;
        PixelFormat format;
    } rows[] = {{L"a.png", Grey8}, {L"b.png", Grey16}, {L"c.png", Rgb8},   {L"d.png", Rgb16},
                {L"e.png", Rgba8}, {L"f.png", Rgba16}, {L"a.tif", Grey8},  {L"c.tif", Rgb8},
                {L"d.tif", Rgb16}, {L"e.tif", Rgba8},  {L"f.tif", Rgba16}, {L"c.bmp", Rgb8}};
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(row.name));
        Image source = MakePicture(row.format);
        // Bytes of 16-bit channels that differ show when they are exchanged.
        for (std::size_t i = 0; i < source.ByteCount(); ++i)
            source.pixels[i] = static_cast<std::byte>(i * 37);
        ASSERT_TRUE(SavePicture(source, folder / row.name));
        const Image read = LoadPicture(folder / row.name);
        ASSERT_EQ(read.format, row.format);
        ASSERT_EQ(read.ByteCount(), source.ByteCount());
        EXPECT_TRUE(
            std::equal(source.pixels.get(), source.pixels.get() + source.ByteCount(), read.pixels.get()));
    }
    // Grey of 16 bits in a TIFF may come back as colour, but not with 8 bits.
    Image grey = MakePicture(Grey16);
    grey.Row(0)[0] = std::byte{0x34};
    grey.Row(0)[1] = std::byte{0x12};
    ASSERT_TRUE(SavePicture(grey, folder / L"b.tif"));
    EXPECT_EQ(LoadPicture(folder / L"b.tif").GetPixel16(0, 0).red, 0x1234);
}

TEST(PictureFiles, TheAskedFormatIsWrittenWhateverThePictureHas) {
    const TemporaryFolder folder;
    Image source = MakePicture(Rgba16);
    const struct {
        PixelFormat asked, read;
        const wchar_t* name;
    } rows[] = {{Grey8, Grey8, L"1.png"}, {Rgb8, Rgb8, L"2.png"},     {Rgba8, Rgba8, L"3.png"},
                {Rgb16, Rgb16, L"4.png"}, {Grey16, Grey16, L"5.png"}, {Grey8, Grey8, L"6.jpg"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(ToUtf8(row.name));
        std::wstring log;
        ASSERT_TRUE(SavePicture(source, folder / row.name, row.asked, &log));
        EXPECT_EQ(LoadPicture(folder / row.name).format, row.read);
        EXPECT_NE(log.find(std::wstring(L"Format\t\t") + FormatName(row.asked) + L"\n"), std::wstring::npos);
    }
    EXPECT_EQ(source.format, Rgba16);
    // Grey is the red channel, also in a file that only knows colour.
    ASSERT_TRUE(SavePicture(source, folder / L"grey.bmp", Grey8));
    const Color8 pixel = LoadPicture(folder / L"grey.bmp").GetPixel8(30, 20), red = source.GetPixel8(30, 20);
    EXPECT_EQ(pixel, Color8(red.red, red.red, red.red, 255));
}

TEST(PictureFiles, InfoLogGrowsOnSuccessAndIsEmptiedOnFailure) {
    const TemporaryFolder folder;
    Image source = MakePicture(Rgb8);
    const std::wstring path = folder / L"a.bmp";
    std::wstring log = L"before\n";
    ASSERT_TRUE(SavePicture(source, path, None, &log));
    // 54 bytes of headers and 23 rows of 112 bytes.
    EXPECT_EQ(log, L"before\nPath\t\t" + path +
                       L"\nSize\t\t2 KB\nResolution\t37 x 23\nFormat\t\tLDR 24 bpp RGB int\n");
    EXPECT_FALSE(SavePicture(source, L"", None, &log));
    EXPECT_NE(log, L"");
    EXPECT_FALSE(SavePicture(source, folder / L"a.webp", None, &log));
    EXPECT_EQ(log, L"");
}

TEST(PictureFiles, BleedingIsForWrittenAlphaOnly) {
    const TemporaryFolder folder;
    const auto make = [] {
        Image image(3, 1, Rgba8);
        image.SetPixel(0, 0, Color8(200, 100, 50, 255));
        image.SetPixel(1, 0, Color8(0, 0, 0, 0));
        image.SetPixel(2, 0, Color8(0, 0, 0, 0));
        return image;
    };
    Image image = make();
    ASSERT_TRUE(SavePicture(image, folder / L"a.png", Rgb8, nullptr, true));
    EXPECT_EQ(image.GetPixel8(1, 0), Color8(0, 0, 0, 0));
    ASSERT_TRUE(SavePicture(image, folder / L"b.png", None, nullptr, true));
    EXPECT_EQ(LoadPicture(folder / L"b.png").GetPixel8(1, 0), Color8(200, 100, 50, 0));
    image = make();
    ASSERT_TRUE(SavePicture(image, folder / L"c.png", None, nullptr, false));
    EXPECT_EQ(LoadPicture(folder / L"c.png").GetPixel8(1, 0), Color8(0, 0, 0, 0));
}

TEST(PictureFiles, FailedSavesLeaveNothingBehind) {
    const TemporaryFolder folder;
    ASSERT_TRUE(CreateFolder(folder / L"folder.png"));
    ASSERT_TRUE(test::WriteFile(folder / L"file.txt", {1}));
    Image image = MakePicture(Rgb8), empty;
    Image tooWide(70000, 1, Rgb8);
    tooWide.Fill(PixelValue(Color8(1, 2, 3, 255)));
    const auto path = [&](const wchar_t* name) { return folder / name; };
    EXPECT_FALSE(SavePicture(image, path(L"a.webp")));
    EXPECT_FALSE(SavePicture(image, path(L"a.tga")));
    EXPECT_FALSE(SavePicture(image, path(L"a")));
    EXPECT_FALSE(SavePicture(image, path(L"folder.png")));
    EXPECT_FALSE(SavePicture(image, JoinPath(path(L"missing"), L"a.png")));
    EXPECT_FALSE(SavePicture(image, JoinPath(path(L"file.txt"), L"a.png")));
    EXPECT_FALSE(SavePicture(empty, path(L"a.png")));
    EXPECT_FALSE(SavePicture(tooWide, path(L"a.jpg")));
    EXPECT_FALSE(SavePicture(tooWide, path(L"a.gif")));
    std::vector<std::wstring> names = NamesIn(folder);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::wstring>{L"file.txt", L"folder.png"}));
}

TEST(PictureFiles, AnOlderFileIsReplacedWholeOrNotAtAll) {
    const TemporaryFolder folder;
    Image large = MakePicture(Rgb8, 200, 100), small = MakePicture(Rgb8), empty;
    const std::wstring path = folder / L"a.png";
    ASSERT_TRUE(SavePicture(large, path));
    EXPECT_FALSE(SavePicture(empty, path));
    EXPECT_EQ(LoadPicture(path).width, 200u);
    ASSERT_TRUE(SavePicture(small, path));
    EXPECT_EQ(LoadPicture(path).width, 37u);
    EXPECT_EQ(NamesIn(folder).size(), 1u);
}

TEST(PictureFiles, FullDiskIsAFailure) {
#ifdef _WIN32
    const std::wstring folder = L"Z:\\dev", full = L"Z:\\dev\\full";  // there under Wine only
#else
    const std::wstring folder = L"/dev", full = L"/dev/full";
#endif
    if (!FolderExists(folder)) GTEST_SKIP() << "no full disk at hand";
    // Larger than any buffer between, and not to be packed away.
    Image image(600, 400, Rgb8);
    std::uint32_t noise = 1;
    for (std::size_t i = 0; i < image.ByteCount(); ++i) {
        noise = noise * 214013 + 2531011;
        image.pixels[i] = static_cast<std::byte>(noise >> 16);
    }
    using enum PictureContainer;
    for (const PictureContainer container : {Bmp, Jpeg, Png, Tiff, Gif}) {
        EXPECT_FALSE(EncodePicture(image, full, container, Rgb8)) << static_cast<int>(container);
    }
}

TEST(PictureFiles, UnreadableFilesGiveAnEmptyPicture) {
    const TemporaryFolder folder;
    ASSERT_TRUE(CreateFolder(folder / L"folder.png"));
    ASSERT_TRUE(test::WriteFile(folder / L"empty.png", {}));
    ASSERT_TRUE(test::WriteFile(folder / L"junk.jpg", {'n', 'o', ' ', 'p', 'i', 'c', 't', 'u', 'r', 'e'}));
    ASSERT_TRUE(test::WriteFile(folder / L"some.dds", {'D', 'D', 'S', ' '}));
    for (const wchar_t* name : {L"missing.png", L"folder.png", L"empty.png", L"junk.jpg", L"some.dds", L""}) {
        const Image image = LoadPicture(*name ? folder / name : name);
        EXPECT_FALSE(image.IsValid()) << ToUtf8(name);
        EXPECT_EQ(image.width, 0u) << ToUtf8(name);
        EXPECT_EQ(image.format, None) << ToUtf8(name);
    }
}

TEST(PictureFiles, CutFilesNeverBringDownTheProgram) {
    const TemporaryFolder folder;
    for (const wchar_t* extension : {L".bmp", L".png", L".tif", L".jpg", L".gif"}) {
        Image source = MakePicture(Rgb8);
        ASSERT_TRUE(SavePicture(source, folder / (std::wstring(L"whole") + extension)));
        const Bytes whole = test::ReadFile(folder / (std::wstring(L"whole") + extension));
        const std::wstring path = folder / (std::wstring(L"cut") + extension);
        for (std::size_t size = 0; size < whole.size(); size += 1 + size / 8) {
            ASSERT_TRUE(test::WriteFile(
                path, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
            // What is left of a picture may be shown, if it has its size; of a JPEG it would be grey.
            const Image image = LoadPicture(path);
            if (*(extension + 1) == L'j') {
                EXPECT_FALSE(image.IsValid()) << "cut at " << size;
            }
            if (image.IsValid()) {
                EXPECT_EQ(image.width, source.width) << ToUtf8(extension) << " cut at " << size;
            }
            if (size < 20) {
                EXPECT_FALSE(image.IsValid()) << ToUtf8(extension) << " cut at " << size;
            }
        }
    }
}

TEST(PictureFiles, ContentsDecideTheReaderAndNamesAreUnicode) {
    const TemporaryFolder folder;
    Image source = MakePicture(Rgb8);
    ASSERT_TRUE(SavePicture(source, folder / L"a.png"));
    ASSERT_TRUE(MoveToNewName(folder / L"a.png", folder / L"a.jpg"));
    EXPECT_EQ(LoadPicture(folder / L"a.jpg").width, source.width);
    ASSERT_TRUE(MoveToNewName(folder / L"a.jpg", folder / L"no extension"));
    EXPECT_EQ(LoadPicture(folder / L"no extension").width, source.width);
    const std::wstring name = FromUtf8(
        "\xf0\x9f\x8c\x84 Gr\xc3\xbc\xc3\x9f"
        "e \xe6\x97\xa5.PnG");
    ASSERT_TRUE(SavePicture(source, folder / name));
    EXPECT_EQ(LoadPicture(folder / name).width, source.width);
    EXPECT_TRUE(FileExists(folder / name));
}

TEST(PictureFiles, TargetSizesFitThePictureInside) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.png";
    Image source(400, 200, Rgb8);
    source.Fill(PixelValue(Color8(10, 20, 30, 255)));
    ASSERT_TRUE(SavePicture(source, path));
    const struct {
        std::uint32_t targetWidth, targetHeight, width, height;
    } rows[] = {{100, 100, 100, 50}, {100, 10, 20, 10},  {800, 800, 800, 400},
                {100, 0, 400, 200},  {0, 100, 400, 200}, {1, 1, 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.targetWidth << " x " << row.targetHeight);
        const Image image = LoadPicture(path, 0, row.targetWidth, row.targetHeight);
        EXPECT_EQ(image.width, row.width);
        EXPECT_EQ(image.height, row.height);
        if (row.width) {
            EXPECT_EQ(image.GetPixel8(static_cast<int>(row.width) - 1, 0), Color8(10, 20, 30, 255));
        }
    }
    // Also where the pixels are converted first.
    ASSERT_TRUE(
        test::WriteFile(folder / L"p.bmp", test::MakeBmp(4, 2, 8, Bytes(8, 1), {0, 0, 0, 0, 30, 20, 10, 0})));
    const Image palette = LoadPicture(folder / L"p.bmp", 0, 2, 2);
    ASSERT_EQ(palette.width, 2u);
    EXPECT_EQ(palette.GetPixel8(1, 0), Color8(10, 20, 30, 255));
}

TEST(PictureFiles, AnimationsTellTheirFrames) {
    const TemporaryFolder folder;
    ASSERT_TRUE(
        test::WriteFile(folder / L"three.gif", test::MakeGif({{0, 1, 0, 0}, {7, 2, 1, 3}, {300, 0, 2, 1}})));
    ASSERT_TRUE(test::WriteFile(folder / L"one.gif", test::MakeGif({{7, 1, 0, 0}})));
    const struct {
        std::uint32_t delay, disposal, left, top;
    } rows[] = {{100, 1, 0, 0}, {70, 2, 1, 3}, {3000, 0, 2, 1}};
    for (std::uint32_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const Image image = LoadPicture(folder / L"three.gif", i);
        ASSERT_TRUE(image.IsValid());
        EXPECT_EQ(image.frameCount, 3u);
        EXPECT_EQ(image.frameDelay, rows[i].delay);
        EXPECT_EQ(image.frameDisposal, rows[i].disposal);
        EXPECT_EQ(image.frameLeft, rows[i].left);
        EXPECT_EQ(image.frameTop, rows[i].top);
        EXPECT_EQ(image.frameWidth, 1u);
        EXPECT_EQ(image.frameHeight, 1u);
        EXPECT_EQ(image.format, Rgba8);
    }
    EXPECT_FALSE(LoadPicture(folder / L"three.gif", 3).IsValid());
    const Image one = LoadPicture(folder / L"one.gif");
    EXPECT_EQ(one.GetPixel8(0, 0), Color8(255, 0, 0, 255));
    EXPECT_EQ(one.frameCount, 1u);
    EXPECT_EQ(one.frameDelay, 0u);
    EXPECT_EQ(one.frameWidth, 0u);
}

TEST(PictureFiles, GifKeepsFewColoursExactlyAndTransparency) {
    const TemporaryFolder folder;
    Image image(32, 16, Rgba8);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x) {
            const auto value = static_cast<std::uint8_t>(x * 8);
            image.SetPixel(
                x, y, y < 4 ? Color8(9, 9, 9, static_cast<std::uint8_t>(x * 4)) : Color8(value, 0, 255, 255));
        }
    }
    ASSERT_TRUE(SavePicture(image, folder / L"a.gif"));
    const Image read = LoadPicture(folder / L"a.gif");
    ASSERT_TRUE(read.IsValid());
    for (int x = 0; x < 32; ++x) {
        EXPECT_EQ(read.GetPixel8(x, 10), image.GetPixel8(x, 10)) << x;
        EXPECT_EQ(read.GetPixel8(x, 2).alpha, 0) << x;
    }
    // Written without alpha, nothing is transparent.
    ASSERT_TRUE(SavePicture(image, folder / L"b.gif", Rgb8));
    EXPECT_EQ(LoadPicture(folder / L"b.gif").GetPixel8(5, 2), Color8(9, 9, 9, 255));
}

TEST(PictureFiles, GifCodesOfEveryLengthAreReadBack) {
    const TemporaryFolder folder;
    for (const int colours : {1, 2, 3, 4, 5, 16, 17, 255, 256}) {
        // Noise soon fills the table of strings, and one long run does not.
        Image image(130, 130, Grey8);
        std::uint32_t noise = 1;
        for (std::size_t i = 0; i < image.ByteCount(); ++i) {
            noise = noise * 214013 + 2531011;
            image.pixels[i] =
                static_cast<std::byte>(i < 4000 ? 0 : (noise >> 16) % static_cast<std::uint32_t>(colours));
        }
        ASSERT_TRUE(SavePicture(image, folder / L"a.gif")) << colours;
        const Image read = LoadPicture(folder / L"a.gif");
        ASSERT_EQ(read.height, image.height) << colours;
        EXPECT_EQ(Compare(image, read).colour, 0) << colours;
    }
}

struct DecodeRow {
    const char* what;
    Bytes file;
    PixelFormat format;
    Color8 left, right;  // pixels (0, 0) and (1, 0)
};

TEST(PictureFiles, StoredKindsOfPixels) {
    const Color8 red(255, 0, 0, 255), blue(0, 0, 255, 255), white(255, 255, 255, 255), black(0, 0, 0, 255);
    const DecodeRow rows[] = {
        {"png grey", test::MakePng(2, 1, 8, 0, {0, 10, 200}), Grey8, {10, 10, 10, 255}, {200, 200, 200, 255}},
        {"png grey 16",
         test::MakePng(2, 1, 16, 0, {0, 10, 1, 200, 2}),
         Grey16,
         {10, 10, 10, 255},
         {200, 200, 200, 255}},
        {"png grey 1 bit", test::MakePng(2, 1, 1, 0, {0, 0x40}), Rgba8, black, white},
        {"png grey and alpha",
         test::MakePng(2, 1, 8, 4, {0, 10, 99, 200, 0}),
         Rgba8,
         {10, 10, 10, 99},
         {200, 200, 200, 0}},
        {"png grey and alpha 16",
         test::MakePng(2, 1, 16, 4, {0, 10, 1, 99, 2, 200, 3, 0, 4}),
         Rgba16,
         {10, 10, 10, 99},
         {200, 200, 200, 0}},
        {"png colour", test::MakePng(2, 1, 8, 2, {0, 255, 0, 0, 0, 0, 255}), Rgb8, red, blue},
        {"png colour 16", test::MakePng(2, 1, 16, 2, {0, 255, 1, 0, 2, 0, 3, 0, 4, 0, 5, 255, 6}), Rgb16, red,
         blue},
        {"png colour and alpha",
         test::MakePng(2, 1, 8, 6, {0, 255, 0, 0, 7, 0, 0, 255, 0}),
         Rgba8,
         {255, 0, 0, 7},
         {0, 0, 255, 0}},
        {"png palette", test::MakePng(2, 1, 8, 3, {0, 1, 0}, {0, 0, 255, 255, 0, 0}), Rgba8, red, blue},
        {"png palette 4 bits", test::MakePng(2, 1, 4, 3, {0, 0x10}, {0, 0, 255, 255, 0, 0}), Rgba8, red,
         blue},
        {"png palette with alpha",
         test::MakePng(2, 1, 8, 3, {0, 1, 0}, {0, 0, 255, 255, 0, 0}, {9}),
         Rgba8,
         red,
         {0, 0, 255, 9}},
        {"bmp palette", test::MakeBmp(2, 1, 8, {1, 0, 0, 0}, {255, 0, 0, 0, 0, 0, 255, 0}), Rgba8, red, blue},
        {"bmp 16 bits", test::MakeBmp(2, 1, 16, {0x00, 0x7c, 0x1f, 0x00}), Rgba8, red, blue},
        {"bmp 24 bits", test::MakeBmp(2, 1, 24, {0, 0, 255, 255, 0, 0, 0, 0}), Rgb8, red, blue},
        {"bmp 32 bits without alpha", test::MakeBmp(2, 1, 32, {0, 0, 255, 0, 255, 0, 0, 0}), Rgba8, red,
         blue},
        {"bmp top row first", test::MakeBmp(2, -2, 24, {0, 0, 255, 255, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 0, 0}),
         Rgb8, red, blue},
        {"tiff grey",
         test::MakeTiff(2, 1, 1, {8}, {10, 200}),
         Grey8,
         {10, 10, 10, 255},
         {200, 200, 200, 255}},
        {"tiff colour", test::MakeTiff(2, 1, 2, {8, 8, 8}, {255, 0, 0, 0, 0, 255}), Rgb8, red, blue},
        {"tiff colour 16 big-endian",
         test::MakeTiff(2, 1, 2, {16, 16, 16}, {255, 1, 0, 2, 0, 3, 0, 4, 0, 5, 255, 6}, {}, true), Rgb16,
         red, blue},
        {"tiff colour and alpha",
         test::MakeTiff(2, 1, 2, {8, 8, 8, 8}, {255, 0, 0, 7, 0, 0, 255, 0}, {{338, {2}}}),
         Rgba8,
         {255, 0, 0, 7},
         {0, 0, 255, 0}},
        {"tiff multiplied alpha",
         test::MakeTiff(2, 1, 2, {8, 8, 8, 8}, {51, 0, 0, 51, 0, 0, 255, 255}, {{338, {1}}}),
         Rgba8,
         {255, 0, 0, 51},
         blue},
        {"tiff palette",
         test::MakeTiff(
             2, 1, 3, {4}, {0x10},
             {{320, {0, 65535, 0, 0, 0, 0, 0, 0, 0,     0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                     0, 0,     0, 0, 0, 0, 0, 0, 65535, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}}}),
         Rgba8, red, blue},
        {"tiff 1 bit", test::MakeTiff(2, 1, 1, {1}, {0x40}), Rgba8, black, white},
        {"tiff cmyk", test::MakeTiff(2, 1, 5, {8, 8, 8, 8}, {0, 255, 255, 0, 255, 255, 0, 0}), Rgba8, red,
         blue},
    };
    const TemporaryFolder folder;
    for (const DecodeRow& row : rows) {
        SCOPED_TRACE(row.what);
        const std::wstring path = folder / L"picture";
        ASSERT_TRUE(test::WriteFile(path, row.file));
        const Image image = LoadPicture(path);
        EXPECT_EQ(image.format, row.format);
        ASSERT_EQ(image.width, 2u);
        const auto text = [](const Color8& c) {
            return testing::Message()
                   << int{c.red} << " " << int{c.green} << " " << int{c.blue} << " " << int{c.alpha};
        };
        EXPECT_EQ(image.GetPixel8(0, 0), row.left) << text(image.GetPixel8(0, 0));
        EXPECT_EQ(image.GetPixel8(1, 0), row.right) << text(image.GetPixel8(1, 0));
    }
}

TEST(PictureFiles, HeadersThatClaimTheWorldAreNotBelieved) {
    const TemporaryFolder folder;
    Bytes gif = test::MakeGif({{0, 0, 0, 0}});
    for (int i = 6; i < 10; ++i) gif[static_cast<std::size_t>(i)] = 0xff;
    Bytes tiff = test::MakeTiff(0xffff, 0xffff, 2, {8, 8, 8}, {1, 2, 3, 4});
    for (const Bytes& file :
         {test::MakePng(0x7fffffff, 0x7fffffff, 8, 6, {0}), test::MakePng(100000, 100000, 8, 6, {0}),
          test::MakeBmp(0x7fffffff, 0x7fffffff, 32, {1}), test::MakeBmp(100000, -100000, 24, {1}), gif,
          tiff}) {
        ASSERT_TRUE(test::WriteFile(folder / L"claim", file));
        const Image image = LoadPicture(folder / L"claim");
        // A GIF frame may be read without its canvas.
        EXPECT_LE(image.width, 1u) << file[0] << file[1];
    }
}

TEST(PictureFiles, TheOrdinaryKindsAreReadable) {
    const std::vector<std::wstring> extensions = ReadableExtensions();
    for (const wchar_t* extension : {L"BMP", L"JPG", L"JPEG", L"PNG", L"TIF", L"TIFF", L"GIF"}) {
        EXPECT_EQ(std::count(extensions.begin(), extensions.end(), extension), 1) << ToUtf8(extension);
    }
}

}  // namespace
}  // namespace skyvault
