// TIFF files put together tag by tag: what is read of each kind, and that nothing is read of damaged ones.

#include <gtest/gtest.h>

#include <map>

#include "codecs/picture_codec.h"
#include "codecs/tiff_file_posix.h"
#include "platform/utf8.h"
#include "tests/data_table.h"
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
    kTileWidth = 322,
    kTileHeight,
    kTileOffsets,
    kTileByteCounts
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

/// The tags of a table's cell.
Tags TagsOf(const std::string& cell) {
    std::vector<std::uint32_t> map(768, 0);
    map[1] = 0xffff, map[256 + 1] = 0x80ff, map[512 + 2] = 0x7f00;
    Tags tags;
    std::istringstream words(cell);
    for (std::string word; words >> word;) {
        std::istringstream numbers(word.substr(4));
        std::vector<std::uint32_t> values;
        for (std::string one; word != "320=map" && std::getline(numbers, one, ',');)
            values.push_back(ValueOf<std::uint32_t>(one));
        tags.emplace_back(ValueOf<std::uint32_t>(word.substr(0, 3)), values.empty() ? map : values);
    }
    return tags;
}

TEST(TiffReader, EachKindOfPixelIsShownAsItIsMeant) {
    const auto colour = [](const std::string& hex) {
        const Bytes c = FromHex(hex);
        return Color8(c[0], c[1], c[2], c[3]);
    };
    for (const auto& [where, what, tags, hex, format, left, right] :
         TableOf<std::string, std::string, std::string, std::string, std::string, std::string>(
             "tiff_pixels")) {
        const Bytes strip = FromHex(hex);
        for (const bool bigEndian : {false, true}) {
            SCOPED_TRACE(where);
            Image image;
            const Tags all = OneStrip(2, 1, static_cast<std::uint32_t>(strip.size()), TagsOf(tags));
            ASSERT_TRUE(Read(MakeTiff(all, strip, bigEndian), image));
            EXPECT_EQ(image.format, format == "Rgb8" ? PixelFormat::Rgb8 : PixelFormat::Rgba8);
            EXPECT_EQ(image.GetPixel8(0, 0), colour(left));
            EXPECT_EQ(image.GetPixel8(1, 0), colour(right));
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
