#include "projection/resize_image.h"

#include <gtest/gtest.h>

#include <array>

#include "projection/build_faces.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

Image Grey(std::uint32_t width, std::uint32_t height, const std::vector<int>& values) {
    Image image(width, height, PixelFormat::Grey8);
    for (std::size_t i = 0; i < values.size(); ++i) image.pixels[i] = static_cast<std::byte>(values[i]);
    return image;
}

std::vector<int> Values(const Image& image) {
    std::vector<int> values;
    for (std::size_t i = 0; i < image.ByteCount(); ++i) values.push_back(static_cast<int>(image.pixels[i]));
    return values;
}

TEST(ResizeImage, AveragesBoxesAndTruncates) {
    const Image four = Grey(4, 4, {0, 1, 10, 20, 2, 4, 30, 41, 100, 100, 0, 255, 100, 101, 255, 0});
    EXPECT_EQ(Values(ResizeImage(four, 2, 2, PixelFormat::Grey8, true, false)),
              (std::vector<int>{1, 25, 100, 127}));
    // To 3 × 3 the boxes start at 0, 1 and 2 and are 2 wide.
    EXPECT_EQ(Values(ResizeImage(four, 3, 3, PixelFormat::Grey8, true, false))[8], (0 + 255 + 255 + 0) / 4);
    // Growing uses boxes of 2 as well, cut off at the far edge.
    EXPECT_EQ(Values(ResizeImage(Grey(2, 1, {10, 20}), 4, 2, PixelFormat::Grey8, true, false)),
              (std::vector<int>{15, 15, 20, 20, 15, 15, 20, 20}));
    // One pixel: every row and column of the box is the first.
    EXPECT_EQ(Values(ResizeImage(four, 1, 1, PixelFormat::Grey8, true, false)), (std::vector<int>{0}));
}

TEST(ResizeImage, TheFastHalvingIsTheAverageOfWhatIsVisible) {
    for (const PixelFormat format : {PixelFormat::Grey8, PixelFormat::Rgb8, PixelFormat::Grey16,
                                     PixelFormat::Rgb16, PixelFormat::Rgba8, PixelFormat::Rgba16}) {
        Image source = test::RandomImage(38, 22, format);
        if (HasAlpha(format)) {
            for (int x = 0; x < 38; x += 3) source.SetPixel(x, x * 5 % 22, Color8(255, 255, 255, 0));
        }
        const Image halved = ResizeImage(source, 19, 11, format, true, false);
        ASSERT_TRUE(halved.IsValid());
        const bool wide = ChannelType(format) == ChannelKind::Int16;
        const auto channels = [wide](const Image& image, int x, int y) {
            const Color8 c = image.GetPixel8(x, y);
            const Color16 w = image.GetPixel16(x, y);
            return wide ? std::array<int, 4>{w.red, w.green, w.blue, w.alpha}
                        : std::array<int, 4>{c.red, c.green, c.blue, c.alpha};
        };
        for (int y = 0; y < 11; ++y) {
            for (int x = 0; x < 19; ++x) {
                std::array<int, 4> sums{};
                int visible = 0;
                for (int i = 0; i < 4; ++i) {
                    const std::array<int, 4> pixel = channels(source, 2 * x + (i & 1), 2 * y + i / 2);
                    sums[3] += pixel[3];
                    if (pixel[3] == 0) continue;
                    ++visible;
                    for (std::size_t c = 0; c < 3; ++c) sums[c] += pixel[c];
                }
                ASSERT_GT(visible, 0);
                for (std::size_t c = 0; c < 4; ++c) {
                    ASSERT_EQ(channels(halved, x, y)[c], sums[c] / (c < 3 ? visible : 4))
                        << FormatName(format) << ", " << x << ", " << y;
                }
            }
        }
    }
}

TEST(ResizeImage, ConstantPicturesStayConstantInEveryFormat) {
    for (const PixelFormat from : test::AllFormats()) {
        Image source(37, 23, from);
        source.Fill(PixelValue(Color8(200, 100, 50, 255)));
        for (const auto& [w, h] : {std::pair{18u, 11u}, {5u, 23u}, {37u, 1u}, {80u, 50u}, {37u, 23u}}) {
            const Image result = ResizeImage(source, w, h, from, true, false);
            ASSERT_EQ(result.width, w);
            for (std::uint32_t y = 0; y < h; ++y) {
                for (std::uint32_t x = 0; x < w; ++x) {
                    ASSERT_EQ(result.GetPixel8(static_cast<int>(x), static_cast<int>(y)),
                              source.GetPixel8(0, 0))
                        << FormatName(from) << " to " << w << " x " << h;
                }
            }
        }
    }
}

TEST(ResizeImage, TransparentPixelsDarkenNothing) {
    Image source(2, 2, PixelFormat::Rgba8);
    source.Fill(PixelValue(Color8(0, 0, 0, 0)));
    source.SetPixel(0, 0, Color8(200, 100, 50, 200));
    EXPECT_EQ(ResizeImage(source, 1, 1, PixelFormat::Rgba8, true, false).GetPixel8(0, 0).red, 200);
    Image wide(4, 4, PixelFormat::Rgba8);
    wide.Fill(PixelValue(Color8(9, 9, 9, 0)));
    wide.SetPixel(0, 0, Color8(200, 100, 50, 200));
    wide.SetPixel(1, 1, Color8(100, 0, 50, 100));
    const Image result = ResizeImage(wide, 2, 2, PixelFormat::Rgba8, true, false);
    EXPECT_EQ(result.GetPixel8(0, 0), Color8(150, 50, 50, 75));
    EXPECT_EQ(result.GetPixel8(1, 1), Color8(0, 0, 0, 0)) << "nothing visible";
}

TEST(ResizeImage, WithoutAverageCropsAndPads) {
    const Image source = test::RandomImage(4, 3, PixelFormat::Rgba8);
    const Image result = ResizeImage(source, 6, 2, PixelFormat::Rgba8, false, false);
    EXPECT_EQ(result.GetPixel8(3, 1), source.GetPixel8(3, 1));
    EXPECT_EQ(result.GetPixel8(4, 0), Color8(0, 0, 0, 0));
    EXPECT_FALSE(ResizeImage(Image(), 2, 2, PixelFormat::Rgb8, true, false).IsValid());
    EXPECT_FALSE(ResizeImage(source, 0, 2, PixelFormat::Rgb8, true, false).IsValid());
}

TEST(ResizeImage, KeepsTheAspectRatioWhenAsked) {
    const Image source = test::RandomImage(40, 20, PixelFormat::Rgb8);
    const Image result = ResizeImage(source, 10, 10, PixelFormat::Rgb8, true, true);
    EXPECT_EQ(result.width, 10u);
    EXPECT_EQ(result.height, 5u);
}

TEST(AntialiasFaces, ScalesTheFacesAndTheirSize) {
    test::TestPanorama t;
    t.SetFaces(8, PixelFormat::Rgb8);
    t.feedback.active = true;
    t.panorama.faces[3].Clear();
    AntialiasFaces(t.panorama, 0.5f);
    EXPECT_EQ(t.panorama.faceSize, 4u);
    EXPECT_EQ(t.panorama.faces[5].width, 4u);
    EXPECT_FALSE(t.panorama.faces[3].IsValid());
    EXPECT_EQ(t.feedback.fractions.front(), 1.0f / 6.0f);
    EXPECT_EQ(t.feedback.progressTexts.back(), L"Antialiasing cube faces...");
    for (const float factor : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()})
        AntialiasFaces(t.panorama, factor);
    EXPECT_EQ(t.panorama.faceSize, 4u);
}

}  // namespace
}  // namespace skyvault
