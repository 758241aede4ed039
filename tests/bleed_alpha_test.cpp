#include "image/bleed_alpha.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "image/random.h"
#include "platform/debug_line.h"

namespace skyvault {
namespace {

using enum PixelFormat;

// The rule itself, without rectangles: in a pass every unmarked pixel of the whole picture looks at its
// neighbours. Colours are 8 bits; alpha is left alone.
void BleedSlowly(Image& image) {
    const int width = static_cast<int>(image.width), height = static_cast<int>(image.height);
    const auto index = [&](int x, int y) { return static_cast<std::size_t>(y * width + x); };
    std::vector<bool> marks(static_cast<std::size_t>(width * height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) marks[index(x, y)] = image.GetPixel8(x, y).alpha != 0;
    }
    const int order[8][2] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, 1}, {-1, 1}, {1, -1}};
    const int passes = std::max(32, std::max(width, height) / 64) + 1;
    const std::size_t pixelBytes = BytesPerPixel(image.format), alphaBytes = pixelBytes / 4;
    for (int pass = 0; pass < passes; ++pass) {
        const std::vector<bool> before = marks;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (before[index(x, y)]) continue;
                for (const auto& step : order) {
                    const int nx = x + step[0], ny = y + step[1];
                    if (nx < 0 || ny < 0 || nx >= width || ny >= height || !before[index(nx, ny)]) continue;
                    std::byte alpha[2];
                    std::byte* const p = image.PixelAddress(x, y) + pixelBytes - alphaBytes;
                    std::memcpy(alpha, p, alphaBytes);
                    image.SetPixel(x, y, image.GetPixel8(nx, ny));
                    std::memcpy(p, alpha, alphaBytes);
                    marks[index(x, y)] = true;
                    break;
                }
            }
        }
    }
}

// Noise, with one pixel in `rarity` visible; the others' alpha is as near to visible as it can be.
Image Scattered(std::uint32_t width, std::uint32_t height, PixelFormat format, int rarity) {
    Image image(width, height, format);
    SetRandomState(width * 31 + height * 7 + static_cast<std::uint32_t>(rarity));
    for (std::int32_t y = 0; y < static_cast<std::int32_t>(height); ++y) {
        for (std::int32_t x = 0; x < static_cast<std::int32_t>(width); ++x) {
            const bool visible = RandomInt(rarity) == 0;
            const auto channel = [] { return static_cast<std::uint8_t>(RandomInt(256)); };
            PixelValue value(Color8(channel(), channel(), channel(), visible ? channel() | 1 : 0));
            if (format == Rgba16) {
                value.format = Rgba16;
                const auto wide = [&] { return static_cast<std::uint16_t>(channel() * 256 + channel()); };
                value.color16 = {wide(), wide(), wide(),
                                 static_cast<std::uint16_t>(visible ? wide() | 256 : channel())};
            } else if (format == RgbaHalf) {
                value.format = RgbaHalf;
                const auto part = [&] { return FloatToHalf(static_cast<float>(channel()) / 200.0f); };
                value.colorHalf = {part(), part(), part(), FloatToHalf(visible ? 0.5f : 0.0039f)};
            }
            image.SetPixel(x, y, value);
        }
    }
    return image;
}

TEST(BleedAlpha, IsTheRuleForEveryFormatAndShape) {
    const struct {
        std::uint32_t width, height;
        int rarity;
    } rows[] = {{1, 1, 2},  {1, 40, 30},  {40, 1, 30},    {2, 2, 3},
                {17, 9, 2}, {64, 33, 40}, {90, 80, 3000}, {50, 60, 1}};
    for (const PixelFormat format : {Rgba8, Rgba16, RgbaHalf}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message()
                         << static_cast<int>(format) << ": " << row.width << " x " << row.height);
            Image image = Scattered(row.width, row.height, format, row.rarity);
            Image expected = image.CopyRect();
            BleedAlpha(image);
            BleedSlowly(expected);
            EXPECT_EQ(std::memcmp(image.pixels.get(), expected.pixels.get(), image.ByteCount()), 0);
        }
    }
}

// How far from the left edge a colour there has spread.
std::uint32_t Reach(std::uint32_t width, std::uint32_t height, PixelFormat format) {
    Image image(width, height, format);
    std::memset(image.pixels.get(), 0, image.ByteCount());
    for (std::uint32_t y = 0; y < height; ++y) {
        image.SetPixel(0, static_cast<std::int32_t>(y), Color8(200, 200, 200, 255));
    }
    BleedAlpha(image);
    std::uint32_t reach = 0;
    while (reach + 1 < width && image.GetPixel8(static_cast<std::int32_t>(reach) + 1, 0).red != 0) ++reach;
    for (std::uint32_t x = 1; x < width; ++x)
        EXPECT_EQ(image.GetPixel8(static_cast<std::int32_t>(x), 0).alpha, 0);
    return reach;
}

TEST(BleedAlpha, ReachesAsFarAsThePictureIsLarge) {
    EXPECT_EQ(Reach(20, 3, Rgba8), 19u);
    EXPECT_EQ(Reach(200, 3, Rgba8), 33u);
    EXPECT_EQ(Reach(200, 2111, Rgba8), 33u);
    EXPECT_EQ(Reach(200, 2112, Rgba8), 34u);
    EXPECT_EQ(Reach(6400, 2, Rgba16), 101u);
}

TEST(BleedAlpha, LeavesPicturesAloneThatNeedNothing) {
    for (const Color8& colour : {Color8(1, 2, 3, 0), Color8(1, 2, 3, 255), Color8(1, 2, 3, 7)}) {
        Image image(5, 5, Rgba8);
        image.Fill(PixelValue(colour));
        BleedAlpha(image);
        for (std::int32_t i = 0; i < 25; ++i) EXPECT_EQ(image.GetPixel8(i % 5, i / 5), colour);
    }
    Image empty;
    BleedAlpha(empty);
    EXPECT_FALSE(empty.IsValid());
}

TEST(BleedAlpha, WithoutMemoryThePictureStaysAsItIs) {
    const DebugLineCapture quiet;
    for (int allocations = 0; allocations < 2; ++allocations) {
        Image image = Scattered(20, 20, Rgba8, 9);
        const Image before = image.CopyRect();
        FailAllocationsAfter(allocations);
        BleedAlpha(image);
        FailAllocationsAfter(-1);
        EXPECT_EQ(std::memcmp(image.pixels.get(), before.pixels.get(), image.ByteCount()), 0) << allocations;
    }
}

}  // namespace
}  // namespace skyvault
