// Blobs, and palettes along a diagonal.
#include "generators/blobs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "generators/field_kernels.h"
#include "generators/palette.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

using test::GeneratorPanorama;
using test::kFaceEdge;

struct BlobsTest : test::GeneratorTest {};

float PlainRamp(float v, float c) {
    v = std::clamp(v, 0.0f, 1.0f);
    const float k = 1.0f - std::clamp(c, 0.0f, 1.0f);
    if (v <= 0.5f - k) return 0.0f;
    if (v >= 0.5f + k) return 1.0f;
    return (v - (0.5f - k)) / (2.0f * k);
}

/// The palette entry of every pixel, one pixel after the other.
std::vector<int> PlainBlobs(int points, float power, float contrast) {
    SeedRandom();
    std::vector<std::array<float, 3>> places;
    for (int i = 0; i < points; ++i) {
        const float z = RandomFloat(2.0f) - 1.0f, y = RandomFloat(2.0f) - 1.0f, x = RandomFloat(2.0f) - 1.0f;
        places.push_back({x, y, z});
    }
    std::vector<float> field;
    test::ForEveryFacePixel(kFaceEdge, [&](int face, int x, int y) {
        const Direction d = FacePixelToDirection(kFaceEdge, static_cast<CubeFace>(face), x, y);
        float sum = 0.0f;
        for (const auto& [px, py, pz] : places) {
            const float q = (d.x - px) * (d.x - px) + (d.y - py) * (d.y - py) + (d.z - pz) * (d.z - pz);
            const float t = q > 0.0f ? power / q - 1.0f : 1000.0f;
            sum += std::max(0.0f, t);
        }
        field.push_back(PlainRamp(sum / 255.0f, contrast));
    });
    const auto [lowest, highest] = std::minmax_element(field.begin(), field.end());
    const float from = *lowest, to = *highest;
    std::vector<int> entries;
    for (const float v : field) {
        const float spread = to > from ? (v - from) / (to - from) : v;
        entries.push_back(std::clamp(static_cast<int>(spread * 1023.0f), 0, 1023));
    }
    return entries;
}

TEST_F(BlobsTest, RowsEqualTheSumOverThePointsPixelByPixel) {
    // On a picture of 1024 × 1024 every entry is a pixel of its own.
    Image palette(1024, 1024, PixelFormat::Rgb8);
    palette.Fill(PixelValue(Color8(1, 2, 3, 255)));
    for (int k = 0; k < 1024; ++k) {
        palette.SetPixel(k, k,
                         Color8(static_cast<std::uint8_t>(k >> 8), static_cast<std::uint8_t>(k), 9, 255));
    }
    const std::wstring path = folder.Path(L"diagonal.png");
    ASSERT_TRUE(SavePicture(palette, path));
    struct Row {
        std::int32_t setting, points;
        float power, contrast;
    };
    for (const Row& row :
         {Row{20, 20, 7.0f, 0.0f}, Row{20, 20, 7.0f, 0.5f}, Row{9, 9, 30.0f, 0.9f}, Row{12, 12, 20.0f, 1.0f},
          Row{0, 1, 60.0f, -3.0f}, Row{-5, 1, 1.5f, 0.1f}, Row{500, 200, 1.5f, 0.0f}, Row{2, 2, 1e30f, 0.2f},
          Row{4, 4, 0.0f, 0.0f}, Row{3, 3, -2.0f, 2.0f}}) {
        GeneratorPanorama t;
        t.settings.blobsForceFields = row.setting;
        t.settings.blobsPower = row.power;
        t.settings.blobsContrast = row.contrast;
        ASSERT_TRUE(GenerateBlobs(t.panorama, path));
        const std::vector<int> expected = PlainBlobs(row.points, row.power, row.contrast);
        std::size_t next = 0;
        int wrong = 0;
        test::ForEveryFacePixel(kFaceEdge, [&](int face, int x, int y) {
            const Color8 c = t.panorama.faces[static_cast<std::size_t>(face)].GetPixel8(x, y);
            wrong += c.red * 256 + c.green == expected[next++] && c.blue == 9 ? 0 : 1;
        });
        EXPECT_EQ(wrong, 0) << row.setting << " points, power " << row.power << ", contrast " << row.contrast;
    }
}

TEST_F(BlobsTest, TheSameWithoutMemoryForTheField) {
    const std::wstring path = Palette(64, 40, PixelFormat::Rgba8);
    GeneratorPanorama with, without;
    ASSERT_TRUE(GenerateBlobs(with.panorama, path));
    ASSERT_TRUE(GenerateBlobs(without.panorama, path, 0));
    EXPECT_EQ(test::Checksum(with.panorama), test::Checksum(without.panorama));
}

TEST_F(BlobsTest, LoopsAtTheirBorders) {
    for (const KernelSet set : {KernelSet::Baseline, KernelSet::Avx2}) {
        if (!UseKernels(set)) continue;
        DirectionBlock directions;
        for (int i = 0; i < kBlockSize; ++i) {
            directions.x[i] = i == 5 ? 0.6f : 0.0f;
            directions.y[i] = i == 5 ? 0.8f : 1.0f;
            directions.z[i] = 0.0f;
        }
        const RandomXyz points[] = {{0.6f, 0.8f, 0.0f}, {0.0f, 0.0f, 1.0f}};
        float sums[kBlockSize];
        FieldPasses().pull(directions, 7, points, 2, 0.5f, sums);
        EXPECT_EQ(sums[5], 1000.0f) << "a point at the pixel itself; the other one is too far away";
        EXPECT_NEAR(sums[6], 0.25f, 1e-6f) << "only what is nearer than the root of 0.5 pulls";

        float v[] = {127.5f, 127.4f, 127.6f, 0.0f, 1e30f};
        float lowest = 2.0f, highest = -1.0f;
        FieldPasses().ramp(v, 5, 1.0f, lowest, highest);
        EXPECT_THAT(v, testing::ElementsAre(0.0f, 0.0f, 1.0f, 0.0f, 1.0f)) << "0.5 itself is below";
        EXPECT_EQ(lowest, 0.0f);
        EXPECT_EQ(highest, 1.0f);
    }
}

TEST(Palette, RunsAlongTheDiagonal) {
    // Pixels whose colours tell their columns and rows.
    struct Row {
        std::uint32_t width, height;
        Diagonal rule;
        std::uint32_t lastColumn, lastRow;
    };
    std::array<Color8, 1000> colours;
    for (const Row& row :
         {Row{1, 1, Diagonal::ToCorner, 0, 0}, Row{1, 1, Diagonal::EvenShares, 0, 0},
          Row{700, 20, Diagonal::ToCorner, 699, 19}, Row{700, 20, Diagonal::EvenShares, 699, 19},
          Row{3000, 1000, Diagonal::ToCorner, 2999, 999}, Row{3000, 1000, Diagonal::EvenShares, 2997, 999},
          // Products beyond 32 bits.
          Row{16'000'000, 1, Diagonal::ToCorner, 15'999'999, 0},
          Row{16'000'000, 1, Diagonal::EvenShares, 15'984'000, 0}}) {
        Image picture(row.width, row.height, PixelFormat::Rgb8);
        ASSERT_TRUE(picture.IsValid());
        const auto colourOf = [](std::uint32_t x, std::uint32_t y) {
            return Color8(static_cast<std::uint8_t>(x >> 16), static_cast<std::uint8_t>(x >> 8),
                          static_cast<std::uint8_t>(x ^ y << 3), 255);
        };
        for (std::uint32_t y = 0; y < row.height; ++y) {
            std::byte* p = picture.Row(y);
            for (std::uint32_t x = 0; x < row.width; ++x, p += 3) {
                const Color8 c = colourOf(x, y);
                std::memcpy(p, &c, 3);
            }
        }
        ASSERT_TRUE(DiagonalPalette(picture, row.rule, colours));
        EXPECT_EQ(colours[0], colourOf(0, 0)) << row.width;
        EXPECT_EQ(colours[999], colourOf(row.lastColumn, row.lastRow)) << row.width;
        // Column by column ever further to the right.
        for (std::size_t k = 1; k < colours.size(); ++k) {
            ASSERT_GE(colours[k].red * 256 + colours[k].green,
                      colours[k - 1].red * 256 + colours[k - 1].green)
                << row.width << " entry " << k;
        }
    }
    colours[5] = Color8(9, 9, 9, 9);
    EXPECT_FALSE(DiagonalPalette(Image(), Diagonal::ToCorner, colours));
    EXPECT_EQ(colours[5], Color8(9, 9, 9, 9));
}

}  // namespace
}  // namespace skyvault
