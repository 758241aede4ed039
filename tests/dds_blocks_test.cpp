// Block compression through the container: what blocks decode to, and what pictures encode to.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "image/dds_container.h"
#include "platform/parallel_rows.h"
#include "tests/made_dds.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::Bytes;
using test::Dx10;
using test::MakeDds;
using test::TemporaryFolder;

/// A picture of blocks, loaded and decompressed.
DdsTexture Decode(std::uint32_t format, std::uint32_t width, std::uint32_t height, const Bytes& blocks) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a.dds";
    DdsTexture compressed, result;
    EXPECT_TRUE(
        test::WriteFile(path, MakeDds(Dx10({.format = format}, {.width = width, .height = height}), blocks)));
    EXPECT_TRUE(LoadDds(path, compressed));
    EXPECT_TRUE(DecompressDds(compressed, result));
    EXPECT_EQ(result.Metadata().format, DdsFormat::Rgba8Unorm);
    return result;
}

using Rgba = std::array<int, 4>;

Rgba PixelAt(const DdsTexture& texture, std::uint32_t x, std::uint32_t y, std::uint32_t item = 0) {
    const DdsItem picture = texture.Item(item);
    Rgba pixel;
    for (std::size_t c = 0; c < 4; ++c)
        pixel[c] = std::to_integer<int>(picture.pixels[y * picture.rowPitch + 4 * x + c]);
    return pixel;
}

/// The first colours of a 4 × 4 block, in reading order; tolerance: the last digit may be rounded either way.
void ExpectPixels(std::uint32_t format, const Bytes& block, const std::vector<Rgba>& expected,
                  int tolerance = 0) {
    const DdsTexture decoded = Decode(format, 4, 4, block);
    for (std::uint32_t i = 0; i < expected.size(); ++i) {
        const Rgba pixel = PixelAt(decoded, i % 4, i / 4);
        for (std::size_t c = 0; c < 4; ++c)
            EXPECT_NEAR(pixel[c], expected[i][c], tolerance) << "pixel " << i << ", channel " << c;
    }
}

// End points 31, 32, 0 (of 31, 63, 31) and 0, 63, 31: red 255, 0; green 129.5, 255; blue 0, 255.
const Bytes kHighFirst = {0x00, 0xfc, 0xff, 0x07};
const Bytes kLowFirst = {0xff, 0x07, 0x00, 0xfc};
constexpr std::uint8_t kCountUp = 0xe4;  // indices 0, 1, 2, 3

Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) test::Add(all, part);
    return all;
}

TEST(DdsDecode, Bc1HasTwoModes) {
    ExpectPixels(71, Join({kHighFirst, {kCountUp, 0, 0, kCountUp}}),
                 {{255, 130, 0, 255}, {0, 255, 255, 255}, {170, 171, 85, 255}, {85, 213, 170, 255}}, 1);
    ExpectPixels(71, Join({kLowFirst, {kCountUp, 0, 0, kCountUp}}),
                 {{0, 255, 255, 255}, {255, 130, 0, 255}, {128, 192, 128, 255}, {0, 0, 0, 0}}, 1);
    // Equal end points belong to the mode with transparency.
    ExpectPixels(71, {0xff, 0xff, 0xff, 0xff, kCountUp, 0, 0, 0},
                 {{255, 255, 255, 255}, {255, 255, 255, 255}, {255, 255, 255, 255}, {0, 0, 0, 0}});
}

TEST(DdsDecode, Bc2AndBc3HaveAlphaOfTheirOwnAndFourColours) {
    ExpectPixels(74, Join({{0x10, 0xf8, 0, 0, 0, 0, 0, 0}, kLowFirst, {kCountUp, 0, 0, 0}}),
                 {{0, 255, 255, 0}, {255, 130, 0, 17}, {85, 213, 170, 136}, {170, 171, 85, 255}}, 1);
    // Alpha 210 .. 0 in seven steps of 30; indices 0, 1, 2, 7.
    ExpectPixels(77, Join({{210, 0, 0x88, 0x0e, 0, 0, 0, 0}, kLowFirst, {kCountUp, 0, 0, 0}}),
                 {{0, 255, 255, 210}, {255, 130, 0, 0}, {85, 213, 170, 180}, {170, 171, 85, 30}}, 1);
    // Alpha 50 .. 100 in five steps of 10, then 0 and 255; indices 5, 1, 6, 7.
    ExpectPixels(77, Join({{50, 100, 0x8d, 0x0f, 0, 0, 0, 0}, kHighFirst, {0, 0, 0, 0}}),
                 {{255, 130, 0, 90}, {255, 130, 0, 100}, {255, 130, 0, 0}, {255, 130, 0, 255}}, 1);
}

TEST(DdsDecode, Bc4IsGreyAndBc5HasNoBlue) {
    ExpectPixels(80, {210, 0, 0x88, 0x0e, 0, 0, 0, 0},
                 {{210, 210, 210, 255}, {0, 0, 0, 255}, {180, 180, 180, 255}, {30, 30, 30, 255}});
    ExpectPixels(83, {210, 0, 0x88, 0x0e, 0, 0, 0, 0, 50, 100, 0x8d, 0x0f, 0, 0, 0, 0},
                 {{210, 90, 0, 255}, {0, 100, 0, 255}, {180, 0, 0, 255}, {30, 255, 0, 255}});
}

// Every mode, partition and anchor: the sums over noise were taken from another decoder.
TEST(DdsDecode, Bc7NoiseSumsUpAsElsewhere) {
    constexpr std::uint32_t kSums[8] = {0x7b55e231, 0x1817897e, 0xe40aacc2, 0x993e0782,
                                        0xd5762985, 0xa03b6627, 0xba4adcad, 0xc16855b3};
    for (std::uint32_t mode = 0; mode < 8; ++mode) {
        std::uint32_t noise = 1 + mode;
        Bytes blocks(std::size_t{16} * 64 * 64);
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            noise = noise * 1664525 + 1013904223;
            blocks[i] = static_cast<std::uint8_t>(noise >> 24);
            if (i % 16 == 0) blocks[i] = static_cast<std::uint8_t>((blocks[i] << 1 | 1) << mode);
        }
        const DdsTexture decoded = Decode(98, 256, 256, blocks);
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < std::size_t{256} * 256 * 4; ++i)
            sum = sum * 31 + std::to_integer<std::uint32_t>(decoded.Item(0).pixels[i]);
        EXPECT_EQ(sum, kSums[mode]) << "mode " << mode;
    }
    ExpectPixels(98, Bytes(16), {{0, 0, 0, 0}, {0, 0, 0, 0}});  // no mode at all
}

TEST(DdsDecode, BlocksOverTheEdgeAreCut) {
    // 5 × 3 of BC4: two blocks, of one value each.
    const DdsTexture decoded = Decode(80, 5, 3, {9, 9, 0, 0, 0, 0, 0, 0, 99, 99, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(decoded.Item(0).slicePitch, 60u);
    EXPECT_EQ(PixelAt(decoded, 3, 2)[0], 9);
    EXPECT_EQ(PixelAt(decoded, 4, 2)[0], 99);
    DdsTexture result;
    EXPECT_FALSE(DecompressDds(decoded, result));
}

struct Picture {
    std::uint32_t width, height;
    Bytes pixels;

    Picture(std::uint32_t w, std::uint32_t h) : width(w), height(h), pixels(std::size_t{4} * w * h, 255) {}
    std::uint8_t* At(std::uint32_t x, std::uint32_t y) {
        return pixels.data() + 4 * (std::size_t{y} * width + x);
    }
    DdsItem Item() const {
        return {reinterpret_cast<const std::byte*>(pixels.data()), width, height, std::size_t{4} * width,
                pixels.size()};
    }
};

DdsTexture Compress(const DdsItem& item) {
    DdsMetadata metadata;
    metadata.width = item.width;
    metadata.height = item.height;
    metadata.format = DdsFormat::Rgba8Unorm;
    DdsTexture compressed;
    EXPECT_TRUE(CompressToBc1(metadata, {&item, 1}, compressed));
    EXPECT_EQ(compressed.Metadata().format, DdsFormat::Bc1);
    return compressed;
}

DdsTexture CompressAndBack(const DdsItem& item) {
    DdsTexture decoded;
    EXPECT_TRUE(DecompressDds(Compress(item), decoded));
    return decoded;
}

Picture GradientWithNoise(std::uint32_t width, std::uint32_t height) {
    Picture picture(width, height);
    std::uint32_t noise = 1;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            noise = noise * 1664525 + 1013904223;
            const std::uint32_t colours[] = {x * 240 / width + (noise >> 28), 250 - y * 240 / height,
                                             (x + y) * 120 / (width + height) + (noise >> 24 & 15)};
            for (std::size_t c = 0; c < 3; ++c) picture.At(x, y)[c] = static_cast<std::uint8_t>(colours[c]);
        }
    }
    return picture;
}

/// In decibels, over the opaque pixels' colours.
double SignalToNoise(Picture& picture, const DdsTexture& decoded) {
    double error = 0, count = 0;
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x) {
            if (picture.At(x, y)[3] < 128) continue;
            const Rgba pixel = PixelAt(decoded, x, y);
            for (std::size_t c = 0; c < 3; ++c) {
                const double difference = pixel[c] - picture.At(x, y)[c];
                error += difference * difference;
                ++count;
            }
        }
    }
    return 10 * std::log10(255 * 255 * count / error);
}

TEST(DdsEncode, PicturesStayClose) {
    Picture picture = GradientWithNoise(125, 70);
    EXPECT_GT(SignalToNoise(picture, CompressAndBack(picture.Item())), 35.0);
    for (std::uint32_t y = 0; y < picture.height; ++y)
        for (std::uint32_t x = 0; x < picture.width; ++x)
            if ((x + 3 * y) % 7 == 0) picture.At(x, y)[3] = 0;
    EXPECT_GT(SignalToNoise(picture, CompressAndBack(picture.Item())), 35.0);
}

TEST(DdsEncode, AlphaBelowHalfIsTransparent) {
    // Colours without order: end points of a block come out either way round.
    Picture picture(32, 32);
    std::uint32_t noise = 1;
    for (std::uint8_t& byte : picture.pixels) {
        noise = noise * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(noise >> 24);
    }
    for (std::uint32_t x = 0; x < 32; ++x)
        for (std::uint32_t y = 0; y < 4; ++y) picture.At(x, y)[3] = 0;
    picture.At(9, 9)[3] = 127;
    picture.At(10, 9)[3] = 128;
    const DdsTexture decoded = CompressAndBack(picture.Item());
    for (std::uint32_t y = 0; y < 32; ++y) {
        for (std::uint32_t x = 0; x < 32; ++x) {
            const Rgba pixel = PixelAt(decoded, x, y);
            if (picture.At(x, y)[3] < 128)
                ASSERT_EQ(pixel, (Rgba{0, 0, 0, 0})) << x << ", " << y;
            else
                ASSERT_EQ(pixel[3], 255) << x << ", " << y;
        }
    }
}

TEST(DdsEncode, NothingFromOutsideGetsIntoBlocksOverTheEdge) {
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{1, 1}, {2, 2}, {3, 1}, {5, 3}, {1, 6}, {6, 5}};
    for (const auto& [width, height] : sizes) {
        for (const int alpha : {255, 0}) {
            SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
            // The picture is the corner of a larger, gaudy one. It is black, its last column and row white.
            Picture canvas(width + 4, height + 4);
            for (std::uint32_t y = 0; y < canvas.height; ++y) {
                for (std::uint32_t x = 0; x < canvas.width; ++x) {
                    std::uint8_t* pixel = canvas.At(x, y);
                    const bool last = x + 1 == width || y + 1 == height;
                    std::fill_n(pixel, 3, static_cast<std::uint8_t>(last ? 255 : 0));
                    if (x >= width || y >= height) pixel[(x + y) % 2] ^= 255;
                }
            }
            canvas.At(0, 0)[3] = static_cast<std::uint8_t>(alpha);
            DdsItem item = canvas.Item();
            item.width = width;
            item.height = height;
            item.slicePitch = item.rowPitch * height;
            const DdsTexture decoded = CompressAndBack(item);
            EXPECT_EQ(PixelAt(decoded, 0, 0)[3], alpha);
            for (std::uint32_t y = 0; y < height; ++y) {
                for (std::uint32_t x = 0; x < width; ++x) {
                    if (canvas.At(x, y)[3] == 0) continue;
                    for (std::size_t c = 0; c < 3; ++c)
                        EXPECT_NEAR(PixelAt(decoded, x, y)[c], canvas.At(x, y)[c], 4) << x << ", " << y;
                }
            }
        }
    }
}

TEST(DdsEncode, TheNumberOfThreadsChangesNothing) {
    Picture picture = GradientWithNoise(1027, 1030);
    for (std::uint32_t i = 0; i < 1000; ++i) picture.At(i, i)[3] = 0;
    Bytes results[2];
    for (const int threads : {1, 8}) {
        SetThreadCount(threads);
        const DdsTexture compressed = Compress(picture.Item());
        DdsTexture decoded;
        ASSERT_TRUE(DecompressDds(compressed, decoded));
        for (const DdsItem& item : {compressed.Item(0), decoded.Item(0)}) {
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(item.pixels);
            test::Add(results[threads == 8], Bytes(bytes, bytes + item.slicePitch));
        }
    }
    SetThreadCount(0);
    EXPECT_TRUE(results[0] == results[1]);
}

}  // namespace
}  // namespace skyvault
