// Modifications, one direction's pixel, sizes and their messages, and the driver that builds layouts and
// faces.
#include <gtest/gtest.h>

#include "projection/build_faces.h"
#include "projection/disc_layouts.h"
#include "projection/export_size.h"
#include "projection/preview.h"
#include "projection/resize_image.h"
#include "tests/data_table.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

TEST(Modifications, TurnsAddUpInTheFrameOfTheOutput) {
    Modifications turned;
    RotatePanorama(turned, kPi / 2, 0, 0);
    EXPECT_NEAR(Transform({0, 0, 1}, turned.orientation).x, 1, 1e-6) << "what was to the right";
    RotatePanorama(turned, 0, -kPi / 2, 0);
    const Direction up = Transform({0, 0, 1}, turned.orientation);
    EXPECT_NEAR(up.y, 1, 1e-6) << "after heading right, a negative pitch still looks up";
    EXPECT_NEAR(Transform(up, turned.inverseOrientation).z, 1, 1e-6);
}

TEST(Modifications, UpAndDownIsTheIdentityAndTheHorizonHasNoLimit) {
    Modifications m;
    ChangeHorizon(m, -4);
    EXPECT_EQ(m.horizonPower, -3);
    RotatePanorama(m, 0, -TurnStep(StepSize::Fine), 0);
    EXPECT_FALSE(m.orientation.isIdentity);
    RotatePanorama(m, 0, TurnStep(StepSize::Fine), 0);
    EXPECT_TRUE(m.orientation.isIdentity && m.inverseOrientation.isIdentity);
}

TEST(SamplePanorama, EachModificationShowsWhatItSays) {
    TestPanorama t;
    t.SetEquirectangular(DirectionPicture(1440));
    Modifications& m = t.panorama.modifications;
    const auto shows = [&](const Direction& d, const Direction& seen) {
        const double degrees = DegreesFrom(seen, t.Sample(d));
        ResetModifications(m);
        return degrees < 0.3;
    };
    const Direction plain[] = {{0.3f, 0.2f, 0.5f}, {0, 0, 1},      {1, 0, 0}, {-1, 0, 0},
                               {-1e-4f, 0, -1},    {1e-4f, 0, -1}, {0, 1, 0}};
    for (const Direction& d : plain) EXPECT_TRUE(shows(d, d)) << d.x << " " << d.y << " " << d.z;
    EXPECT_EQ(t.Sample({}).color16, t.Sample({0, -1, 0}).color16) << "no direction looks down";
    m.flipHorizontal = true;
    EXPECT_TRUE(shows({0.3f, 0.2f, 0.5f}, {0.5f, 0.2f, 0.3f})) << "x and z change places";
    m.mirrorTopToBottom = true;
    m.logoSize = 1.0f;
    EXPECT_TRUE(shows({0.01f, -1, 0.01f}, {0.01f, 1, 0.01f})) << "the logo goes with the nadir";
    m.mirrorFrontToBack = true;
    EXPECT_TRUE(shows({0.3f, 0.2f, -0.5f}, {0.3f, 0.2f, 0.5f}));
    RotatePanorama(m, 0.5f, 0, 0);
    EXPECT_TRUE(shows({0, 0, 1}, {std::sin(0.5f), 0, std::cos(0.5f)})) << "heading right";
    ChangeHorizon(m, 0.3f);
    EXPECT_TRUE(shows({0, 0, 1}, {0, -0.188f, 0.982f})) << "horizon up: the middle looks lower";
    m.mirrorTopToBottom = true;
    ChangeHorizon(m, 0.3f);
    EXPECT_TRUE(shows({0.866f, -0.5f, 0}, {0.866f, 0.376f, 0})) << "mirrored, and then curved";
}

TEST(SamplePanorama, LogoDiscAtTheNadir) {
    TestPanorama t;
    t.SetEquirectangular(DirectionPicture(400));
    t.settings.backgroundColour = Color8(1, 2, 3, 255);
    t.panorama.modifications.logoSize = 0.2f;
    RotatePanorama(t.panorama.modifications, 0.3f, 1.0f, 0.2f);  // the disc stays down
    Image one(1, 1, PixelFormat::Rgb16);
    const auto at = [&](float x, float z) {
        one.SetPixel(0, 0, t.Sample({x, -1, z}));
        return one.GetPixel8(0, 0);
    };
    EXPECT_EQ(at(0.19f, 0), Color8(1, 2, 3, 255));
    EXPECT_NE(at(0.21f, 0), Color8(1, 2, 3, 255));
    t.settings.transparency = true;
    EXPECT_NE(at(0.19f, 0), Color8(1, 2, 3, 255)) << "nothing to show where the background is transparent";
    // Row 0 of the logo towards the front, column 0 towards the left.
    t.panorama.logoPicture = Drawn(4, 4, PixelFormat::Rgba8, [](int x, int y) {
        return Color8(255, static_cast<std::uint8_t>(x / 2 + y / 2 * 2), 0, 255);
    });
    EXPECT_EQ(at(-0.1f, 0.1f), Color8(255, 0, 0, 255)) << "front left";
    EXPECT_EQ(at(0.1f, 0.1f), Color8(255, 1, 0, 255)) << "front right";
    EXPECT_EQ(at(-0.1f, -0.1f), Color8(255, 2, 0, 255)) << "back left";
}

TEST(ExportSize, NeverMoreThanTheSourceAndSaysSo) {
    TestPanorama t;
    t.settings.resolution0 = 2;
    t.settings.resolution1 = 4;
    t.settings.resolution2 = 99;
    for (const auto& [where, kind, source, powerOfTwo, size, expected] :
         TableOf<int, int, bool, int, std::wstring>("export_sizes")) {
        t.feedback.information.clear();
        EXPECT_EQ(ChooseExportSize(t.ForFile({}), SizeKind{kind}, source, t.feedback, powerOfTwo), size)
            << where;
        std::wstring told;
        for (const std::wstring& text : t.feedback.information) told += text + L"|";
        std::replace(told.begin(), told.end(), L'\n', L'^');
        EXPECT_EQ(told, expected) << where;
    }
    t.feedback.information.clear();
    EXPECT_EQ(ChooseExportSize(t.ForView({}), SizeKind::CubeMap, 100, t.feedback, true), 128);
    EXPECT_TRUE(t.feedback.information.empty()) << "views never show a message";
    // The preview has sizes of its own.
    t.SetEquirectangular(RandomImage(4, 2, PixelFormat::Grey8));
    const std::uint32_t widths[] = {1280, 1920, 3840, 7680, 1280};
    Image picture;
    for (t.settings.resolution3 = 0; t.settings.resolution3 < 5; ++t.settings.resolution3) {
        const std::uint32_t width = widths[t.settings.resolution3];
        ASSERT_TRUE(RenderPreview(t.panorama, t.ForFile({}), t.feedback, picture).IsDone());
        EXPECT_TRUE(picture.width == width && picture.height * 16 == width * 9) << width;
    }
}

TEST(RenderLayout, AveragingByBandsGivesTheResizedWholePicture) {
    TestPanorama t;
    for (const PixelFormat format : AllFormats()) {
        t.SetEquirectangular(RandomImage(512, 256, format));
        // More columns than are averaged together; no whole number of blocks; a last band of a single row.
        for (const std::uint32_t size : {1100u, 300u, 130u}) {
            RenderOptions options;
            options.format = format;
            options.emptyColour = Color8(10, 20, 30, HasAlpha(format) ? 0 : 255);
            const LayoutGrid grid = DiscGrid(PanoramaFormat::SphereMap, size);
            Image whole, halved;
            ASSERT_TRUE(RenderLayout(t.panorama, grid, options, whole).IsDone());
            options.halve = true;
            ASSERT_TRUE(RenderLayout(t.panorama, grid, options, halved).IsDone());
            const Image expected = ResizeImage(whole, size / 2, size / 2, format, true, false);
            EXPECT_TRUE(SameBytes(halved, expected)) << FormatName(format) << ", " << size;
        }
    }
}

TEST(BuildFace, RepeatsAndSkipsPixelsOfThePanoramasOwnGrid) {
    TestPanorama t;
    t.SetFaces(16, PixelFormat::Rgb16);
    Image face;
    for (const std::int32_t n : {1, 5, 8, 16, 32}) {
        for (std::uint32_t f = 0; f < kFaceCount; ++f) {
            const CubeFace which = static_cast<CubeFace>(f);
            ASSERT_TRUE(
                BuildFace(t.panorama, face, which, static_cast<std::uint32_t>(n), PixelFormat::Rgb16, {})
                    .IsDone());
            for (int at = 0; at < n * n; ++at) {
                const Direction d = FacePixelToDirection(16, which, 16 * (at % n) / n, 16 * (at / n) / n);
                ASSERT_EQ(face.GetPixel16(at % n, at / n), t.Sample(d).color16)
                    << n << ": " << f << " " << at;
            }
        }
    }
    TestPanorama narrow;
    narrow.SetEquirectangular(RandomImage(3, 7, PixelFormat::Rgb8));
    ASSERT_TRUE(BuildFace(narrow.panorama, face, CubeFace::Left, 5, PixelFormat::Rgb8, {}).IsDone());
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(face.GetPixel8(i % 5, i / 5), narrow.Sample({}).color8) << "no grid";
}

}  // namespace
}  // namespace skyvault::test
