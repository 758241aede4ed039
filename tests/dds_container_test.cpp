// DDS files as they lie on the disk: headers, where the pixels of every kind are, and compressed blocks.
#include "codecs/dds_container.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "platform/debug_line.h"
#include "tests/made_dds.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

TEST(DdsHeader, WhatItSaysAndWhichAreRefused) {
    const TemporaryFolder folder;
    for (const DataRow& row : DataGroup("dds", "header")) {
        ASSERT_TRUE(WriteDds(folder / L"a.dds", row[2]));
        DdsMetadata m;
        const bool read = ReadDdsMetadata(folder / L"a.dds", m);
        std::vector<std::uint32_t> told;
        if (read)
            told = {m.width,     m.height,    m.depth,
                    m.arraySize, m.mipLevels, static_cast<std::uint32_t>(m.format)};
        EXPECT_EQ(told, Numbers(row[3])) << row.where;  // none where it is refused
    }
    const char* const kinds[] = {"unusable", "picture", "volume", "cube map"};
    for (const DataRow& row : DataGroup("dds", "kind")) {
        ASSERT_TRUE(WriteDds(folder / L"a.dds", row[2]));
        EXPECT_EQ(kinds[static_cast<int>(GetDdsKind(folder / L"a.dds"))], row[3]) << row.where;
    }
    for (const std::wstring& path : {folder / L"missing.dds", std::wstring()})
        EXPECT_EQ(GetDdsKind(path), DdsKind::Unusable);
    DdsMetadata metadata;
    for (const char* const fields : {"", "dx10=28"}) {
        const Bytes whole = MakeDds(fields);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            ASSERT_TRUE(WriteFile(folder / L"cut.dds", Bytes(whole.data(), whole.data() + size)));
            ASSERT_FALSE(ReadDdsMetadata(folder / L"cut.dds", metadata)) << size;
        }
    }
}

Bytes PixelsOf(const DdsItem& item, std::size_t rowBytes, std::uint32_t rows) {
    Bytes pixels;
    for (std::uint32_t y = 0; y < rows; ++y) {
        const auto* row = reinterpret_cast<const std::uint8_t*>(item.pixels + y * item.rowPitch);
        pixels.insert(pixels.end(), row, row + rowBytes);
    }
    return pixels;
}

/// The file is refused where there is no memory, and whether some was asked for before.
void ExpectRefused(const std::wstring& path, bool asked = false) {
    const DebugLineCapture lines;
    DdsTexture texture;
    FailAllocationsAfter(0);
    EXPECT_FALSE(LoadDds(path, texture));
    FailAllocationsAfter(-1);
    EXPECT_EQ(lines.Text().empty(), !asked);
}

TEST(DdsLoad, EveryItemsLargestLevelAndNoFileThatIsTooShort) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const DataRow& row : DataGroup("dds", "load")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::uint32_t> told = Numbers(row[3]);
        const std::size_t size = told[0], itemPitch = told[1], rowBytes = told[2],
                          itemBytes = rowBytes * told[3];
        const Bytes pixels = Noise(size);
        DdsTexture texture;
        ASSERT_TRUE(WriteDds(path, row[2], pixels) && LoadDds(path, texture));
        const DdsMetadata& metadata = texture.Metadata();
        EXPECT_EQ(metadata.arraySize * itemPitch, size);
        for (std::uint32_t i = 0; i < metadata.arraySize; ++i) {
            const DdsItem item = texture.Item(i);
            ASSERT_NE(item.pixels, nullptr);
            EXPECT_TRUE(item.width == metadata.width && item.height == metadata.height);
            EXPECT_EQ(item.slicePitch, itemBytes);
            const std::uint8_t* const start = pixels.data() + i * itemPitch;
            EXPECT_EQ(PixelsOf(item, rowBytes, told[3]), Bytes(start, start + itemBytes));
        }
        EXPECT_EQ(texture.Item(metadata.arraySize).pixels, nullptr);

        EXPECT_TRUE(WriteDds(path, row[2], Join({pixels, {0}})) && LoadDds(path, texture));
        for (const std::size_t less : {size - 1, size / 2, std::size_t{0}}) {
            ASSERT_TRUE(WriteDds(path, row[2], Bytes(pixels.data(), pixels.data() + less)));
            ExpectRefused(path);
        }
        EXPECT_FALSE(LoadDds(path, texture));
        EXPECT_NE(texture.Item(0).pixels, nullptr) << "what was loaded before stays";
    }
    for (const DataRow& row : DataGroup("dds", "claim")) {
        SCOPED_TRACE(row.where);
        ASSERT_TRUE(WriteDds(path, row[2], Bytes(400)));
        ExpectRefused(path);
    }
}

TEST(DdsLoad, OldStoragesBecomeRedGreenBlueAlpha) {
    Bytes palette;
    for (std::uint32_t i = 0; i < 256; ++i) palette = Join({palette, Little(1, {i, 255 - i, 9, 0})});
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const DataRow& row : DataGroup("dds", "storage")) {
        SCOPED_TRACE(row.where);
        const std::string fields = "width=1 height=2 " + row[2];
        Bytes stored = Join({row[1].starts_with("palette") ? palette : Bytes(), FromHex(row[3])});
        DdsTexture texture;
        ASSERT_TRUE(WriteDds(path, fields, stored) && LoadDds(path, texture));
        EXPECT_EQ(texture.Metadata().format, DdsFormat::Rgba8Unorm);
        EXPECT_EQ(PixelsOf(texture.Item(0), 4, 2), FromHex(row[4]));
        ExpectRefused(path, true);
        stored.pop_back();
        ASSERT_TRUE(WriteDds(path, fields, stored));
        ExpectRefused(path);
    }
}

TEST(DdsSave, TheHeaderOtherProgramsKnow) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    for (const DataRow& row : DataGroup("dds", "save")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::uint32_t> told = Numbers(row[3]);
        const DdsMetadata metadata{
            .width = told[1], .height = told[2], .arraySize = told[3], .format = DdsFormat{told[0]}};
        const Bytes pixels = Noise(std::size_t{told[3]} * told[4]);
        const std::size_t rows = metadata.format == DdsFormat::Bc1 ? 1 : metadata.height,
                          rowBytes = told[4] / rows;
        const std::string size = "width=" + std::to_string(told[1]) + " height=" + std::to_string(told[2]);
        const Bytes expected = MakeDds(size + " depth=1 levels=1 " + row[2], pixels);
        // The rows as they are, and further apart than they are long.
        for (const std::size_t pitch : {rowBytes, rowBytes + 4}) {
            Bytes spread(pixels.size() / rowBytes * pitch, 7);
            for (std::size_t y = 0; y < pixels.size() / rowBytes; ++y)
                std::copy_n(&pixels[y * rowBytes], rowBytes, &spread[y * pitch]);
            std::vector<DdsItem> items;
            for (std::size_t i = 0; i < told[3]; ++i)
                items.push_back(
                    {AsBytes(spread).data() + i * rows * pitch, told[1], told[2], pitch, pitch * rows});
            // An older, longer file under the name leaves nothing behind.
            ASSERT_TRUE(WriteFile(path, Bytes(5000, 1)) && SaveDds(path, metadata, items));
            EXPECT_EQ(ReadFile(path), expected);
        }
    }
}

// --- blocks: what they decode to, and what pictures encode to ----------------------------------------------

/// The pixels of what was decompressed, which lie there red first.
Image PictureOf(const DdsTexture& texture) {
    const DdsItem item = texture.Item(0);
    Image image(item.width, item.height, Rgba8);
    EXPECT_EQ(texture.Metadata().format, DdsFormat::Rgba8Unorm);
    EXPECT_EQ(item.slicePitch, image.ByteCount());
    std::memcpy(image.pixels.get(), item.pixels, image.ByteCount());
    image.SwapRedAndBlue();
    return image;
}

/// A picture of blocks, loaded and decompressed.
Image Decode(const std::string& fields, const Bytes& blocks) {
    const TemporaryFolder folder;
    DdsTexture compressed, result, again;
    EXPECT_TRUE(WriteDds(folder / L"a.dds", fields, blocks));
    EXPECT_TRUE(LoadDds(folder / L"a.dds", compressed) && DecompressDds(compressed, result));
    EXPECT_FALSE(DecompressDds(result, again));
    return PictureOf(result);
}

/// The top left corner of a picture, compressed and back.
Image CompressAndBack(const Image& image, std::uint32_t width, std::uint32_t height,
                      DdsFormat format = DdsFormat::Bc1) {
    Image stored = image.CopyRect();
    stored.SwapRedAndBlue();
    const DdsItem item{stored.Row(0), width, height, stored.stride, stored.ByteCount()};
    const DdsMetadata metadata{.width = width, .height = height, .format = DdsFormat::Rgba8Unorm};
    DdsTexture compressed, decoded;
    EXPECT_TRUE(CompressDds(format, metadata, {&item, 1}, compressed));
    EXPECT_EQ(compressed.Metadata().format, format);
    EXPECT_TRUE(DecompressDds(compressed, decoded));
    return PictureOf(decoded);
}

std::array<int, 4> Channels(const Image& image, int x, int y) {
    const Color8 colour = image.GetPixel8(x, y);
    return {colour.red, colour.green, colour.blue, colour.alpha};
}

TEST(DdsDecode, EveryModeGivesItsColours) {
    for (const DataRow& row : DataGroup("dds", "block")) {
        const Image decoded = Decode(row[2], FromHex(row[3]));
        const std::vector<std::uint32_t> told = Numbers(row[4]);
        for (std::size_t i = 0; i < 16; ++i)
            EXPECT_NEAR(Channels(decoded, static_cast<int>(i / 4), 0)[i % 4], told.at(i + 1), told[0])
                << row.where << "; pixel " << i / 4 << ", channel " << i % 4;
    }
    // 5 × 3 of BC4: two blocks, of one value each.
    const Image cut = Decode("dx10=80 width=5 height=3", {9, 9, 0, 0, 0, 0, 0, 0, 99, 99, 0, 0, 0, 0, 0, 0});
    EXPECT_TRUE(Channels(cut, 3, 2)[0] == 9 && Channels(cut, 4, 2)[0] == 99);
}

// Every mode, partition and anchor: the sums over noise were taken from another decoder.
TEST(DdsDecode, Bc7NoiseSumsUpAsElsewhere) {
    constexpr std::uint32_t kSums[8] = {0x7b55e231, 0x1817897e, 0xe40aacc2, 0x993e0782,
                                        0xd5762985, 0xa03b6627, 0xba4adcad, 0xc16855b3};
    for (std::uint32_t mode = 0; mode < 8; ++mode) {
        Bytes blocks = Noise(std::size_t{16} * 64 * 64, 1 + mode);
        for (std::size_t i = 0; i < blocks.size(); i += 16)
            blocks[i] = static_cast<std::uint8_t>((blocks[i] << 1 | 1) << mode);
        const Image decoded = Decode("dx10=98 width=256 height=256", blocks);
        std::uint32_t sum = 0;
        ForPixels(decoded, [&](int x, int y) {
            for (const int channel : Channels(decoded, x, y))
                sum = sum * 31 + static_cast<std::uint32_t>(channel);
        });
        EXPECT_EQ(sum, kSums[mode]) << "mode " << mode;
    }
}

TEST(DdsEncode, PicturesStayCloseAlphaBelowHalfIsTransparentAndNothingFromOutsideGetsIn) {
    const auto part = [](int value) { return static_cast<std::uint8_t>(value); };
    for (const auto& [w, h, holes] :
         {std::tuple{125, 70, false}, {125, 70, true}, {3, 1, false}, {5, 3, true}}) {
        const int width = w, height = h;
        // The picture is the corner of a larger, gaudy one.
        Image canvas(static_cast<std::uint32_t>(width + 4), static_cast<std::uint32_t>(height + 4), Rgba8);
        const Bytes noise = Noise(129 * 74);
        ForPixels(canvas, [&, clear = holes](int x, int y) {
            const int some = noise[static_cast<std::size_t>(y * 129 + x)];
            const Color8 inside(part(x * 240 / 125 + some / 16), part(250 - y * 240 / 70),
                                part((x + y) * 120 / 195 + some % 16),
                                clear && (x + 3 * y) % 7 == 0 ? 127 : 128);
            const Color8 gaudy = (x + y) % 2 ? Color8(255, 0, 255, 255) : Color8(0, 255, 0, 255);
            canvas.SetPixel(x, y, x < width && y < height ? inside : gaudy);
        });
        const Image decoded =
            CompressAndBack(canvas, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
        double error = 0, count = 0;
        ForPixels(decoded, [&](int x, int y) {
            const auto wanted = Channels(canvas, x, y), got = Channels(decoded, x, y);
            const bool opaque = wanted[3] >= 128;
            ASSERT_TRUE(opaque ? got[3] == 255 : got == (std::array<int, 4>{})) << x << ", " << y;
            for (std::size_t c = 0; c < 3 && opaque; ++c, ++count) error += std::pow(got[c] - wanted[c], 2);
        });
        EXPECT_GT(10 * std::log10(255 * 255 * count / error), 35.0) << "decibels; " << width << " " << holes;
    }
}

TEST(DdsEncode, EndPointsGoWhereMostPixelsAre) {
    // One transparent pixel, one of 40, seven each of 80 and 200: the best ends are near 75 and 200, not at
    // the extremes 40 and 200, which leave the 80s 40 away from any colour.
    Image picture(4, 4, Rgba8);
    for (int i = 0; i < 16; ++i) {
        const std::uint8_t grey = i < 2 ? 40 : i % 2 ? 80 : 200;
        picture.SetPixel(i % 4, i / 4, Color8(grey, grey, grey, i == 0 ? 0 : 255));
    }
    const Image decoded = CompressAndBack(picture, 4, 4);
    for (int i = 2; i < 16; ++i) EXPECT_NEAR(decoded.GetPixel8(i % 4, i / 4).red, i % 2 ? 80 : 200, 8) << i;
}

TEST(DdsEncode, PhotosAndNoiseStayAsCloseAsTheFormatsAllow) {
    Image photo = Loaded(FromUtf8(SKYVAULT_SOURCE_DIR "/Media/Examples/Mountain lake.jpg"));
    photo = photo.CopyRect(PixelRect{1024, 900, 1024 + 509, 900 + 254});
    Image opaque(photo.width, photo.height, Rgba8);
    ForPixels(opaque, [&](int x, int y) { opaque.SetPixel(x, y, photo.GetPixel8(x, y)); });
    // Decibels, half a one below what was measured with either system's JPEG decoder.
    struct {
        DdsFormat format;
        double photo, noise;
    } const rows[] = {{DdsFormat::Bc3, 36.2, 14.3}, {DdsFormat::Bc7, 41.6, 12.9}};
    for (const auto& row : rows) {
        for (const Image& picture : {opaque.CopyRect(), RandomImage(256, 256, Rgba8)}) {
            const Image decoded = CompressAndBack(picture, picture.width, picture.height, row.format);
            double error = 0;
            ForPixels(picture, [&](int x, int y) {
                const auto wanted = Channels(picture, x, y), got = Channels(decoded, x, y);
                for (std::size_t c = 0; c < 4; ++c) error += std::pow(got[c] - wanted[c], 2);
            });
            const bool isPhoto = picture.width == photo.width;
            const double count = 4.0 * picture.width * picture.height;
            EXPECT_GT(10 * std::log10(255 * 255 * count / error), isPhoto ? row.photo : row.noise)
                << static_cast<int>(row.format);
            EXPECT_FALSE(isPhoto && decoded.HasTransparency());
        }
    }
}

TEST(DdsEncode, OneColourIsExactInBc7) {
    Image colours(1024, 4, Rgba8);
    const auto part = [](int value) { return static_cast<std::uint8_t>(value); };
    ForPixels(colours, [&](int x, int y) {
        colours.SetPixel(x, y, Color8(part(x / 4), part(255 - x / 4), part(x / 4 * 7), part(x / 4 ^ 85)));
    });
    EXPECT_TRUE(SameBytes(CompressAndBack(colours, 1024, 4, DdsFormat::Bc7), colours));
}

/// A BC6H block of one region, read as Direct3D's documents describe it: red, green and blue of each pixel.
std::array<float, 48> DecodeBc6h(const std::byte* block, std::set<int>& modes) {
    int at = 0;
    const auto take = [&](int count) {
        int value = 0;
        for (int i = 0; i < count; ++i, ++at)
            value |= (std::to_integer<int>(block[at / 8]) >> at % 8 & 1) << i;
        return value;
    };
    const int mode = take(5);
    modes.insert(mode);
    const std::map<int, std::pair<int, int>> bitsOfMode = {
        {0x03, {10, 10}}, {0x07, {11, 9}}, {0x0b, {12, 8}}, {0x0f, {16, 4}}};
    const auto [bits, other] = bitsOfMode.at(mode);
    int ends[2][3];
    for (int& value : ends[0]) value = take(10);
    for (int c = 0; c < 3; ++c) {
        ends[1][c] = take(other);
        for (int bit = bits - 1; bit >= 10; --bit) ends[0][c] |= take(1) << bit;
        if (mode == 0x03) continue;
        if (ends[1][c] >> (other - 1)) ends[1][c] -= 1 << other;
        ends[1][c] = (ends[1][c] + ends[0][c]) & ((1 << bits) - 1);
    }
    for (auto& end : ends)
        for (int& value : end)
            if (bits < 16 && value != 0)
                value = value == (1 << bits) - 1 ? 0xffff : ((value << 16) + 0x8000) >> bits;
    constexpr int kWeights[] = {0, 4, 9, 13, 17, 21, 26, 30, 34, 38, 43, 47, 51, 55, 60, 64};
    std::array<float, 48> pixels;
    for (std::size_t i = 0; i < 16; ++i) {
        const int weight = kWeights[take(i == 0 ? 3 : 4)];
        for (std::size_t c = 0; c < 3; ++c) {
            const int mixed = ((64 - weight) * ends[0][c] + weight * ends[1][c] + 32) >> 6;
            pixels[3 * i + c] = HalfToFloat(Half{static_cast<std::uint16_t>(mixed * 31 >> 6)});
        }
    }
    return pixels;
}

TEST(DdsEncode, HalvesStayCloseInBc6hFromDimToGlaring) {
    // From block to block brighter and of more contrast: every mode is the best somewhere.
    constexpr std::uint32_t kWidth = 256;
    Image picture(kWidth, 4, RgbaHalf);
    const Image noise = RandomImage(kWidth, 4, Rgba8);
    ForPixels(picture, [&](int x, int y) {
        const float bright = std::exp2(static_cast<float>(x / 4) / 8 - 4);
        const float stops = static_cast<float>(x / 4 % 16) / 2;
        const float some = std::exp2(stops * static_cast<float>(noise.GetPixel8(x, y).red) / 255);
        picture.SetPixel(x, y, Value(bright * some, bright / 2 * some, bright / 3, 0.5f));
    });
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    for (int i = 0; i < 16; ++i) picture.SetPixel(i % 4, i / 4, Value(-1, kInfinite, std::nanf(""), 1));
    const DdsItem item{picture.Row(0), kWidth, 4, picture.stride, picture.ByteCount()};
    const DdsMetadata metadata{.width = kWidth, .height = 4, .format = DdsFormat::Rgba16Float};
    DdsTexture compressed;
    ASSERT_TRUE(CompressDds(DdsFormat::Bc6h, metadata, {&item, 1}, compressed));
    std::set<int> modes;
    for (int block = 0; block < 64; ++block) {
        const std::array<float, 48> decoded = DecodeBc6h(compressed.Item(0).pixels + 16 * block, modes);
        for (int i = 0; i < 48; ++i) {
            const ColorHalf c = picture.GetPixelHalf(4 * block + i / 3 % 4, i / 12);
            const float wanted = HalfToFloat(i % 3 == 0 ? c.red : i % 3 == 1 ? c.green : c.blue);
            const float special[] = {0, 65504, 0};
            const float expected = block == 0 ? special[i % 3] : wanted;
            EXPECT_NEAR(decoded[static_cast<std::size_t>(i)], expected,
                        expected * (0.02f + 0.03f * static_cast<float>(block % 16)))

                << block << " " << i;
        }
    }
    EXPECT_EQ(modes.size(), 4u);
}

}  // namespace
}  // namespace skyvault::test
