#include "image/image.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

#include "image/pixel_convert.h"
#include "platform/debug_line.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using enum PixelFormat;
using test::AllFormats;
using test::RandomImage;
using test::SameBytes;

std::vector<std::byte> PixelOf(const Image& image, std::int32_t x, std::int32_t y) {
    const std::byte* const p = image.PixelAddress(x, y);
    return {p, p + BytesPerPixel(image.format)};
}

// Every pixel of `image` is the one of `before` at the place the function names.
using Place = std::function<std::pair<int, int>(int x, int y)>;
void ExpectMoved(const Image& image, const Image& before, const Place& from) {
    for (int y = 0; y < static_cast<int>(image.height); ++y) {
        for (int x = 0; x < static_cast<int>(image.width); ++x) {
            const auto [fromX, fromY] = from(x, y);
            ASSERT_EQ(PixelOf(image, x, y), PixelOf(before, fromX, fromY)) << x << "," << y;
        }
    }
}

TEST(Image, ConstructionFailsByResult) {
    EXPECT_FALSE(Image().IsValid());
    EXPECT_FALSE(Image(0, 5, Rgb8).IsValid());
    EXPECT_FALSE(Image(5, 0, Rgb8).IsValid());
    EXPECT_FALSE(Image(5, 5, None).IsValid());
    EXPECT_FALSE(Image(5, 5, static_cast<PixelFormat>(10)).IsValid());
    EXPECT_FALSE(Image(0x40000000u, 1, Rgba8).IsValid());

    const Image image(7, 5, Rgb16);
    EXPECT_TRUE(image.IsValid());
    EXPECT_EQ(image.stride, 42u);
    EXPECT_EQ(image.topDown, 1);
    EXPECT_EQ(image.frameCount, 1u);

    const DebugLineCapture capture;
    FailAllocationsAfter(0);
    EXPECT_FALSE(Image(7, 5, Rgb16).IsValid());
    FailAllocationsAfter(-1);
    EXPECT_EQ(capture.Text(), L"MGetMemory: out of memory exception\n");
}

TEST(Image, OnlyTheTwoEightBitColourFormatsHaveTheirStrideChecked) {
    for (const PixelFormat format : AllFormats()) {
        Image image(4, 4, format);
        image.stride -= 1;
        const bool caught = format == Rgb8 || format == Rgba8;
        EXPECT_EQ(image.IsValid(), format != Grey8 ? !caught : true) << static_cast<int>(format);
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
    EXPECT_EQ(empty.PixelAddress(0, 0), nullptr);
    EXPECT_EQ(empty.GetPixel8(0, 0), Color8(0, 0, 0, 255));
    EXPECT_EQ(empty.GetPixel16(0, 0), (Color16{0, 0, 0, 65535}));
    EXPECT_EQ(HalfToFloat(empty.GetPixelHalf(0, 0).alpha), 255.0f);
    EXPECT_EQ(empty.GetPixel(0, 0).format, None);
    EXPECT_EQ(HalfToFloat(empty.GetPixel(0, 0).colorHalf.alpha), 255.0f);

    Image unknown(2, 2, Rgba8);
    unknown.format = static_cast<PixelFormat>(12);
    EXPECT_TRUE(unknown.IsValid());
    EXPECT_EQ(unknown.GetPixel8(1, 1), Color8(0, 0, 0, 255));
    EXPECT_FALSE(unknown.CopyRect().IsValid());
    unknown.Rotate180();
    unknown.Fill(PixelValue(kOpaqueWhite));
}

TEST(Image, TheDefaultHalfColourIsOpaqueWhenWritten) {
    PixelValue value;
    value.format = RgbaHalf;
    for (const PixelFormat format : {Rgba8, Rgba16}) {
        Image image(1, 1, format);
        image.SetPixel(0, 0, value);
        EXPECT_EQ(image.GetPixel16(0, 0).alpha, 65535) << static_cast<int>(format);
    }
}

TEST(Image, FillWritesEveryPixelOfEveryFormat) {
    PixelValue value;
    value.format = Rgba16;
    value.color16 = {0x1234, 0x5678, 0x9abc, 0xdef0};
    for (const PixelFormat format : AllFormats()) {
        for (const std::uint32_t width : {1u, 2u, 3u, 257u}) {
            Image image = RandomImage(width, 3, format), expected(1, 1, format);
            image.Fill(value);
            expected.SetPixel(0, 0, value);
            ExpectMoved(image, expected, [](int, int) { return std::pair{0, 0}; });
        }
    }
}

TEST(Image, CopiesAreTheClampedRectangle) {
    const struct {
        PixelRect rect;
        std::uint32_t left, top, width, height;
    } rows[] = {
        {{1, 1, 3, 2}, 1, 1, 3, 2},   {{-5, -5, 100, 100}, 0, 0, 5, 4}, {{4, 3, 4, 3}, 4, 3, 1, 1},
        {{9, 9, 12, 12}, 4, 3, 1, 1}, {{-9, 0, -3, 0}, 0, 0, 1, 1},     {{3, 0, 1, 3}, 0, 0, 0, 0},
        {{0, 3, 4, 2}, 0, 0, 0, 0},
    };
    for (const PixelFormat format : AllFormats()) {
        Image image = RandomImage(5, 4, format);
        image.topDown = 0;
        image.frameCount = 7;
        image.frameDelay = 40;
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message()
                         << static_cast<int>(format) << ": " << row.rect.left << "," << row.rect.top);
            const Image copy = image.CopyRect(row.rect);
            ASSERT_EQ(copy.IsValid(), row.width > 0);
            if (!copy.IsValid()) continue;
            EXPECT_EQ(copy.width, row.width);
            EXPECT_EQ(copy.height, row.height);
            EXPECT_EQ(copy.topDown, 0);
            EXPECT_EQ(copy.frameCount, 1u);
            EXPECT_EQ(copy.frameDelay, 0u);
            ExpectMoved(copy, image, [&](int x, int y) {
                return std::pair{x + static_cast<int>(row.left), y + static_cast<int>(row.top)};
            });
        }
        EXPECT_TRUE(SameBytes(image.CopyRect(), image));
    }
    FailAllocationsAfter(1);
    const DebugLineCapture quiet;
    const Image image = RandomImage(5, 4, Rgb8);
    EXPECT_EQ(image.CopyRect().width, 0u);
    FailAllocationsAfter(-1);
}

TEST(Image, FlipAndHalfTurnMoveEveryPixel) {
    for (const PixelFormat format : AllFormats()) {
        for (const auto& [width, height] :
             {std::pair{1, 1}, {3, 1}, {1, 3}, {2, 2}, {3, 3}, {4, 5}, {5, 4}, {7, 2}}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(format) << ": " << width << " x " << height);
            const int right = width - 1, bottom = height - 1;
            const Image before =
                RandomImage(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), format);
            Image image = before.CopyRect();
            EXPECT_TRUE(image.FlipVertical());
            EXPECT_EQ(image.topDown, 0);
            ExpectMoved(image, before, [&](int x, int y) { return std::pair{x, bottom - y}; });
            EXPECT_TRUE(image.FlipVertical());
            EXPECT_EQ(image.topDown, 1);
            EXPECT_TRUE(SameBytes(image, before));

            image.Rotate180();
            ExpectMoved(image, before, [&](int x, int y) { return std::pair{right - x, bottom - y}; });
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
        const PixelValue old = before.GetPixel(4, 2), now = image.GetPixel(4, 2);
        if (format == Grey8 || format == Grey16 || format == GreyHalf) {
            EXPECT_TRUE(SameBytes(image, before));
        } else if (ChannelType(format) == ChannelKind::Int8) {
            EXPECT_EQ(now.color8,
                      Color8(old.color8.blue, old.color8.green, old.color8.red, old.color8.alpha));
        } else if (ChannelType(format) == ChannelKind::Int16) {
            EXPECT_EQ(now.color16,
                      (Color16{old.color16.blue, old.color16.green, old.color16.red, old.color16.alpha}));
        } else {
            EXPECT_EQ(now.colorHalf, (ColorHalf{old.colorHalf.blue, old.colorHalf.green, old.colorHalf.red,
                                                old.colorHalf.alpha}));
        }
    }
}

PixelValue Value16(std::uint16_t red, std::uint16_t green, std::uint16_t blue, std::uint16_t alpha) {
    PixelValue value;
    value.format = Rgba16;
    value.color16 = {red, green, blue, alpha};
    return value;
}

PixelValue ValueHalf(float red, float green, float blue, float alpha) {
    PixelValue value;
    value.format = RgbaHalf;
    value.colorHalf = {FloatToHalf(red), FloatToHalf(green), FloatToHalf(blue), FloatToHalf(alpha)};
    return value;
}

TEST(Image, TransparencyIsAnEightBitAlphaBelowFull) {
    const struct {
        PixelFormat format;
        PixelValue pixel;
        bool transparent;
    } rows[] = {
        {Rgba8, PixelValue(Color8(0, 0, 0, 254)), true}, {Rgba8, PixelValue(Color8(0, 0, 0, 255)), false},
        {Rgba16, Value16(0, 0, 0, 0xfeff), true},        {Rgba16, Value16(0, 0, 0, 0xff00), false},
        {RgbaHalf, ValueHalf(0, 0, 0, 0.9995f), true},   {RgbaHalf, ValueHalf(0, 0, 0, 1.0f), false},
        {RgbaHalf, ValueHalf(0, 0, 0, 255.0f), false},   {RgbaHalf, ValueHalf(0, 0, 0, -1.0f), true},
        {Rgb8, PixelValue(Color8(0, 0, 0, 0)), false},
    };
    for (const auto& row : rows) {
        Image image(33, 5, row.format);
        PixelValue opaque = PixelValue(kOpaqueWhite);
        if (row.format == RgbaHalf) opaque = ValueHalf(1, 1, 1, 1);
        image.Fill(opaque);
        image.SetPixel(32, 4, row.pixel);
        EXPECT_EQ(image.HasTransparency(), row.transparent)
            << static_cast<int>(row.format) << " " << row.pixel.color16.alpha << " "
            << HalfToFloat(row.pixel.colorHalf.alpha);
    }
    EXPECT_FALSE(Image().HasTransparency());
}

TEST(Image, FlattenedEightBitPixelsAreTheTruncatedMix) {
    // Every alpha over every channel value, compared with the same arithmetic on one number.
    Image image(256, 256, Rgba8);
    for (int alpha = 0; alpha < 256; ++alpha) {
        for (int v = 0; v < 256; ++v) {
            image.SetPixel(v, alpha,
                           Color8(static_cast<std::uint8_t>(v), 255, 0, static_cast<std::uint8_t>(alpha)));
        }
    }
    image.FlattenAlpha(Color8(200, 255, 33, 255));
    EXPECT_FALSE(image.HasTransparency());
    for (int alpha = 0; alpha < 256; ++alpha) {
        const float t = static_cast<float>(alpha / 255.0);
        for (int v = 0; v < 256; ++v) {
            const Color8 pixel = image.GetPixel8(v, alpha);
            ASSERT_NEAR(pixel.red, 200 + (v - 200) * alpha / 255.0 - 0.5, 0.502) << v << " " << alpha;
            ASSERT_EQ(pixel.red,
                      alpha == 255 ? v : static_cast<int>(200.0f * (1.0f - t) + static_cast<float>(v) * t));
            ASSERT_NEAR(pixel.blue, 33 - 33 * alpha / 255.0 - 0.5, 0.502);
        }
    }
    EXPECT_EQ(image.GetPixel8(9, 0), Color8(200, 255, 33, 255));
    EXPECT_EQ(image.GetPixel8(9, 255), Color8(9, 255, 0, 255));
}

TEST(Image, FlattenedWidePixelsFollowTheirOwnScales) {
    Image image(3, 1, Rgba16);
    image.SetPixel(0, 0, Value16(1000, 2000, 3000, 0));
    image.SetPixel(1, 0, Value16(40000, 0, 65535, 32768));
    image.SetPixel(2, 0, Value16(1, 2, 3, 65535));
    image.FlattenAlpha(Color8(255, 100, 0, 255));
    // The background is widened by 256, so that full red is 65280.
    EXPECT_EQ(image.GetPixel16(0, 0), (Color16{65280, 25600, 0, 65535}));
    EXPECT_EQ(image.GetPixel16(1, 0), (Color16{52639, 12799, 32768, 65535}));
    EXPECT_EQ(image.GetPixel16(2, 0), (Color16{1, 2, 3, 65535}));

    Image half(4, 1, RgbaHalf);
    half.SetPixel(0, 0, ValueHalf(5, 5, 5, 0.0f));
    half.SetPixel(1, 0, ValueHalf(0.5f, 4.0f, 0.0f, 0.5f));
    half.SetPixel(2, 0, ValueHalf(0.3f, 7.0f, -1.0f, 1.0f));
    half.SetPixel(3, 0, ValueHalf(1.0f, 0.0f, 0.0f, 255.0f));
    const ColorHalf untouched = half.GetPixelHalf(2, 0);
    half.FlattenAlpha(Color8(255, 51, 0, 255));
    EXPECT_EQ(half.GetPixelHalf(0, 0), ValueHalf(1.0f, 0.2f, 0.0f, 1.0f).colorHalf);
    EXPECT_EQ(half.GetPixelHalf(1, 0), ValueHalf(0.75f, 2.1f, 0.0f, 1.0f).colorHalf);
    EXPECT_EQ(half.GetPixelHalf(2, 0), untouched);
    // An alpha of 255 weighs the background with −254.
    EXPECT_EQ(half.GetPixelHalf(3, 0), ValueHalf(1.0f, -50.8f, 0.0f, 1.0f).colorHalf);
}

TEST(Image, FlatteningAnOpaquePictureChangesNothing) {
    Image image = RandomImage(9, 9, Rgba8);
    for (std::int32_t i = 0; i < 81; ++i) image.PixelAddress(i % 9, i / 9)[3] = std::byte{255};
    const Image before = image.CopyRect();
    image.FlattenAlpha(Color8(1, 2, 3, 255));
    EXPECT_TRUE(SameBytes(image, before));

    Image nearly(2, 1, Rgba16);
    nearly.Fill(Value16(10, 20, 30, 0xff00));
    nearly.FlattenAlpha(kOpaqueWhite);
    EXPECT_EQ(nearly.GetPixel16(1, 0), (Color16{10, 20, 30, 0xff00}));
}

}  // namespace
}  // namespace skyvault
