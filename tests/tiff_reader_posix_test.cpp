// TIFF files put together tag by tag: what is read of each kind, and that nothing is read of damaged ones.

#include <gtest/gtest.h>

#include <map>

#include "codecs/picture_codec.h"
#include "codecs/tiff_file_posix.h"
#include "platform/utf8.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

using Tags = std::vector<std::pair<std::uint32_t, std::vector<std::uint32_t>>>;
enum : std::uint32_t {
    kWidth = 256,
    kHeight,
    kBits,
    kCompression,
    kPhotometric = 262,
    kOffsets = 273,
    kSamples = 277,
    kRowsPerStrip,
    kByteCounts,
    kPlanar = 284,
    kPredictor = 317,
    kPalette = 320,
    kTileWidth = 322,
    kTileHeight,
    kTileOffsets,
    kTileByteCounts,
    kExtra = 338,
    kFormat
};
enum : std::uint32_t { kDeflate = 8, kPackBits = 32773 };

/// A file of one directory behind its strips; numbers are stored in four bytes each.
Bytes MakeTiff(const Tags& tags, const Bytes& strips, bool bigEndian = false) {
    const auto number = [&](std::uint32_t value, int bytes) {
        Bytes stored = Little(bytes, {value});
        if (bigEndian) std::reverse(stored.begin(), stored.end());
        return stored;
    };
    const auto directory = static_cast<std::uint32_t>(8 + strips.size() + strips.size() % 2);
    std::uint32_t behind = directory + 2 + 12 * static_cast<std::uint32_t>(tags.size()) + 4;
    Bytes file =
        Join({bigEndian ? Bytes{'M', 'M'} : Bytes{'I', 'I'}, number(42, 2), number(directory, 4), strips});
    Bytes values;
    file.resize(directory);
    const auto add = [](Bytes& to, const Bytes& more) { to.insert(to.end(), more.begin(), more.end()); };
    add(file, number(static_cast<std::uint32_t>(tags.size()), 2));
    for (const auto& [tag, numbers] : tags) {
        const auto count = static_cast<std::uint32_t>(numbers.size());
        add(file, Join({number(tag, 2), number(4, 2), number(count, 4)}));
        if (count == 1) {
            add(file, number(numbers[0], 4));
            continue;
        }
        add(file, number(behind, 4));
        for (const std::uint32_t value : numbers) add(values, number(value, 4));
        behind += 4 * count;
    }
    return Join({file, number(0, 4), values});
}

/// The tags of a picture in one strip, others instead of or beside them.
Tags OneStrip(std::uint32_t width, std::uint32_t height, std::uint32_t bytes, const Tags& others) {
    std::map<std::uint32_t, std::vector<std::uint32_t>> tags = {{kWidth, {width}},
                                                                {kHeight, {height}},
                                                                {kOffsets, {8}},
                                                                {kByteCounts, {bytes}},
                                                                {kRowsPerStrip, {height}}};
    for (const auto& [tag, numbers] : others) tags[tag] = numbers;
    return {tags.begin(), tags.end()};
}

bool Read(const Bytes& file, Image& image, std::uint32_t page = 0) {
    TiffFile tiff(AsBytes(file));
    return tiff.Select(page) && tiff.Read(image) && image.format == tiff.Facts().format;
}

TEST(TiffReader, EachKindOfPixelIsShownAsItIsMeant) {
    using enum PixelFormat;
    std::vector<std::uint32_t> map(768, 0);
    map[1] = 0xffff, map[256 + 1] = 0x80ff, map[512 + 2] = 0x7f00;
    const struct {
        const char* what;
        Tags tags;
        Bytes strip;  ///< two pixels
        PixelFormat format;
        Color8 left, right;
    } rows[] = {
        {"one bit where none is told", {{kPhotometric, {1}}}, {0x40}, Rgba8, {0, 0, 0, 255}, kOpaqueWhite},
        {"min is white",
         {{kBits, {8}}, {kPhotometric, {0}}},
         {55, 255},
         Rgba8,
         {200, 200, 200, 255},
         {0, 0, 0, 255}},
        {"min is white, 16",
         {{kBits, {16}}, {kPhotometric, {0}}},
         {0, 0, 0xfe, 0xfe},
         Rgba8,
         kOpaqueWhite,
         {1, 1, 1, 255}},
        {"four bits", {{kBits, {4}}, {kPhotometric, {1}}}, {0x1f}, Rgba8, {17, 17, 17, 255}, kOpaqueWhite},
        {"palette",
         {{kBits, {8}}, {kPhotometric, {3}}, {kPalette, map}},
         {1, 2},
         Rgba8,
         {255, 128, 0, 255},
         {0, 0, 127, 255}},
        {"palette and alpha",
         {{kBits, {8, 8}}, {kSamples, {2}}, {kExtra, {2}}, {kPhotometric, {3}}, {kPalette, map}},
         {1, 9, 2, 8},
         Rgba8,
         {255, 128, 0, 9},
         {0, 0, 127, 8}},
        {"CMYK",
         {{kBits, {8, 8, 8, 8}}, {kSamples, {4}}, {kPhotometric, {5}}},
         {255, 0, 0, 0, 0, 0, 155, 55},
         Rgba8,
         {0, 255, 255, 255},
         {200, 200, 78, 255}},
        {"a fourth sample of no kind",
         {{kBits, {8, 8, 8, 8}}, {kSamples, {4}}, {kPhotometric, {2}}},
         {1, 2, 3, 4, 5, 6, 7, 8},
         Rgba8,
         {1, 2, 3, 4},
         {5, 6, 7, 8}},
        {"a fourth sample that is no alpha",
         {{kBits, {8, 8, 8, 8}}, {kSamples, {4}}, {kPhotometric, {2}}, {kExtra, {0}}},
         {1, 2, 3, 4, 5, 6, 7, 8},
         Rgb8,
         {1, 2, 3, 255},
         {5, 6, 7, 255}},
        {"multiplied alpha",
         {{kBits, {8, 8, 8, 8}}, {kSamples, {4}}, {kPhotometric, {2}}, {kExtra, {1}}},
         {50, 25, 0, 100, 9, 9, 9, 0},
         Rgba8,
         {128, 64, 0, 100},
         {9, 9, 9, 0}},
        {"samples apart",
         {{kBits, {8, 8, 8}},
          {kSamples, {3}},
          {kPhotometric, {2}},
          {kPlanar, {2}},
          {kOffsets, {8, 10, 12}},
          {kByteCounts, {2, 2, 2}}},
         {1, 2, 3, 4, 5, 6},
         Rgb8,
         {1, 3, 5, 255},
         {2, 4, 6, 255}},
        {"whole numbers of 32 bits",
         {{kBits, {32}}, {kPhotometric, {1}}},
         {255, 255, 255, 255, 0, 0, 0, 0},
         Rgba8,
         kOpaqueWhite,
         {0, 0, 0, 255}},
        {"signed",
         {{kBits, {8}}, {kPhotometric, {1}}, {kFormat, {2}}},
         {0x80, 127},
         Rgba8,
         {0, 0, 0, 255},
         kOpaqueWhite},
    };
    for (const auto& row : rows) {
        for (const bool bigEndian : {false, true}) {
            SCOPED_TRACE(row.what);
            Image image;
            ASSERT_TRUE(Read(MakeTiff(OneStrip(2, 1, static_cast<std::uint32_t>(row.strip.size()), row.tags),
                                      row.strip, bigEndian),
                             image));
            EXPECT_EQ(image.format, row.format);
            EXPECT_TRUE(image.GetPixel8(0, 0) == row.left && image.GetPixel8(1, 0) == row.right)
                << +image.GetPixel8(0, 0).red << " " << +image.GetPixel8(1, 0).red;
        }
    }
}

/// 4 × 4 pixels of colour, the bytes 0, 17, 34 … 255 three times over, as a deflated strip.
const Bytes kDeflated = FromHex("78016310543276094d2bef98b96af799bbeffe3310e00300064617e9");

TEST(TiffReader, DamagedFilesAreRefused) {
    Bytes pixels;
    for (int i = 0; i < 48; ++i) pixels.push_back(static_cast<std::uint8_t>(i % 16 * 17));
    const Tags colour = {{kBits, {8, 8, 8}}, {kSamples, {3}}, {kPhotometric, {2}}};
    const auto with = [&](Tags more) {
        more.insert(more.end(), colour.begin(), colour.end());
        return more;
    };
    Image image;
    const Bytes deflated = MakeTiff(
        OneStrip(4, 4, static_cast<std::uint32_t>(kDeflated.size()), with({{kCompression, {kDeflate}}})),
        kDeflated);
    ASSERT_TRUE(Read(deflated, image));
    EXPECT_EQ(image.GetPixel8(3, 3), Color8(13 * 17, 14 * 17, 15 * 17, 255));
    for (std::size_t at = 8; at < 8 + kDeflated.size(); ++at) {
        Bytes damaged = deflated;
        damaged[at] ^= 1;
        EXPECT_FALSE(Read(damaged, image)) << at;
    }
    const Bytes plain = MakeTiff(OneStrip(4, 4, 48, with({})), pixels);
    ASSERT_TRUE(Read(plain, image));
    for (std::size_t size = 0; size < plain.size() - 12; ++size) {
        EXPECT_FALSE(Read(Bytes(plain.begin(), plain.begin() + static_cast<std::ptrdiff_t>(size)), image))
            << size;
    }
    const std::pair<const char*, Tags> rows[] = {
        {"strip behind the end", {{kOffsets, {900}}}},
        {"strip over the end", {{kByteCounts, {4800}}, {kHeight, {400}}, {kRowsPerStrip, {400}}}},
        {"empty strip", {{kByteCounts, {0}}, {kCompression, {kPackBits}}}},
        {"too few strips", {{kRowsPerStrip, {1}}}},
        {"strips that share their bytes",
         {{kRowsPerStrip, {1}},
          {kHeight, {9}},
          {kOffsets, std::vector<std::uint32_t>(9, 8)},
          {kByteCounts, std::vector<std::uint32_t>(9, 40)}}},
        {"run lengths too short", {{kCompression, {kPackBits}}}},
        {"unknown compression", {{kCompression, {7777}}}},
        {"old JPEG", {{kCompression, {6}}}},
        {"tiles that no file can hold",
         {{kTileWidth, {60000}},
          {kTileHeight, {60000}},
          {kTileOffsets, {8}},
          {kTileByteCounts, {48}},
          {kCompression, {kDeflate}}}},
        {"no size", {{kWidth, {0}}}},
    };
    for (const auto& [what, tags] : rows) {
        EXPECT_FALSE(Read(MakeTiff(OneStrip(4, 4, 48, with(tags)), pixels), image)) << what;
    }
}

TEST(TiffReader, EveryCompressionIsReadAndDamageThatIsOnlyWarnedOfRefused) {
    for (const wchar_t* name : {L"g3", L"g4", L"jpeg", L"jpegt", L"lzma", L"sep", L"webp", L"ycc",
                                L"cmyktiled", L"bigzstd", L"zip16", L"pal", L"float"}) {
        const std::wstring folder = FromUtf8(SKYVAULT_SOURCE_DIR "/fuzz/corpus/tiff/");
        const Bytes whole = ReadFile(folder + name + L".tif");
        Image image;
        ASSERT_TRUE(Read(whole, image)) << ToUtf8(name);
        EXPECT_EQ(image.width, 13u);
        EXPECT_EQ(image.height, 9u);
    }
    // The last bytes of a JPEG strip, which its decoder would fill with grey.
    Bytes jpeg = ReadFile(FromUtf8(SKYVAULT_SOURCE_DIR "/fuzz/corpus/tiff/jpeg.tif"));
    const Bytes endMarker = {0xff, 0xd9};
    const auto end = std::find_end(jpeg.begin(), jpeg.end(), endMarker.begin(), endMarker.end());
    ASSERT_NE(end, jpeg.end());
    std::fill(end - 20, end + 2, std::uint8_t{0});
    Image image;
    EXPECT_FALSE(Read(jpeg, image));
}

TEST(TiffReader, PagesAreCountedOnceEachAlsoInALoop) {
    const Tags grey = {{kBits, {8}}, {kPhotometric, {1}}};
    Bytes first = MakeTiff(OneStrip(1, 1, 1, grey), {11, 0});
    const std::size_t end = first.size();
    // The second directory is a copy of the first, its strip the other byte.
    Bytes both = first;
    both.insert(both.end(), first.begin() + 10, first.end());
    const Bytes second = Little(4, {static_cast<std::uint32_t>(end)});
    std::copy(second.begin(), second.end(), both.begin() + static_cast<std::ptrdiff_t>(end) - 4);
    for (const bool loop : {false, true}) {
        if (loop) both[both.size() - 4] = 10;
        TiffFile file(AsBytes(both));
        Image image;
        ASSERT_TRUE(file.Select(1) && file.Read(image));
        EXPECT_EQ(file.Facts().frameCount, 2u);
        EXPECT_EQ(image.frameCount, 2u);
        EXPECT_FALSE(file.Select(2));
    }
}

}  // namespace
}  // namespace skyvault::test
