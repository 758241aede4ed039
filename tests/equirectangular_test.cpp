// The equirectangular and preview exports, faces and sizes, on panoramas whose colour tells the direction.
#include "projection/equirectangular.h"

#include <gtest/gtest.h>

#include <cmath>

#include "projection/build_faces.h"
#include "projection/export_size.h"
#include "projection/fast_math.h"
#include "projection/preview.h"
#include "projection/render_layout.h"
#include "projection/resize_image.h"
#include "projection/sample_panorama.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TestPanorama;

/// Red, green and blue are the direction's x, y and z, from −1..1 to 0..65535.
Image DirectionPicture(std::uint32_t width) {
    Image image(width, width / 2, PixelFormat::Rgb16);
    const auto channel = [](double v) { return static_cast<std::uint16_t>((v + 1) * 32767.5); };
    for (std::uint32_t row = 0; row < image.height; ++row) {
        for (std::uint32_t column = 0; column < width; ++column) {
            const double longitude = 2 * 3.14159265 * column / width - 3.14159265;
            const double latitude = 3.14159265 / 2 - 3.14159265 * row / image.height;
            PixelValue value;
            value.format = PixelFormat::Rgb16;
            value.color16 = {channel(std::cos(latitude) * std::sin(longitude)), channel(std::sin(latitude)),
                             channel(std::cos(latitude) * std::cos(longitude)), 65535};
            image.SetPixel(static_cast<int>(column), static_cast<int>(row), value);
        }
    }
    return image;
}

Direction DirectionOf(const Color16& c) {
    const auto component = [](std::uint16_t v) { return static_cast<float>(v) / 32767.5f - 1.0f; };
    return {component(c.red), component(c.green), component(c.blue)};
}

/// Angle between two directions in degrees.
double Degrees(Direction a, Direction b) {
    Normalize(a);
    Normalize(b);
    return std::acos(std::min(1.0, static_cast<double>(a.x * b.x + a.y * b.y + a.z * b.z))) * 57.29578;
}

TEST(SamplePanorama, ReadsThePixelThatLooksThatWay) {
    TestPanorama t;
    Image source = test::RandomImage(400, 200, PixelFormat::Rgb8);
    const Image copy = source.CopyRect();
    t.SetEquirectangular(std::move(source));
    struct Case {
        Direction d;
        int column, row;
    };
    const Case cases[] = {{{0, 0, 1}, 200, 100}, {{1, 0, 0}, 300, 100},     {{-1, 0, 0}, 100, 100},
                          {{0, 0, -1}, 0, 100},  {{-1e-4f, 0, -1}, 0, 100}, {{1e-4f, 0, -1}, 0, 100},
                          {{0, 1, 0}, 200, 0},   {{0, -1, 0}, 200, 0}};
    for (const Case& c : cases) {
        EXPECT_EQ(SamplePanorama(t.panorama, c.d).color8, copy.GetPixel8(c.column, c.row))
            << c.d.x << " " << c.d.y << " " << c.d.z;
    }
}

TEST(SamplePanorama, EachModificationShowsWhatItSays) {
    TestPanorama t;
    t.SetEquirectangular(DirectionPicture(1440));
    const auto seen = [&](const Direction& d) { return DirectionOf(SamplePanorama(t.panorama, d).color16); };
    Modifications& m = t.panorama.modifications;
    EXPECT_LT(Degrees(seen({0.3f, 0.2f, 0.5f}), {0.3f, 0.2f, 0.5f}), 0.3);
    m.flipHorizontal = true;
    EXPECT_LT(Degrees(seen({0.3f, 0.2f, 0.5f}), {0.5f, 0.2f, 0.3f}), 0.3) << "x and z change places";
    ResetModifications(m);
    m.mirrorTopToBottom = true;
    EXPECT_LT(Degrees(seen({0.3f, -0.2f, 0.5f}), {0.3f, 0.2f, 0.5f}), 0.3);
    m.logoSize = 1.0f;
    EXPECT_LT(Degrees(seen({0.01f, -1, 0.01f}), {0.01f, 1, 0.01f}), 0.3) << "mirrored away with the nadir";
    ResetModifications(m);
    m.mirrorFrontToBack = true;
    EXPECT_LT(Degrees(seen({0.3f, 0.2f, -0.5f}), {0.3f, 0.2f, 0.5f}), 0.3);
    ResetModifications(m);
    RotatePanorama(m, 0.5f, 0, 0);
    EXPECT_LT(Degrees(seen({0, 0, 1}), {std::sin(0.5f), 0, std::cos(0.5f)}), 0.3) << "heading right";
    ResetModifications(m);
    ChangeHorizon(m, 0.3f);
    EXPECT_LT(seen({0, 0, 1}).y, -0.15f) << "horizon up: the middle looks lower";
}

TEST(SamplePanorama, LogoDiscAtTheNadir) {
    TestPanorama t;
    t.SetEquirectangular(DirectionPicture(400));
    t.settings.backgroundColour = Color8(1, 2, 3, 255);
    t.panorama.modifications.logoSize = 0.2f;
    RotatePanorama(t.panorama.modifications, 0.3f, 1.0f, 0.2f);  // the disc stays down
    const auto at = [&](float x, float z) {
        const PixelValue value = SamplePanorama(t.panorama, {x, -1, z});
        Image one(1, 1, value.format);
        one.SetPixel(0, 0, value);
        return one.GetPixel8(0, 0);
    };
    EXPECT_EQ(at(0.19f, 0), Color8(1, 2, 3, 255));
    EXPECT_NE(at(0.21f, 0), Color8(1, 2, 3, 255));
    t.settings.transparency = true;
    EXPECT_NE(at(0.19f, 0), Color8(1, 2, 3, 255)) << "nothing to show where the background is transparent";
    // Row 0 of the logo towards the front, column 0 towards the left.
    t.settings.logo = L"held in memory";
    Image& logo = t.panorama.logoPicture;
    logo = Image(20, 20, PixelFormat::Rgba8);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 20; ++x) {
            const std::uint8_t right = x < 10 ? 0 : 255, low = y < 10 ? 0 : 255;
            logo.SetPixel(x, y, Color8(255, right, low, 255));
        }
    }
    EXPECT_EQ(at(-0.1f, 0.1f), Color8(255, 0, 0, 255)) << "front left";
    EXPECT_EQ(at(0.1f, 0.1f), Color8(255, 255, 0, 255)) << "front right";
    EXPECT_EQ(at(-0.1f, -0.1f), Color8(255, 0, 255, 255)) << "back left";
    EXPECT_EQ(at(0.1f, -0.1f), Color8(255, 255, 255, 255)) << "back right";
}

TEST(ExportSize, NeverMoreThanTheSourceAndSaysSo) {
    TestPanorama t;
    t.settings.resolution1 = 4;
    EXPECT_EQ(ChooseExportSize(t.panorama, SizeKind::Equirectangular, 4000, false, true), 4000);
    ASSERT_EQ(t.feedback.information.size(), 1u);
    EXPECT_EQ(t.feedback.information[0],
              L"The resolution of the source 360° photo is too low to export as 4096 x 2048\n\n"
              L"The photo will be exported as 4000 x 2000");
    t.feedback.information.clear();
    t.settings.resolution0 = 2;
    EXPECT_EQ(ChooseExportSize(t.panorama, SizeKind::CubeMap, 1000, true, true), 1024);
    ASSERT_EQ(t.feedback.information.size(), 2u);
    EXPECT_EQ(t.feedback.information[0],
              L"The resolution of the source 360° photo is too low to export as 6 x 1024 x 1024\n\n"
              L"The photo will be exported as 6 x 1000 x 1000");
    EXPECT_EQ(t.feedback.information[1],
              L"The resolution has been changed from 1000 to 1024 to make it a power of 2");
    t.feedback.information.clear();
    EXPECT_EQ(ChooseExportSize(t.panorama, SizeKind::Equirectangular, 4096, true, true), 4096)
        << "just enough";
    EXPECT_TRUE(t.feedback.information.empty());
    t.settings.resolution2 = 99;
    EXPECT_EQ(ChooseExportSize(t.panorama, SizeKind::Square, 100, false, false), 100);
    EXPECT_EQ(ChooseExportSize(t.panorama, SizeKind::Square, 0, false, true), 256);
    EXPECT_EQ(ChooseExportSize(t.panorama, SizeKind::Generator, 0, true, true), 1024);
    EXPECT_TRUE(t.feedback.information.empty());
}

TEST(ExportEquirectangular, FillsTheWindowWithoutOutgrowingTheExport) {
    struct Case {
        ClientSize client;
        bool antialiasing;
        std::uint32_t width, height;
    };
    const Case cases[] = {{{1000, 700}, false, 1000, 500},
                          {{1000, 200}, false, 400, 200},
                          {{4000, 3000}, false, 1024, 512},
                          {{4000, 3000}, true, 2048, 1024},
                          {{1001, 700}, true, 1001, 500}};
    for (const Case& c : cases) {
        TestPanorama t;
        t.SetEquirectangular(test::RandomImage(1024, 512, PixelFormat::RgbHalf));
        t.settings.antialiasing = c.antialiasing;
        t.target.size = c.client;
        std::wstring log;
        EXPECT_TRUE(ExportEquirectangular(t.panorama, L"", log));
        EXPECT_EQ(t.target.shown.width, c.width) << c.client.width;
        EXPECT_EQ(t.target.shown.height, c.height) << c.client.width;
        EXPECT_EQ(t.target.shown.format, PixelFormat::Rgb8);
        EXPECT_TRUE(t.feedback.information.empty()) << "views never show a message";
    }
    TestPanorama narrow;
    narrow.SetEquirectangular(test::RandomImage(64, 32, PixelFormat::Rgb8));
    narrow.target.size = {1, 400};
    std::wstring log;
    EXPECT_FALSE(ExportEquirectangular(narrow.panorama, L"", log));
    EXPECT_TRUE(narrow.feedback.errors.empty());
}

TEST(ExportEquirectangular, LooksToTheBackAtColumnZeroAndStraightDownAtTheBottom) {
    TestPanorama t;
    t.SetEquirectangular(test::RandomImage(800, 400, PixelFormat::Rgb8));
    t.target.size = {800, 400};
    t.settings.antialiasing = false;
    std::wstring log;
    ASSERT_TRUE(ExportEquirectangular(t.panorama, L"", log));
    const Image& shown = t.target.shown;
    for (int row = 1; row < 399; row += 7) {
        const float latitude = static_cast<float>((399 - row) * kPiWide / 400 - kHalfPiWide);
        EXPECT_EQ(shown.GetPixel8(0, row),
                  SamplePanorama(t.panorama, {0, Sin(latitude), -Cos(latitude)}).color8)
            << row;
        EXPECT_EQ(shown.GetPixel8(400, row),
                  SamplePanorama(t.panorama, {0, Sin(latitude), Cos(latitude)}).color8);
    }
    for (int column = 0; column < 800; column += 11) {
        // The nadir's row wraps to the source's top row. The cosine of −π/2 in single precision is a hair
        // below 0, so the columns there are those of the opposite side.
        EXPECT_EQ(shown.GetPixel8(column, 399), t.panorama.equirectSource.GetPixel8(column + 400, 0))
            << column;
    }
}

TEST(ExportEquirectangular, MagnifyingGlassEnlargesFourTimesAroundTheQuarterPoints) {
    TestPanorama t;
    t.SetEquirectangular(DirectionPicture(1600));
    t.target.size = {800, 400};
    std::wstring log;
    ASSERT_TRUE(ExportEquirectangular(t.panorama, L"", log));
    const Image plain = t.target.shown.CopyRect();
    t.settings.magnifyingGlass = true;
    ASSERT_TRUE(ExportEquirectangular(t.panorama, L"", log));
    const Image& glass = t.target.shown;
    for (const int centre : {0, 200, 400, 600, 800}) {
        for (int dx = -76; dx <= 76; dx += 4) {
            const int x = centre + dx;
            if (x < 0 || x >= 800) continue;
            EXPECT_NEAR(glass.GetPixel8(x, 199).red, plain.GetPixel8(centre + dx / 4, 199).red, 1) << x;
        }
    }
    EXPECT_EQ(glass.GetPixel8(300, 199), plain.GetPixel8(300, 199)) << "between the glasses";
    EXPECT_EQ(glass.GetPixel8(400, 199 - 81), plain.GetPixel8(400, 199 - 81)) << "above the glass";
}

void ExpectBandsAverageAsTheWhole(PixelFormat format, std::uint32_t size) {
    TestPanorama t;
    t.SetEquirectangular(test::RandomImage(512, 256, format));
    RotatePanorama(t.panorama.modifications, 0.4f, 0.3f, 0.2f);
    const float middle = static_cast<float>(size / 2);
    const auto shape = [middle](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& b,
                                std::uint8_t* inside) {
        for (int i = 0; i < count; ++i) {
            const float x = static_cast<float>(first + static_cast<std::uint32_t>(i)) - middle;
            const float y = middle - static_cast<float>(row);
            b.x[i] = x, b.y[i] = y, b.z[i] = 80;
            inside[i] = x * x + y * y < 1.5f * middle * middle;  // only the corners lie outside
        }
        return Coverage::Some;
    };
    const LayoutGrid grid{size, size, shape};
    RenderOptions options;
    options.format = format;
    options.background = Color8(10, 20, 30, HasAlpha(format) ? 0 : 255);
    Image whole, halved;
    ASSERT_TRUE(RenderLayout(t.panorama, grid, options, whole));
    options.halve = true;
    ASSERT_TRUE(RenderLayout(t.panorama, grid, options, halved));
    EXPECT_TRUE(test::SameBytes(halved, ResizeImage(whole, size / 2, size / 2, format, true, false)))
        << FormatName(format) << ", " << size;
    Image corner(1, 1, format);
    corner.SetPixel(0, 0, options.background);
    EXPECT_EQ(whole.GetPixel8(0, 0), corner.GetPixel8(0, 0)) << FormatName(format);
}

TEST(RenderLayout, AveragingByBandsGivesTheResizedWholePicture) {
    for (const PixelFormat format : test::AllFormats()) {
        ExpectBandsAverageAsTheWhole(format, 1100);  // more columns than are averaged together
        ExpectBandsAverageAsTheWhole(format, 300);   // columns not a whole number of blocks
        ExpectBandsAverageAsTheWhole(format, 130);   // the last band is a single row
    }
}

TEST(RenderLayout, WithoutMemorySaysSoAndLeavesNothing) {
    TestPanorama t;
    t.SetEquirectangular(test::RandomImage(64, 32, PixelFormat::Rgb8));
    std::wstring log;
    FailAllocationsAfter(0);
    EXPECT_FALSE(ExportPreview(t.panorama, L"", {}, log));
    FailAllocationsAfter(-1);
    EXPECT_EQ(t.feedback.errors.back(), L"Out of memory");
    EXPECT_FALSE(t.panorama.resultPicture.IsValid());
    Image face;
    FailAllocationsAfter(0);
    EXPECT_FALSE(BuildFace(t.panorama, face, CubeFace::Top, 16, PixelFormat::Rgb8));
    FailAllocationsAfter(-1);
}

TEST(BuildFace, RepeatsAndSkipsPixelsOfThePanoramasOwnGrid) {
    TestPanorama t;
    t.SetFaces(16, PixelFormat::Rgb16);
    Image same, twice, half, one;
    for (int f = 0; f < kFaceCount; ++f) {
        const CubeFace which = static_cast<CubeFace>(f);
        ASSERT_TRUE(BuildFace(t.panorama, same, which, 16, PixelFormat::Rgb16));
        ASSERT_TRUE(BuildFace(t.panorama, twice, which, 32, PixelFormat::Rgb16));
        ASSERT_TRUE(BuildFace(t.panorama, half, which, 8, PixelFormat::Rgb16));
        for (int y = 0; y < 32; ++y) {
            for (int x = 0; x < 32; ++x) {
                ASSERT_EQ(twice.GetPixel16(x, y), same.GetPixel16(x / 2, y / 2)) << f;
                if (x < 8 && y < 8) {
                    ASSERT_EQ(half.GetPixel16(x, y), same.GetPixel16(2 * x, 2 * y)) << f;
                }
            }
        }
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 16; ++x) {
                const Direction d = FacePixelToDirection(16, which, x, y);
                ASSERT_EQ(same.GetPixel16(x, y), SamplePanorama(t.panorama, d).color16)
                    << f << " " << x << " " << y;
            }
        }
        ASSERT_TRUE(BuildFace(t.panorama, one, which, 1, PixelFormat::Rgb16));
    }
}

TEST(BuildFace, ASourceTooNarrowForAGridLooksAlongTheZeroVector) {
    TestPanorama t;
    t.SetEquirectangular(test::RandomImage(3, 7, PixelFormat::Rgb8));
    Image face;
    ASSERT_TRUE(BuildFace(t.panorama, face, CubeFace::Left, 5, PixelFormat::Rgb8));
    const Color8 expected = SamplePanorama(t.panorama, {}).color8;
    for (int i = 0; i < 25; ++i) EXPECT_EQ(face.GetPixel8(i % 5, i / 5), expected) << i;
}

TEST(ExportPreview, LooksThroughTheCamera) {
    TestPanorama t;
    t.SetEquirectangular(DirectionPicture(2048));
    t.target.size = {640, 360};
    std::wstring log;
    struct Case {
        Camera camera;
        Direction centre;
    };
    const float s = std::sqrt(0.5f);
    const Case cases[] = {{{0, 0, 0}, {0, 0, 1}},
                          {{kPi / 2, 0, 0}, {1, 0, 0}},
                          {{0, -kPi / 4, 0}, {0, s, s}},
                          {{kPi, 0, 1.0f}, {0, 0, -1}}};
    for (const Case& c : cases) {
        ASSERT_TRUE(ExportPreview(t.panorama, L"", c.camera, log));
        ASSERT_EQ(t.target.shown.width, 640u);
        ASSERT_EQ(t.target.shown.height, 360u);
        EXPECT_LT(Degrees(DirectionOf(t.target.shown.GetPixel16(320, 180)), c.centre), 1.0);
    }
    // To the pixel: the middle column and row look straight ahead, rows count downwards.
    ASSERT_TRUE(ExportPreview(t.panorama, L"", {}, log));
    for (const auto& [x, y] : {std::pair{320, 180}, {0, 0}, {639, 359}, {100, 300}}) {
        const Direction d{static_cast<float>(x - 320), static_cast<float>(180 - y), 640 * 0.2f};
        Image expected(1, 1, PixelFormat::Rgb8);
        expected.SetPixel(0, 0, SamplePanorama(t.panorama, d));
        EXPECT_EQ(t.target.shown.GetPixel8(x, y), expected.GetPixel8(0, 0)) << x << " " << y;
    }
    // The edge looks where the focal depth says: half the width over width × FOV.
    t.settings.previewFov = 0.5f;
    ASSERT_TRUE(ExportPreview(t.panorama, L"", {}, log));
    EXPECT_LT(Degrees(DirectionOf(t.target.shown.GetPixel16(0, 180)), {-1, 0, 1}), 1.0);
    EXPECT_LT(Degrees(DirectionOf(t.target.shown.GetPixel16(320, 0)), {0, 180, 320}), 1.0);
    for (const float fov :
         {0.0f, -0.2f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        t.settings.previewFov = fov;
        EXPECT_TRUE(ExportPreview(t.panorama, L"", {}, log)) << fov;
    }
    t.target.size = {5, 0};
    EXPECT_FALSE(ExportPreview(t.panorama, L"", {}, log));
}

TEST(Exports, AnEmptyPanoramaGivesNothing) {
    TestPanorama t;
    std::wstring log;
    EXPECT_FALSE(ExportEquirectangular(t.panorama, L"", log));
    EXPECT_FALSE(ExportEquirectangular(t.panorama, L"x.png", log));
    EXPECT_FALSE(ExportPreview(t.panorama, L"", {}, log));
    EXPECT_EQ(t.target.showCount, 0);
}

}  // namespace
}  // namespace skyvault
