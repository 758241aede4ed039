#include "image/image.h"

#include <gtest/gtest.h>

#include <limits>

#include "image/bleed_alpha.h"
#include "platform/debug_line.h"
#include "tests/made_files.h"

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
    Image image = RandomImage(7, 5, Rgb16);
    EXPECT_TRUE(image.IsValid());
    EXPECT_EQ(image.stride, 42u);

    const DebugLineCapture capture;
    FailAllocationsAfter(0);
    EXPECT_FALSE(Image(7, 5, Rgb16).IsValid());
    EXPECT_FALSE(image.CopyRect().IsValid());
    EXPECT_TRUE(!image.FlipVertical() && image.topDown == 1);
    FailAllocationsAfter(-1);
    const std::wstring line = L"MGetMemory: out of memory exception\n";
    EXPECT_EQ(capture.Text(), line + line + line);

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
    Image empty, unknown(2, 2, Rgba8);
    unknown.format = static_cast<PixelFormat>(12);
    EXPECT_TRUE(unknown.IsValid() && !unknown.CopyRect().IsValid());
    for (const Image& image : {std::cref(empty), std::cref(unknown)}) {
        EXPECT_EQ(image.GetPixel(0, 0).format, None);
        EXPECT_EQ(image.GetPixel8(0, 0), Color8(0, 0, 0, 255));
        EXPECT_EQ(image.GetPixel16(0, 0), (Color16{0, 0, 0, 65535}));
        EXPECT_EQ(image.GetPixelHalf(0, 0), Value(0, 0, 0, 255.0f).colorHalf);
    }
    EXPECT_FALSE(empty.FlipVertical() || empty.HasTransparency());
    unknown.Rotate180();
    unknown.Fill(PixelValue(kOpaqueWhite));

    // The default half colour has an alpha of 255.0, which is opaque when it is written.
    EXPECT_EQ(Filled(1, 1, Rgba16, Value(0, 0, 0, 255.0f)).GetPixel16(0, 0).alpha, 65535);
}

TEST(Image, EveryPixelOfEveryFormatIsFilledMovedAndCopied) {
    const PixelRect rects[] = {{1, 1, 3, 2}, {-5, -5, 100, 100}, {9, 9, 12, 12}, {3, 0, 1, 3}, {0, 3, 4, 2}};
    const PictureSize sizes[] = {{3, 2}, {5, 4}, {1, 1}, {}, {}};
    const std::pair<int, int> corners[] = {{1, 1}, {0, 0}, {4, 3}, {}, {}};
    for (const PixelFormat format : AllFormats()) {
        SCOPED_TRACE(static_cast<int>(format));
        for (const auto& [w, h] : {std::pair{1, 3}, {2, 2}, {3, 3}, {4, 5}, {7, 2}, {257, 3}}) {
            const int width = w, height = h;
            const Image before =
                RandomImage(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), format);
            Image image = before.CopyRect();
            EXPECT_TRUE(SameBytes(image, before));
            EXPECT_TRUE(image.FlipVertical() && image.topDown == 0);
            ExpectMoved(image, before, [&](int x, int y) { return std::pair{x, height - 1 - y}; });
            EXPECT_TRUE(image.FlipVertical() && image.topDown == 1);
            image.Rotate180();
            ExpectMoved(image, before, [&](int x, int y) {
                return std::pair{width - 1 - x, height - 1 - y};
            });
            image.Fill(before.GetPixel(0, 1));
            ExpectMoved(image, before, [](int, int) { return std::pair{0, 1}; });
        }
        Image image = RandomImage(5, 4, format);
        ColorHalf swapped = image.GetPixelHalf(4, 2);
        if (BytesPerPixel(format) > 2) std::swap(swapped.red, swapped.blue);
        image.SwapRedAndBlue();
        EXPECT_EQ(image.GetPixelHalf(4, 2), swapped);
        image.topDown = 0;
        image.frameCount = 7;
        for (std::size_t i = 0; i < std::size(rects); ++i) {
            const Image copy = image.CopyRect(rects[i]);
            EXPECT_EQ((PictureSize{copy.width, copy.height}), sizes[i]) << i;
            EXPECT_TRUE(copy.topDown == (copy.IsValid() ? 0 : 1) && copy.frameCount == 1);
            const auto [left, top] = corners[i];
            ExpectMoved(copy, image, [&, x0 = left, y0 = top](int x, int y) {
                return std::pair{x + x0, y + y0};
            });
        }
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
}

// Pixels over a background of 255, 51 and 0.
TEST(Image, FlattenedPixelsAreTheMixInTheirOwnScale) {
    const Color8 background(255, 51, 0, 255);
    for (int alpha = 0; alpha < 256; ++alpha) {
        Image eight = Filled(1, 1, Rgba8, Color8(0, 255, 77, static_cast<std::uint8_t>(alpha)));
        eight.FlattenAlpha(background);
        // Truncated, whichever way the exact mix of floats falls.
        const Color8 pixel = eight.GetPixel8(0, 0);
        ASSERT_NEAR(pixel.red + 0.5, 255 - alpha, 0.502) << alpha;
        ASSERT_NEAR(pixel.green + 0.5, 51 + 204 * alpha / 255.0, 0.502) << alpha;
        ASSERT_NEAR(pixel.blue + 0.5, 77 * alpha / 255.0, 0.502) << alpha;
    }
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
        image.FlattenAlpha(background);
        EXPECT_EQ(image.GetPixel(0, 0).color16, flat.color16) << flat.color16.red;
        EXPECT_EQ(image.GetPixel(0, 0).colorHalf, flat.colorHalf) << HalfToFloat(flat.colorHalf.green);
    }
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
            for (const auto& step : order) {
                const int nx = x + step[0], ny = y + step[1];
                if (marks[y][x]) return;
                if (nx < 0 || ny < 0 || nx >= width || ny >= height || !before[ny][nx]) continue;
                const PixelValue own = image.GetPixel(x, y);
                image.SetPixel(x, y, image.GetPixel8(nx, ny));
                PixelValue bled = image.GetPixel(x, y);
                bled.color8.alpha = own.color8.alpha;
                bled.color16.alpha = own.color16.alpha;
                bled.colorHalf.alpha = own.colorHalf.alpha;
                image.SetPixel(x, y, bled);
                marks[y][x] = true;
            }
        });
    }
}

TEST(BleedAlpha, IsTheRuleForEveryFormatAndShape) {
    const struct {
        std::uint32_t width, height;
        int rarity;  ///< one pixel in so many is visible
    } rows[] = {{1, 1, 2},    {1, 40, 30},    {40, 1, 30}, {2, 2, 3},       {17, 9, 2},
                {64, 33, 40}, {90, 80, 3000}, {50, 60, 1}, {2111, 1, 2000}, {1, 2112, 2000}};
    for (const PixelFormat format : {Rgba8, Rgba16, RgbaHalf}) {
        for (const auto& row : rows) {
            // Noise; the alpha of what is invisible is as near to visible as it can be.
            Image image = RandomImage(row.width, row.height, format);
            SetRandomState(row.width * 31 + row.height * 7);
            ForPixels(image, [&](int x, int y) {
                const bool visible = RandomInt(row.rarity) == 0 || (row.rarity >= 2000 && x + y == 0);
                PixelValue value = image.GetPixel(x, y);
                value.color8.alpha = static_cast<std::uint8_t>(visible ? 1 + RandomInt(255) : 0);
                value.color16.alpha =
                    static_cast<std::uint16_t>(visible ? 256 + RandomInt(30000) : RandomInt(256));
                value.colorHalf.alpha = FloatToHalf(visible ? 0.5f : 0.0039f);
                image.SetPixel(x, y, value);
            });
            Image expected = image.CopyRect();
            BleedAlpha(image);
            BleedSlowly(expected);
            EXPECT_TRUE(SameBytes(image, expected))
                << static_cast<int>(format) << ": " << row.width << " x " << row.height;
        }
    }
    Image clear = Filled(5, 5, Rgba8, Color8(1, 2, 3, 0)), empty;
    BleedAlpha(clear);
    BleedAlpha(empty);
    EXPECT_TRUE(SameBytes(clear, Filled(5, 5, Rgba8, Color8(1, 2, 3, 0))));
}

}  // namespace
}  // namespace skyvault::test
