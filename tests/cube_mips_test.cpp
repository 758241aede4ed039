// The mip levels of cube maps: what their texels hold, and how the files say it.
#include "projection/cube_mips.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "projection/dds.h"
#include "tests/made_dds.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

/// Towards the middle of a texel, with texels of one size from edge to edge.
Direction TexelDirection(CubeFace face, std::uint32_t size, int column, int row) {
    const auto place = [size](int i) {
        return (2 * static_cast<float>(i) + 1) / static_cast<float>(size) - 1;
    };
    const float a = place(column), b = place(row);
    const Direction directions[] = {{a, -b, 1},  {1, -b, -a}, {-a, -b, -1},
                                    {-1, -b, a}, {a, 1, b},   {a, -1, -b}};
    Direction d = directions[static_cast<std::size_t>(face)];
    Normalize(d);
    return d;
}

PixelValue ColourTowards(const Direction& d) {
    return Value(0.5f + d.x / 2, 0.5f + d.y / 2, d.x * d.x * d.x * d.x, 1);
}

TEST(CubeMips, TexelsAreMeansOverTheSphereAndTheSameOnBothSidesOfEveryEdge) {
    constexpr std::uint32_t kSize = 64;
    CubeMips mips;
    for (std::uint32_t f = 0; f < 6; ++f) {
        Image face(kSize, kSize, PixelFormat::RgbHalf);
        ForPixels(face, [&](int x, int y) {
            face.SetPixel(x, y, ColourTowards(TexelDirection(CubeFace{f}, kSize, x, y)));
        });
        ASSERT_TRUE(mips.Add(CubeFace{f}, face, false));
    }
    std::uint32_t level = 1;
    for (std::uint32_t size = kSize / 2; size > 0; size /= 2, ++level) {
        std::map<std::array<float, 3>, ColorHalf> edges;
        for (std::uint32_t f = 0; f < 6; ++f) {
            const Image texels = mips.Take(CubeFace{f}, level);
            ASSERT_TRUE(texels.width == size && texels.height == size);
            ForPixels(texels, [&](int x, int y) {
                const Direction d = TexelDirection(CubeFace{f}, size, x, y);
                const ColorHalf got = texels.GetPixelHalf(x, y);
                // The field is smooth: a texel that met the wrong one would be far off.
                const ColorHalf there = ColourTowards(d).colorHalf;
                const float step = size > 2 ? 1.0f / static_cast<float>(size) : 0.5f;
                EXPECT_NEAR(HalfToFloat(got.red), HalfToFloat(there.red), step) << size << " " << f;
                EXPECT_NEAR(HalfToFloat(got.green), HalfToFloat(there.green), step) << size << " " << f;
                // Texels that touch lie in the same direction but for the order of the largest two numbers.
                const int last = static_cast<int>(size) - 1;
                if (x % std::max(last, 1) != 0 && y % std::max(last, 1) != 0) return;
                const float most = std::max({std::fabs(d.x), std::fabs(d.y), std::fabs(d.z)});
                const auto side = [&](float v) {
                    const float texel = std::round(v / most * static_cast<float>(size));
                    return std::copysign(std::min(std::fabs(texel), static_cast<float>(last)), texel);
                };
                const auto [same, isNew] = edges.try_emplace({side(d.x), side(d.y), side(d.z)}, got);
                EXPECT_TRUE(same->second == got) << size << " " << f << ": " << x << ", " << y;
            });
            // The fourth power's mean is a fifth; were all pixels to count alike it would be more.
            const float fourth = HalfToFloat(texels.GetPixelHalf(0, 0).blue);
            EXPECT_TRUE(size > 1 || std::fabs(fourth - 0.2f) < 0.001f) << fourth;
        }
        EXPECT_EQ(edges.size(), size == 1 ? 1u : 12u * size - 16u);
    }
}

TEST(CubeMips, ClearPixelsColourNothingButWhatIsAllClear) {
    CubeMips mips;
    for (std::uint32_t f = 0; f < 6; ++f) {
        Image face = Filled(8, 8, PixelFormat::Rgba8, Color8(200, 100, 0, 255));
        ForPixels(face, [&](int x, int y) {
            if (x < 2 || y % 2) face.SetPixel(x, y, Color8(0, 0, 250, 0));
        });
        ASSERT_TRUE(mips.Add(CubeFace{f}, face, true));
    }
    const Image level = mips.Take(CubeFace::Front, 1);
    // Half of the pixels, but the half that is nearer to the middle of the face.
    EXPECT_EQ(level.GetPixel8(2, 2), Color8(200, 100, 0, 138));
    EXPECT_EQ(mips.Take(CubeFace::Front, 2).GetPixel8(0, 1).red, 200);
}

}  // namespace
}  // namespace skyvault::test
