#include "image/image.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "generators/random.h"
#include "image/bleed_alpha.h"
#include "platform/debug_line.h"
#include "tests/made_files.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

// Every pixel of `image` is the one of `before` at the place the function names.
using Place = std::function<std::pair<int, int>(int x, int y)>;
void ExpectMoved(const Image& image, const Image& before, const Place& from) {
    ForPixels(image, [&](int x, int y) {
        const auto [fromX, fromY] = from(x, y);
        const std::byte *const p = image.PixelAddress(x, y), *const q = before.PixelAddress(fromX, fromY);
        ASSERT_TRUE(std::equal(p, p + BytesPerPixel(image.format), q)) << x << "," << y;
    });
}

TEST(Image, ConstructionFailsByResult) {
    EXPECT_FALSE(Image().IsValid() || Image(0, 5, Rgb8).IsValid() || Image(5, 0, Rgb8).IsValid());
    EXPECT_FALSE(Image(5, 5, None).IsValid() || Image(5, 5, static_cast<PixelFormat>(10)).IsValid());
    EXPECT_FALSE(Image(0x40000000u, 1, Rgba8).IsValid());
    const Image image(7, 5, Rgb16);
    EXPECT_TRUE(image.IsValid());
    EXPECT_EQ(image.stride, 42u);

    const DebugLineCapture capture;
    FailAllocationsAfter(0);
    EXPECT_FALSE(Image(7, 5, Rgb16).IsValid());
    EXPECT_FALSE(image.CopyRect().IsValid());
    FailAllocationsAfter(-1);
    EXPECT_EQ(capture.Text(), L"MGetMemory: out of memory exception\nMGetMemory: out of memory exception\n");

    // The stride of the two 8-bit colour formats is looked at, the others' only if it is nothing.
    for (const PixelFormat format : AllFormats()) {
        Image cut(4, 4, format);
        cut.stride -= 1;
        EXPECT_EQ(cut.IsValid(), format != Rgb8 && format != Rgba8) << static_cast<int>(format);
    }
}

TEST(Image, PixelsWrapAroundEveryEdge) {
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    Image image = RandomImage(3, 2, Rgb8);
    const struct {
        std::int32_t x, y, wrappedX, wrappedY;
    } rows[] = {{-1, 0, 2, 0}, {0, 2, 0, 0},  {3, -1, 0, 1},         {-9, 1, 0, 1},
                {5, 7, 2, 1},  {2, -4, 2, 0}, {kLeast, kMost, 1, 1}, {kMost, kLeast, 1, 0}};
    for (const auto& row : rows) {
        EXPECT_EQ(image.PixelAddress(row.x, row.y),
                  image.Row(static_cast<std::uint32_t>(row.wrappedY)) + row.wrappedX * 3)
            << row.x << "," << row.y;
    }
    image.SetPixel(-1, -1, Color8(1, 2, 3, 4));
    EXPECT_EQ(image.GetPixel8(2, 1), Color8(1, 2, 3, 255));
}

TEST(Image, WhatCannotBeReadIsTheDefaultColour) {
    const Image empty;
    EXPECT_TRUE(empty.PixelAddress(0, 0) == nullptr && empty.GetPixel(0, 0).format == None);
    EXPECT_EQ(empty.GetPixel8(0, 0), Color8(0, 0, 0, 255));
    EXPECT_EQ(empty.GetPixel16(0, 0), (Color16{0, 0, 0, 65535}));
    EXPECT_EQ(empty.GetPixelHalf(0, 0), Value(0, 0, 0, 255.0f).colorHalf);

    Image unknown(2, 2, Rgba8);
    unknown.format = static_cast<PixelFormat>(12);
    EXPECT_TRUE(unknown.IsValid());
    EXPECT_EQ(unknown.GetPixel8(1, 1), Color8(0, 0, 0, 255));
    EXPECT_FALSE(unknown.CopyRect().IsValid());
    unknown.Rotate180();
    unknown.Fill(PixelValue(kOpaqueWhite));

    // The default half colour has an alpha of 255.0, which is opaque when it is written.
    EXPECT_EQ(Filled(1, 1, Rgba16, Value(0, 0, 0, 255.0f)).GetPixel16(0, 0).alpha, 65535);
}

TEST(Image, EveryPixelOfEveryFormatIsFilledMovedAndCopied) {
    const PixelRect rects[] = {{1, 1, 3, 2}, {-5, -5, 100, 100}, {9, 9, 12, 12}, {3, 0, 1, 3}, {0, 3, 4, 2}};
    const PixelRect clamped[] = {{1, 1, 3, 2}, {0, 0, 4, 3}, {4, 3, 4, 3}, {}, {}};
    for (const PixelFormat format : AllFormats()) {
        SCOPED_TRACE(static_cast<int>(format));
        for (const std::uint32_t width : {1u, 2u, 3u, 257u}) {
            const Image pixel = RandomImage(1, 1, format, 9);
            ExpectMoved(Filled(width, 3, format, pixel.GetPixel(0, 0)), pixel, [](int, int) {
                return std::pair{0, 0};
            });
        }
        for (const auto& [width, height] : {std::pair{1, 3}, {2, 2}, {3, 3}, {4, 5}, {7, 2}}) {
            const Image before =
                RandomImage(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), format);
            Image image = before.CopyRect();
            EXPECT_TRUE(SameBytes(image, before));
            EXPECT_TRUE(image.FlipVertical());
            EXPECT_EQ(image.topDown, 0);
            ExpectMoved(image, before, [&](int x, int y) { return std::pair{x, height - 1 - y}; });
            EXPECT_TRUE(image.FlipVertical());
            EXPECT_EQ(image.topDown, 1);
            image.Rotate180();
            ExpectMoved(image, before, [&](int x, int y) {
                return std::pair{width - 1 - x, height - 1 - y};
            });
        }
        Image image = RandomImage(5, 4, format);
        image.topDown = 0;
        image.frameCount = 7;
        for (std::size_t i = 0; i < std::size(rects); ++i) {
            const Image copy = image.CopyRect(rects[i]);
            const PixelRect& area = clamped[i];
            ASSERT_EQ(copy.IsValid(), area.right > 0) << i;
            if (!copy.IsValid()) continue;
            EXPECT_EQ(copy.width, static_cast<std::uint32_t>(area.right - area.left + 1)) << i;
            EXPECT_EQ(copy.height, static_cast<std::uint32_t>(area.bottom - area.top + 1)) << i;
            EXPECT_TRUE(copy.topDown == 0 && copy.frameCount == 1);
            ExpectMoved(copy, image, [&](int x, int y) { return std::pair{x + area.left, y + area.top}; });
        }
    }
    const DebugLineCapture quiet;
    Image image = RandomImage(2, 2, Rgb8);
    FailAllocationsAfter(0);
    EXPECT_FALSE(image.FlipVertical());
    FailAllocationsAfter(-1);
    EXPECT_EQ(image.topDown, 1);
    EXPECT_FALSE(Image().FlipVertical());
}

TEST(Image, RedAndBlueAreExchangedWhereThereAreBoth) {
    for (const PixelFormat format : AllFormats()) {
        const Image before = RandomImage(5, 3, format);
        Image image = before.CopyRect();
        image.SwapRedAndBlue();
        const ColorHalf old = before.GetPixelHalf(4, 2), now = image.GetPixelHalf(4, 2);
        const bool grey = BytesPerPixel(format) < 3;
        EXPECT_EQ(now, (grey ? old : ColorHalf{old.blue, old.green, old.red, old.alpha}))
            << static_cast<int>(format);
    }
}

TEST(Image, TransparencyIsAnEightBitAlphaBelowFull) {
    const struct {
        PixelFormat format;
        PixelValue pixel;
        bool transparent;
    } rows[] = {
        {Rgba8, PixelValue(Color8(0, 0, 0, 254)), true}, {Rgba8, PixelValue(Color8()), false},
        {Rgba16, Value({0, 0, 0, 0xfeff}), true},        {Rgba16, Value({0, 0, 0, 0xff00}), false},
        {RgbaHalf, Value(0, 0, 0, 0.9995f), true},       {RgbaHalf, Value(0, 0, 0, 1), false},
        {RgbaHalf, Value(0, 0, 0, 255.0f), false},       {RgbaHalf, Value(0, 0, 0, -1), true},
        {Rgb8, PixelValue(Color8(0, 0, 0, 0)), false},
    };
    for (const auto& row : rows) {
        Image image =
            Filled(33, 5, row.format, row.format == RgbaHalf ? Value(1, 1, 1, 1) : PixelValue(kOpaqueWhite));
        image.SetPixel(32, 4, row.pixel);
        const Image before = image.CopyRect();
        EXPECT_EQ(image.HasTransparency(), row.transparent) << &row - rows;
        image.FlattenAlpha(Color8(1, 2, 3, 255));
        EXPECT_EQ(SameBytes(image, before), !row.transparent) << &row - rows;
    }
    EXPECT_FALSE(Image().HasTransparency());
}

// Pixels over a background of 255, 51 and 0.
TEST(Image, FlattenedPixelsAreTheMixInTheirOwnScale) {
    Image eight(256, 1, Rgba8);
    for (int alpha = 0; alpha < 256; ++alpha)
        eight.SetPixel(alpha, 0, Color8(0, 255, 77, static_cast<std::uint8_t>(alpha)));
    eight.FlattenAlpha(Color8(255, 51, 0, 255));
    for (int alpha = 0; alpha < 256; ++alpha) {
        // Truncated, whichever way the exact mix of floats falls.
        const Color8 pixel = eight.GetPixel8(alpha, 0);
        ASSERT_NEAR(pixel.red + 0.5, 255 - alpha, 0.502) << alpha;
        ASSERT_NEAR(pixel.green + 0.5, 51 + 204 * alpha / 255.0, 0.502) << alpha;
        ASSERT_NEAR(pixel.blue + 0.5, 77 * alpha / 255.0, 0.502) << alpha;
    }
    EXPECT_EQ(eight.GetPixel8(255, 0), Color8(0, 255, 77, 255));

    const std::pair<PixelValue, PixelValue> rows[] = {
        // The background is widened by 256, so that full red is 65280.
        {Value({1000, 2000, 3000, 0}), Value({65280, 13056, 0, 65535})},
        {Value({40000, 0, 65535, 32768}), Value({52639, 6527, 32768, 65535})},
        {Value({1, 2, 3, 65535}), Value({1, 2, 3, 65535})},
        {Value(5, 5, 5, 0), Value(1, 0.2f, 0, 1)},
        {Value(0.5f, 4, 0, 0.5f), Value(0.75f, 2.1f, 0, 1)},
        {Value(0.3f, 7, -1, 1), Value(0.3f, 7, -1, 1)},
        // An alpha of 255 weighs the background with −254.
        {Value(1, 0, 0, 255), Value(1, -50.8f, 0, 1)},
    };
    for (const auto& [pixel, flat] : rows) {
        Image image =
            Filled(2, 1, pixel.format, Color8(0, 0, 0, 0));  // so that there is something to flatten
        image.SetPixel(0, 0, pixel);
        image.FlattenAlpha(Color8(255, 51, 0, 255));
        EXPECT_EQ(image.GetPixel(0, 0).color16, flat.color16) << flat.color16.red;
        EXPECT_EQ(image.GetPixel(0, 0).colorHalf, flat.colorHalf) << HalfToFloat(flat.colorHalf.green);
    }
}

// Sets the colour and leaves the alpha.
void SetColour(Image& image, int x, int y, const Color8& colour) {
    const std::size_t pixelBytes = BytesPerPixel(image.format), alphaBytes = pixelBytes / 4;
    std::byte alpha[2];
    std::byte* const p = image.PixelAddress(x, y) + pixelBytes - alphaBytes;
    std::memcpy(alpha, p, alphaBytes);
    image.SetPixel(x, y, colour);
    std::memcpy(p, alpha, alphaBytes);
}

// The rule itself, without rectangles: in a pass every unmarked pixel of the whole picture looks at its
// neighbours. Colours are 8 bits; alpha is left alone.
void BleedSlowly(Image& image) {
    const int width = static_cast<int>(image.width), height = static_cast<int>(image.height);
    std::vector<std::vector<bool>> marks(image.height, std::vector<bool>(image.width));
    ForPixels(image, [&](int x, int y) { marks[y][x] = image.GetPixel8(x, y).alpha != 0; });
    const int order[8][2] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, 1}, {-1, 1}, {1, -1}};
    const int passes = std::max(32, std::max(width, height) / 64) + 1;
    for (int pass = 0; pass < passes; ++pass) {
        const std::vector<std::vector<bool>> before = marks;
        ForPixels(image, [&](int x, int y) {
            if (before[y][x]) return;
            for (const auto& step : order) {
                const int nx = x + step[0], ny = y + step[1];
                if (nx < 0 || ny < 0 || nx >= width || ny >= height || !before[ny][nx]) continue;
                SetColour(image, x, y, image.GetPixel8(nx, ny));
                marks[y][x] = true;
                break;
            }
        });
    }
}

// Noise, with one pixel in `rarity` visible; the others' alpha is as near to visible as it can be.
Image Scattered(std::uint32_t width, std::uint32_t height, PixelFormat format, int rarity) {
    Image image = RandomImage(width, height, format);
    SetRandomState(width * 31 + height * 7 + static_cast<std::uint32_t>(rarity));
    ForPixels(image, [&](int x, int y) {
        const bool visible = RandomInt(rarity) == 0;
        PixelValue value = image.GetPixel(x, y);
        value.color8.alpha = static_cast<std::uint8_t>(visible ? 1 + RandomInt(255) : 0);
        value.color16.alpha = static_cast<std::uint16_t>(visible ? 256 + RandomInt(30000) : RandomInt(256));
        value.colorHalf.alpha = FloatToHalf(visible ? 0.5f : 0.0039f);
        image.SetPixel(x, y, value);
    });
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
            Image image = Scattered(row.width, row.height, format, row.rarity);
            Image expected = image.CopyRect();
            BleedAlpha(image);
            BleedSlowly(expected);
            EXPECT_TRUE(SameBytes(image, expected))
                << static_cast<int>(format) << ": " << row.width << " x " << row.height;
        }
    }
}

TEST(BleedAlpha, ReachesAsFarAsThePictureIsLarge) {
    const struct {
        std::uint32_t width, height;
        int reach;
    } rows[] = {{20, 3, 19}, {200, 3, 33}, {200, 2111, 33}, {200, 2112, 34}, {6400, 2, 101}};
    for (const auto& row : rows) {
        Image image = Filled(row.width, row.height, Rgba8, Color8(0, 0, 0, 0));
        for (std::uint32_t y = 0; y < row.height; ++y)
            image.SetPixel(0, static_cast<std::int32_t>(y), Color8(200, 200, 200, 255));
        BleedAlpha(image);
        for (int x = 1; x < static_cast<int>(row.width); ++x) {
            const std::uint8_t grey = x <= row.reach ? 200 : 0;
            ASSERT_EQ(image.GetPixel8(x, 0), Color8(grey, grey, grey, 0)) << x << " of " << row.width;
        }
    }
}

TEST(BleedAlpha, LeavesPicturesAloneThatNeedNothing) {
    for (const int alpha : {0, 7, 255}) {
        const Color8 colour(1, 2, 3, static_cast<std::uint8_t>(alpha));
        Image image = Filled(5, 5, Rgba8, colour), empty;
        BleedAlpha(image);
        EXPECT_TRUE(SameBytes(image, Filled(5, 5, Rgba8, colour))) << alpha;
        BleedAlpha(empty);
    }
}

}  // namespace
}  // namespace skyvault::test
