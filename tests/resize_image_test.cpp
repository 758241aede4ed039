#include "projection/resize_image.h"

#include <gtest/gtest.h>

#include "image/area_scale.h"
#include "projection/build_faces.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;

Image Averaged(const Image& source, std::uint32_t width, std::uint32_t height) {
    return ResizeImage(source, width, height, source.format, true, false);
}

/// A picture of one row in grey, averaged.
std::vector<int> AveragedGrey(std::uint32_t width, const std::vector<int>& values, std::uint32_t newWidth,
                              std::uint32_t newHeight) {
    Image image(width, static_cast<std::uint32_t>(values.size()) / width, Grey8);
    for (std::size_t i = 0; i < values.size(); ++i) image.pixels[i] = static_cast<std::byte>(values[i]);
    const Image result = Averaged(image, newWidth, newHeight);
    std::vector<int> averaged(result.ByteCount());
    for (std::size_t i = 0; i < averaged.size(); ++i) averaged[i] = static_cast<int>(result.pixels[i]);
    return averaged;
}

TEST(ResizeImage, AveragesBoxesAndTruncates) {
    const std::vector<int> four = {0, 1, 10, 20, 2, 4, 30, 41, 100, 100, 0, 255, 100, 101, 255, 0};
    EXPECT_EQ(AveragedGrey(4, four, 2, 2), (std::vector<int>{1, 25, 100, 127}));
    // To 3 × 3 the boxes start at 0, 1 and 2 and are 2 wide.
    EXPECT_EQ(AveragedGrey(4, four, 3, 3)[8], (0 + 255 + 255 + 0) / 4);
    // From 5 to 2 they start at 0 and 2 and are 3 wide.
    EXPECT_EQ(AveragedGrey(5, {3, 6, 9, 30, 60}, 2, 1), (std::vector<int>{6, 33}));
    // Growing uses boxes of 2 as well, cut off at the far edge.
    EXPECT_EQ(AveragedGrey(2, {10, 20}, 4, 2), (std::vector<int>{15, 15, 20, 20, 15, 15, 20, 20}));
    // One pixel: every row and column of the box is the first.
    EXPECT_EQ(AveragedGrey(4, four, 1, 1), (std::vector<int>{0}));
    EXPECT_EQ(AveragedGrey(4, four, 1, 2), (std::vector<int>{(0 + 2 + 100 + 100) / 4, 100}));
}

TEST(ResizeImage, TheFastHalvingIsTheAverageOfWhatIsVisible) {
    for (const PixelFormat format : {Grey8, Rgb8, Grey16, Rgb16, Rgba8, Rgba16}) {
        Image source = RandomImage(38, 22, format);
        if (HasAlpha(format)) {
            for (int x = 0; x < 38; x += 3) source.SetPixel(x, x * 5 % 22, Color8(255, 255, 255, 0));
        }
        for (int i = 0; i < 4 && HasAlpha(format); ++i) source.SetPixel(i / 2, i % 2, Color8(9, 9, 9, 0));
        const Image halved = Averaged(source, 19, 11);
        const auto channels = [](const Image& image, int x, int y) {
            const Color8 a = image.GetPixel8(x, y);
            const Color16 b = image.GetPixel16(x, y);
            const bool narrow = ChannelType(image.format) == ChannelKind::Int8;
            return narrow ? std::array<int, 4>{a.red, a.green, a.blue, a.alpha}
                          : std::array<int, 4>{b.red, b.green, b.blue, b.alpha};
        };
        ForPixels(halved, [&](int x, int y) {
            std::array<int, 4> sum = {}, average = {};
            int visible = 0;
            for (int i = 0; i < 4; ++i) {
                const std::array<int, 4> pixel = channels(source, 2 * x + i % 2, 2 * y + i / 2);
                visible += pixel[3] > 0;
                for (std::size_t c = 0; c < 4 && pixel[3] > 0; ++c) sum[c] += pixel[c];
            }
            for (std::size_t c = 0; c < 4 && visible > 0; ++c) average[c] = sum[c] / (c == 3 ? 4 : visible);
            ASSERT_EQ(channels(halved, x, y), average) << FormatName(format) << " " << x << ", " << y;
        });
    }
}

TEST(ResizeImage, ConstantPicturesStayConstantInEveryFormatHoweverTheyAreScaled) {
    for (const PixelFormat format : AllFormats()) {
        const Image constant = Filled(37, 23, format, Color8(200, 100, 50, 255));
        for (const auto& [w, h] : {std::pair{18u, 11u}, {5u, 23u}, {37u, 1u}, {80u, 50u}, {37u, 23u}}) {
            const Image expected = Filled(w, h, format, Color8(200, 100, 50, 255));
            EXPECT_TRUE(SameBytes(Averaged(constant, w, h), expected)) << FormatName(format) << w << "," << h;
            EXPECT_TRUE(SameBytes(ScaleByArea(constant, w, h), expected))
                << FormatName(format) << w << "," << h;
        }
    }
}

TEST(ResizeImage, WithoutAverageCropsAndPadsAndKeepsTheAspectRatioWhenAsked) {
    const Image source = RandomImage(4, 3, Rgba8), wide = RandomImage(40, 20, Rgb8);
    const Image result = ResizeImage(source, 6, 2, Rgba8, false, false);
    EXPECT_EQ(result.GetPixel8(3, 1), source.GetPixel8(3, 1));
    EXPECT_EQ(result.GetPixel8(4, 0), Color8(0, 0, 0, 0));
    EXPECT_FALSE(Averaged(Image(), 2, 2).IsValid());
    EXPECT_FALSE(Averaged(source, 0, 2).IsValid());
    const Image kept = ResizeImage(wide, 10, 10, Rgb8, true, true);
    EXPECT_TRUE(kept.width == 10 && kept.height == 5);
}

TEST(AntialiasFaces, ScalesTheFacesAndTheirSize) {
    TestPanorama t;
    t.SetFaces(8, Rgb8);
    t.feedback.active = true;
    t.panorama.faces[3].Clear();
    for (const float factor : {0.5f, 0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()})
        EXPECT_EQ(AntialiasFaces(t.panorama, factor, t.feedback).IsDone(), !(factor > 0.0f))
            << "a face is missing";
    EXPECT_EQ(t.panorama.faceSize, 4u);
    EXPECT_EQ(t.panorama.faces[5].width, 4u);
    EXPECT_FALSE(t.panorama.faces[3].IsValid());
    EXPECT_EQ(t.feedback.fractions.front(), 1.0f / 6.0f);
    EXPECT_EQ(t.feedback.progressTexts.back(), L"Antialiasing cube faces...");
}

}  // namespace
}  // namespace skyvault::test
