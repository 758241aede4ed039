// Block compression through the container: what blocks decode to, and what pictures encode to.
#include <gtest/gtest.h>

#include "codecs/dds_container.h"
#include "tests/made_dds.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

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
Image CompressAndBack(const Image& image, std::uint32_t width, std::uint32_t height) {
    Image stored = image.CopyRect();
    stored.SwapRedAndBlue();
    const DdsItem item{stored.Row(0), width, height, stored.stride, stored.ByteCount()};
    const DdsMetadata metadata{.width = width, .height = height, .format = DdsFormat::Rgba8Unorm};
    DdsTexture compressed, decoded;
    EXPECT_TRUE(CompressToBc1(metadata, {&item, 1}, compressed));
    EXPECT_EQ(compressed.Metadata().format, DdsFormat::Bc1);
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

TEST(DdsEncode, PicturesStayCloseAndAlphaBelowHalfIsTransparent) {
    const auto part = [](int value) { return static_cast<std::uint8_t>(value); };
    for (const bool holes : {false, true}) {
        Image picture(125, 70, Rgba8);
        const Bytes noise = Noise(125 * 70);
        ForPixels(picture, [&](int x, int y) {
            const int some = noise[static_cast<std::size_t>(y * 125 + x)];
            picture.SetPixel(
                x, y,
                Color8(part(x * 240 / 125 + some / 16), part(250 - y * 240 / 70),
                       part((x + y) * 120 / 195 + some % 16), holes && (x + 3 * y) % 7 == 0 ? 127 : 128));
        });
        const Image decoded = CompressAndBack(picture, 125, 70);
        double error = 0, count = 0;
        ForPixels(picture, [&](int x, int y) {
            const auto wanted = Channels(picture, x, y), got = Channels(decoded, x, y);
            const bool opaque = wanted[3] >= 128;
            ASSERT_TRUE(opaque ? got[3] == 255 : got == (std::array<int, 4>{})) << x << ", " << y;
            for (std::size_t c = 0; c < 3 && opaque; ++c, ++count) error += std::pow(got[c] - wanted[c], 2);
        });
        EXPECT_GT(10 * std::log10(255 * 255 * count / error), 35.0) << "decibels; " << holes;
    }
}

TEST(DdsEncode, NothingFromOutsideGetsIntoBlocksOverTheEdge) {
    for (const auto& [w, h] : {std::pair{1, 1}, {2, 2}, {3, 1}, {5, 3}, {1, 6}, {6, 5}}) {
        const auto width = static_cast<std::uint32_t>(w), height = static_cast<std::uint32_t>(h);
        for (const std::uint8_t alpha : Bytes{255, 0}) {
            // The picture is the corner of a larger, gaudy one. It is black, its last column and row white.
            Image canvas(width + 4, height + 4, Rgba8);
            ForPixels(canvas, [&, right = w - 1, bottom = h - 1](int x, int y) {
                const Color8 gaudy = (x + y) % 2 ? Color8(255, 0, 255, 255) : Color8(0, 255, 0, 255);
                const Color8 inside = x == right || y == bottom ? kOpaqueWhite : Color8();
                canvas.SetPixel(x, y, x > right || y > bottom ? gaudy : inside);
            });
            Color8 first = canvas.GetPixel8(0, 0);
            first.alpha = alpha;
            canvas.SetPixel(0, 0, first);
            const Image decoded = CompressAndBack(canvas, width, height);
            EXPECT_EQ(decoded.GetPixel8(0, 0).alpha, alpha);
            ForPixels(decoded, [&](int x, int y) {
                const auto wanted = Channels(canvas, x, y), got = Channels(decoded, x, y);
                for (std::size_t c = 0; c < 3 && wanted[3] != 0; ++c)
                    EXPECT_NEAR(got[c], wanted[c], 4) << width << " x " << height << ": " << x << ", " << y;
            });
        }
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

}  // namespace
}  // namespace skyvault::test
