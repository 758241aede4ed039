// Block compression through the container: what blocks decode to, and what pictures encode to.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "codecs/dds_container.h"
#include "tests/made_dds.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {
namespace {

/// A picture of blocks, loaded and decompressed.
DdsTexture Decode(const std::string& fields, const Bytes& blocks) {
    const TemporaryFolder folder;
    DdsTexture compressed, result;
    EXPECT_TRUE(WriteDds(folder / L"a.dds", fields, blocks));
    EXPECT_TRUE(LoadDds(folder / L"a.dds", compressed) && DecompressDds(compressed, result));
    EXPECT_EQ(result.Metadata().format, DdsFormat::Rgba8Unorm);
    return result;
}

using Rgba = std::array<int, 4>;

Rgba PixelAt(const DdsTexture& texture, int x, int y) {
    const DdsItem picture = texture.Item(0);
    const auto at = static_cast<std::size_t>(y) * picture.rowPitch + static_cast<std::size_t>(4 * x);
    Rgba pixel;
    for (std::size_t c = 0; c < 4; ++c) pixel[c] = std::to_integer<int>(picture.pixels[at + c]);
    return pixel;
}

TEST(DdsDecode, EveryModeGivesItsColours) {
    for (const DataRow& row : DataGroup("dds", "block")) {
        const DdsTexture decoded = Decode(row[2], FromHex(row[3]));
        const std::vector<std::uint32_t> told = Numbers(row[4]);
        for (std::size_t i = 0; i < 16; ++i)
            EXPECT_NEAR(PixelAt(decoded, static_cast<int>(i / 4), 0)[i % 4], told.at(i + 1), told[0])
                << row.where << "; pixel " << i / 4 << ", channel " << i % 4;
    }
}

// Every mode, partition and anchor: the sums over noise were taken from another decoder.
TEST(DdsDecode, Bc7NoiseSumsUpAsElsewhere) {
    constexpr std::uint32_t kSums[8] = {0x7b55e231, 0x1817897e, 0xe40aacc2, 0x993e0782,
                                        0xd5762985, 0xa03b6627, 0xba4adcad, 0xc16855b3};
    for (std::uint32_t mode = 0; mode < 8; ++mode) {
        Bytes blocks = Noise(std::size_t{16} * 64 * 64, 1 + mode);
        for (std::size_t i = 0; i < blocks.size(); i += 16)
            blocks[i] = static_cast<std::uint8_t>((blocks[i] << 1 | 1) << mode);
        const DdsTexture decoded = Decode("dx10=98 width=256 height=256", blocks);
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < std::size_t{256} * 256 * 4; ++i)
            sum = sum * 31 + std::to_integer<std::uint32_t>(decoded.Item(0).pixels[i]);
        EXPECT_EQ(sum, kSums[mode]) << "mode " << mode;
    }
}

TEST(DdsDecode, BlocksOverTheEdgeAreCut) {
    // 5 × 3 of BC4: two blocks, of one value each.
    const DdsTexture decoded =
        Decode("dx10=80 width=5 height=3", {9, 9, 0, 0, 0, 0, 0, 0, 99, 99, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(decoded.Item(0).slicePitch, 60u);
    EXPECT_EQ(PixelAt(decoded, 3, 2)[0], 9);
    EXPECT_EQ(PixelAt(decoded, 4, 2)[0], 99);
    DdsTexture result;
    EXPECT_FALSE(DecompressDds(decoded, result));
}

/// The four channels of a pixel of an Rgba8 picture, whatever their order.
std::uint8_t* At(Image& image, int x, int y) {
    return reinterpret_cast<std::uint8_t*>(image.PixelAddress(x, y));
}

/// The top left corner of a picture, compressed and back.
DdsTexture CompressAndBack(const Image& image, std::uint32_t width, std::uint32_t height) {
    const DdsItem item{image.Row(0), width, height, image.stride, std::size_t{image.stride} * height};
    const DdsMetadata metadata{.width = width, .height = height, .format = DdsFormat::Rgba8Unorm};
    DdsTexture compressed, decoded;
    EXPECT_TRUE(CompressToBc1(metadata, {&item, 1}, compressed));
    EXPECT_EQ(compressed.Metadata().format, DdsFormat::Bc1);
    EXPECT_TRUE(DecompressDds(compressed, decoded));
    return decoded;
}

TEST(DdsEncode, PicturesStayCloseWithAndWithoutTransparentPixels) {
    for (const bool holes : {false, true}) {
        Image picture = Filled(125, 70, PixelFormat::Rgba8, kOpaqueWhite);
        const Bytes noise = Noise(125 * 70);
        ForPixels(picture, [&](int x, int y) {
            const int some = noise[static_cast<std::size_t>(y * 125 + x)];
            const int channels[] = {x * 240 / 125 + some / 16, 250 - y * 240 / 70,
                                    (x + y) * 120 / 195 + some % 16, holes && (x + 3 * y) % 7 == 0 ? 0 : 255};
            std::copy_n(channels, 4, At(picture, x, y));
        });
        const DdsTexture decoded = CompressAndBack(picture, 125, 70);
        double error = 0, count = 0;
        ForPixels(picture, [&](int x, int y) {
            const std::uint8_t* const wanted = At(picture, x, y);
            for (std::size_t c = 0; c < 3 && wanted[3] >= 128; ++c, ++count)
                error += std::pow(PixelAt(decoded, x, y)[c] - wanted[c], 2);
        });
        EXPECT_GT(10 * std::log10(255 * 255 * count / error), 35.0) << "decibels; " << holes;
    }
}

TEST(DdsEncode, AlphaBelowHalfIsTransparent) {
    // Colours without order: end points of a block come out either way round.
    Image picture(32, 32, PixelFormat::Rgba8);
    const Bytes noise = Noise(picture.ByteCount());
    std::memcpy(picture.pixels.get(), noise.data(), noise.size());
    for (int i = 0; i < 4 * 32; ++i) At(picture, i % 32, i / 32)[3] = 0;
    At(picture, 9, 9)[3] = 127;
    At(picture, 10, 9)[3] = 128;
    const DdsTexture decoded = CompressAndBack(picture, 32, 32);
    ForPixels(picture, [&](int x, int y) {
        const Rgba pixel = PixelAt(decoded, x, y);
        const bool opaque = At(picture, x, y)[3] >= 128;
        ASSERT_TRUE(opaque ? pixel[3] == 255 : pixel == Rgba{}) << x << ", " << y;
    });
}

TEST(DdsEncode, NothingFromOutsideGetsIntoBlocksOverTheEdge) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 2}, {3, 1}, {5, 3}, {1, 6}, {6, 5}}) {
        for (const int alpha : {255, 0}) {
            // The picture is the corner of a larger, gaudy one. It is black, its last column and row white.
            const auto w = static_cast<std::uint32_t>(width), h = static_cast<std::uint32_t>(height);
            Image canvas = Filled(w + 4, h + 4, PixelFormat::Rgba8, kOpaqueWhite);
            ForPixels(canvas, [&, right = width, bottom = height](int x, int y) {
                std::fill_n(At(canvas, x, y), 3, x + 1 == right || y + 1 == bottom ? 255 : 0);
                if (x >= right || y >= bottom) At(canvas, x, y)[(x + y) % 2] ^= 255;
            });
            At(canvas, 0, 0)[3] = static_cast<std::uint8_t>(alpha);
            const DdsTexture decoded = CompressAndBack(canvas, w, h);
            EXPECT_EQ(PixelAt(decoded, 0, 0)[3], alpha);
            for (int i = 0; i < 3 * width * height; ++i) {
                const int x = i / 3 % width, y = i / 3 / width;
                const std::uint8_t* const wanted = At(canvas, x, y);
                if (wanted[3] == 0) continue;
                EXPECT_NEAR(PixelAt(decoded, x, y)[static_cast<std::size_t>(i % 3)], wanted[i % 3], 4)
                    << width << " x " << height << ": " << x << ", " << y;
            }
        }
    }
}

TEST(DdsEncode, EndPointsGoWhereMostPixelsAre) {
    // One transparent pixel, one of 40, seven each of 80 and 200: the best ends are near 75 and 200, not at
    // the extremes 40 and 200, which leave the 80s 40 away from any colour.
    Image picture = Filled(4, 4, PixelFormat::Rgba8, kOpaqueWhite);
    for (int i = 0; i < 16; ++i) std::fill_n(At(picture, i % 4, i / 4), 3, i < 2 ? 40 : i % 2 ? 80 : 200);
    At(picture, 0, 0)[3] = 0;
    const DdsTexture decoded = CompressAndBack(picture, 4, 4);
    for (int i = 2; i < 16; ++i) EXPECT_NEAR(PixelAt(decoded, i % 4, i / 4)[0], i % 2 ? 80 : 200, 8) << i;
}

}  // namespace
}  // namespace skyvault::test
