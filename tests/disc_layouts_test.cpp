// Sphere map, mirror ball and heart: every pixel against the rules written out one pixel at a time.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "image/picture_files.h"
#include "projection/cube_face.h"
#include "projection/disc_kernels.h"
#include "projection/disc_shape.h"
#include "projection/heart.h"
#include "projection/mirror_ball.h"
#include "projection/resize_image.h"
#include "projection/sample_panorama.h"
#include "projection/sphere_map.h"
#include "session/import_panorama.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TestPanorama;

// The rules. Nothing in them is shared with the program but the directions' conventions: elementary functions
// are the C library's.

constexpr float kPhi1 = 1.7453293f;
const float kCotangent = 1.0f / static_cast<float>(std::tan(static_cast<double>(kPhi1)));

float SingleCos(float x) {
    return static_cast<float>(std::cos(static_cast<double>(x)));
}
float SingleSin(float x) {
    return static_cast<float>(std::sin(static_cast<double>(x)));
}
float SingleAtan2(float y, float x) {
    return static_cast<float>(std::atan2(static_cast<double>(y), static_cast<double>(x)));
}

/// The direction a pixel of an S × S picture shows; none outside of the shape.
using PixelRule = std::optional<Direction> (*)(int S, int i, int j);

std::optional<Direction> SphereMapPixel(int S, int i, int j) {
    const int h = S / 2;
    if (!(static_cast<float>((i - h) * (i - h) + (j - h) * (j - h)) < static_cast<float>(S * S / 4))) {
        return std::nullopt;
    }
    const double u = static_cast<double>(i) / S, v = 1 - static_cast<double>(j) / S;
    const double t = 4 * u - 4 * u * u - 1 - 4 * v * v + 4 * v;
    const float n = std::sqrt(static_cast<float>(t));
    return Direction{static_cast<float>((2 * u - 1) * (2 * n)), static_cast<float>((2 * v - 1) * (2 * n)),
                     static_cast<float>(8 * u - 8 * u * u - 8 * v * v + 8 * v - 3)};
}

std::optional<Direction> MirrorBallPixel(int S, int i, int j) {
    const int h = S / 2;
    const float x = static_cast<float>(i - h) / static_cast<float>(h);
    const float y = static_cast<float>(h - j) / static_cast<float>(h);
    if (!(x * x + y * y <= 1)) return std::nullopt;
    return Direction{x, y, std::sqrt(1 - x * x - y * y)};
}

std::optional<Direction> HeartPixel(int S, int i, int j) {
    const float size = static_cast<float>(S);
    const float X = static_cast<float>(i) * 4.040308f / size - 2.020586f;
    const float Y = kCotangent - (0.742636f - static_cast<float>(j) * 4.058762f / size);
    const float rho = std::sqrt(X * X + Y * Y);
    const float phi = kCotangent + kPhi1 - rho;
    if (phi < -1.5707964f || phi > 1.5707964f || SingleCos(phi) == 0) return std::nullopt;
    const float turned = SingleAtan2(X, Y) * (rho / SingleCos(phi)) + 3.1415927f;
    if (turned < 0 || turned > 6.2831855f) return std::nullopt;
    const float lambda = turned + 3.1415927f;
    return Direction{SingleSin(lambda) * SingleCos(phi), SingleSin(phi), SingleCos(lambda) * SingleCos(phi)};
}

struct Position {
    int column, row;
};

/// The pixel of a W × H picture seen along a unit direction, before wrapping.
using DirectionRule = Position (*)(int W, int H, const Direction& d);

Position SphereMapPosition(int W, int H, const Direction& d) {
    const float m = 2 * std::sqrt(d.x * d.x + d.y * d.y + (d.z + 1) * (d.z + 1));
    if (m == 0) return {W - 1, H / 2};
    return {static_cast<int>(W * (static_cast<double>(d.x / m) + 0.5)),
            static_cast<int>(H * (0.5 - static_cast<double>(d.y / m)))};
}

Position MirrorBallPosition(int W, int H, const Direction& d) {
    const float k = static_cast<float>(W * 0.5 - 2.0);
    return {static_cast<int>(d.x * k + static_cast<float>(W) * 0.5f),
            static_cast<int>(static_cast<float>(H) * 0.5f - d.y * k)};
}

Position HeartPosition(int W, int H, const Direction& d) {
    float lambda = SingleAtan2(d.x, d.z) + 3.1415927f;
    const float phi = SingleAtan2(d.y, std::sqrt(d.x * d.x + d.z * d.z));
    if (lambda >= 6.2831855f) lambda -= 6.2831855f;
    const float rho = kCotangent + kPhi1 - phi;
    lambda -= 3.1415927f;
    const float E = SingleCos(phi) * lambda / rho;
    const float x = SingleSin(E) * rho;
    const float y = kCotangent - SingleCos(E) * rho;
    return {static_cast<int>((x + 2.020586f) * static_cast<float>(W - 1) / 4.040308f),
            H - static_cast<int>((y + 3.3161261f) * static_cast<float>(H - 1) / 4.058762f) - 1};
}

struct Shape {
    const char* name;
    PanoramaFormat format;
    bool (*exportTo)(Panorama&, const std::wstring&, std::wstring&);
    PixelRule pixel;
    DirectionRule position;
};

const Shape kShapes[] = {
    {"SphereMap", PanoramaFormat::SphereMap, ExportSphereMap, SphereMapPixel, SphereMapPosition},
    {"MirrorBall", PanoramaFormat::MirrorBall, ExportMirrorBall, MirrorBallPixel, MirrorBallPosition},
    {"Heart", PanoramaFormat::Heart, ExportHeart, HeartPixel, HeartPosition},
};

/// Every shape with both sets of kernels.
class DiscLayouts : public testing::TestWithParam<std::tuple<Shape, KernelSet>> {
  protected:
    void SetUp() override {
        if (!UseKernels(std::get<1>(GetParam()))) GTEST_SKIP() << "this processor has no AVX2";
    }
    void TearDown() override { UseKernels(KernelSet::Fastest); }
    const Shape& shape = std::get<0>(GetParam());
};

INSTANTIATE_TEST_SUITE_P(All, DiscLayouts,
                         testing::Combine(testing::ValuesIn(kShapes),
                                          testing::Values(KernelSet::Baseline, KernelSet::Avx2)),
                         [](const auto& p) {
                             const bool avx2 = std::get<1>(p.param) == KernelSet::Avx2;
                             return std::string(std::get<0>(p.param).name) + (avx2 ? "Avx2" : "Baseline");
                         });

/// The picture as the window shows it, size × size.
const Image& View(TestPanorama& t, const Shape& shape, int size) {
    t.panorama.faceSize = 1000;
    t.target.size = {size, size + 5};
    std::wstring log;
    t.settings.resolution2 = 3;
    EXPECT_TRUE(shape.exportTo(t.panorama, L"", log));
    return t.target.shown;
}

/// How many of `pixels` may show the pixel beside the rule's: the heart's rule goes through sines and arc
/// tangents, and the program's own are up to two units in the last place off the C library's.
int Tolerated(const Shape& shape, int pixels) {
    return shape.format == PanoramaFormat::Heart ? (pixels + 19'999) / 20'000 : 0;
}

TEST_P(DiscLayouts, EveryPixelShowsItsDirectionAndTheRestTheBackground) {
    TestPanorama t;
    t.SetEquirectangular(test::RandomImage(256, 128, PixelFormat::Rgba8));
    t.settings.backgroundColour = Color8(11, 22, 33, 44);
    for (const int size : {1, 2, 3, 4, 7, 8, 31, 64, 100, 257, 600}) {
        for (const bool transparent : {false, true}) {
            if (transparent && size == 600) continue;  // here the blocks wholly outside are the point
            t.settings.transparency = transparent;
            const Image& shown = View(t, shape, size);
            ASSERT_EQ(static_cast<int>(shown.width), size);
            ASSERT_EQ(static_cast<int>(shown.height), size);
            ASSERT_EQ(shown.format, transparent ? PixelFormat::Rgba8 : PixelFormat::Rgb8);
            Image expected(1, 1, shown.format);
            int differing = 0;
            for (int j = 0; j < size; ++j) {
                for (int i = 0; i < size; ++i) {
                    const std::optional<Direction> d = shape.pixel(size, i, j);
                    if (d) {
                        expected.SetPixel(0, 0, SamplePanorama(t.panorama, *d));
                    } else {
                        expected.SetPixel(0, 0, Color8(11, 22, 33, transparent ? 0 : 255));
                    }
                    differing += shown.GetPixel8(i, j) != expected.GetPixel8(0, 0);
                }
            }
            EXPECT_LE(differing, Tolerated(shape, size * size))
                << size << (transparent ? " transparent" : "");
        }
    }
}

TEST_P(DiscLayouts, FilesAreBuiltAtDoubleSizeAndAveraged) {
    const test::TemporaryFolder folder;
    TestPanorama t;
    t.SetEquirectangular(test::RandomImage(256, 128, PixelFormat::Rgb8));
    t.settings.antialiasing = true;
    for (const int size : {32, 45}) {
        const Image doubled = View(t, shape, 2 * size).CopyRect();
        t.panorama.faceSize = static_cast<std::uint32_t>(size) / 2;
        const int written = size / 2 * 2;
        std::wstring log;
        ASSERT_TRUE(shape.exportTo(t.panorama, folder / L"out.png", log));
        ASSERT_EQ(static_cast<int>(t.panorama.resultPicture.width), written);
        if (size != written) continue;
        const std::uint32_t edge = static_cast<std::uint32_t>(size);
        EXPECT_TRUE(test::SameBytes(t.panorama.resultPicture,
                                    ResizeImage(doubled, edge, edge, PixelFormat::Rgb8, true, false)));
    }
    EXPECT_EQ(t.feedback.information.size(), 2u) << "the source is too small for 2048, and the user is told";
}

TEST_P(DiscLayouts, ImportReadsThePixelSeenAlongEveryFacePixel) {
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"picture.png";
    struct Size {
        std::uint32_t width, height;
    };
    for (const Size size :
         {Size{1, 1}, {2, 3}, {3, 2}, {5, 5}, {8, 8}, {9, 16}, {33, 20}, {64, 64}, {131, 129}}) {
        Image picture = test::RandomImage(size.width, size.height, PixelFormat::Rgba8);
        ASSERT_TRUE(SavePicture(picture, path));
        TestPanorama t;
        t.settings.transparency = true;
        t.feedback.active = true;
        t.panorama.modifications.logoSize = 0.5f;
        ImportPanorama(t.panorama, {path}, shape.format);
        const int N = 2 * static_cast<int>(size.width);
        ASSERT_EQ(static_cast<int>(t.panorama.faceSize), N);
        ASSERT_EQ(t.feedback.fractions.size(), 6u);
        int differing = 0;
        for (int f = 0; f < kFaceCount; ++f) {
            const Image& face = t.panorama.faces[static_cast<std::size_t>(f)];
            ASSERT_EQ(face.format, PixelFormat::Rgba8);
            ASSERT_EQ(static_cast<int>(face.width), N);
            for (int r = 0; r < N; ++r) {
                for (int c = 0; c < N; ++c) {
                    const Direction d = FacePixelToDirection(N, static_cast<CubeFace>(f), c, r);
                    const Position at =
                        shape.position(static_cast<int>(size.width), static_cast<int>(size.height), d);
                    differing += face.GetPixel8(c, r) != picture.GetPixel8(at.column, at.row);
                }
            }
        }
        EXPECT_LE(differing, Tolerated(shape, 6 * N * N)) << size.width << " x " << size.height;
    }
}

TEST(DiscLayout, KnownDirectionsLieWhereTheProjectionPutsThem) {
    // Worked out by hand: the sphere map's distance from the centre is half the sine of half the angle from
    // the front, the ball's the sine of the angle; in the heart the axes lie on circles around a point
    // 0.226 below the top.
    struct Case {
        const Shape& shape;
        Direction d;
        double across, down;
    };
    const Shape &sphere = kShapes[0], &ball = kShapes[1], &heart = kShapes[2];
    const float s = std::sqrt(0.5f);
    const Case cases[] = {
        {sphere, {0, 0, 1}, 0.5, 0.5},       {sphere, {1, 0, 0}, 0.8536, 0.5},
        {sphere, {-1, 0, 0}, 0.1464, 0.5},   {sphere, {0, 1, 0}, 0.5, 0.1464},
        {sphere, {0, -s, s}, 0.5, 0.6913},   {sphere, {s, 0, -s}, 0.9619, 0.5},
        {ball, {0, 0, 1}, 0.5, 0.5},         {ball, {s, 0, s}, 0.8536, 0.5},
        {ball, {-s, 0, s}, 0.1464, 0.5},     {ball, {0, s, s}, 0.5, 0.1464},
        {heart, {0, 0, 1}, 0.5001, 0.6130},  {heart, {1, 0, 0}, 0.8271, 0.4349},
        {heart, {-1, 0, 0}, 0.1731, 0.4349}, {heart, {0, 1, 0}, 0.5001, 0.2264},
        {heart, {0, -s, s}, 0.5001, 0.8065},
    };
    constexpr int kSize = 1000;
    for (const Case& c : cases) {
        TestPanorama t;
        // All white but for a black patch of 3° around the direction.
        Image source(720, 360, PixelFormat::Rgb8);
        for (int row = 0; row < 360; ++row) {
            for (int column = 0; column < 720; ++column) {
                const double longitude = (column - 360) * 3.14159265 / 360,
                             latitude = (180 - row) * 3.14159265 / 360;
                const double dot = c.d.x * std::cos(latitude) * std::sin(longitude) +
                                   c.d.y * std::sin(latitude) +
                                   c.d.z * std::cos(latitude) * std::cos(longitude);
                const std::uint8_t v = dot > std::cos(0.05) ? 0 : 255;
                source.SetPixel(column, row, Color8(v, v, v, 255));
            }
        }
        t.SetEquirectangular(std::move(source));
        const Image& shown = View(t, c.shape, kSize);
        const int column = std::min(kSize - 1, static_cast<int>(c.across * kSize + 0.5));
        const int row = static_cast<int>(c.down * kSize + 0.5);
        EXPECT_EQ(shown.GetPixel8(column, row).red, 0)
            << c.shape.name << " " << c.d.x << " " << c.d.y << " " << c.d.z;
    }
}

TEST(DiscLayout, DirectionsWithoutAPlaceGetOne) {
    DirectionBlock block;
    const Direction directions[] = {
        {0, 0, -1}, {-0.0f, -0.0f, -1}, {0, 1, 0}, {0, -1, 0}, {0.0017941f, 0.9999984f, 0}};
    constexpr int kCount = 5;
    for (int i = 0; i < kCount; ++i) {
        block.x[i] = directions[i].x, block.y[i] = directions[i].y, block.z[i] = directions[i].z;
    }
    std::int32_t columns[kCount], rows[kCount];
    DiscPasses().sphereMapPixels(block, kCount, 100, 60, columns, rows);
    for (const int i : {0, 1}) {
        EXPECT_EQ(columns[i], 99);
        EXPECT_EQ(rows[i], 30);
    }
    // Around the latitude whose circle has no radius: anywhere on the axis.
    float latitude = 1.5689f;
    for (int n = 0; n < 2000; ++n, latitude = std::nextafter(latitude, 2.0f)) {
        const int lane = n % kCount;
        block.x[lane] = static_cast<float>(std::cos(static_cast<double>(latitude)));
        block.y[lane] = static_cast<float>(std::sin(static_cast<double>(latitude)));
        block.z[lane] = 0;
        DiscPasses().heartPixels(block, kCount, 1001, 1001, columns, rows);
        ASSERT_NEAR(columns[lane], 500, 1) << latitude;
        ASSERT_NEAR(rows[lane], 226, 1) << latitude;
    }
}

TEST(DiscLayout, UnreadablePicturesAreRefusedWithoutAWord) {
    for (const auto import : {ImportSphereMap, ImportMirrorBall, ImportHeart}) {
        TestPanorama t;
        EXPECT_FALSE(import(t.panorama, L"no such picture.png"));
        EXPECT_TRUE(t.panorama.IsEmpty());
        EXPECT_TRUE(t.feedback.errors.empty());
    }
}

TEST(DiscLayout, BothKernelSetsGiveTheSameBytes) {
    if (!UseKernels(KernelSet::Avx2)) GTEST_SKIP() << "this processor has no AVX2";
    const test::TemporaryFolder folder;
    const std::wstring path = folder / L"picture.png";
    Image picture = test::RandomImage(120, 77, PixelFormat::Rgb16);
    ASSERT_TRUE(SavePicture(picture, path));
    for (const Shape& shape : kShapes) {
        TestPanorama t[2];
        for (const int set : {0, 1}) {
            UseKernels(set == 0 ? KernelSet::Baseline : KernelSet::Avx2);
            ImportPanorama(t[set].panorama, {path}, shape.format);
            View(t[set], shape, 333);
        }
        UseKernels(KernelSet::Fastest);
        EXPECT_TRUE(test::SameBytes(t[0].target.shown, t[1].target.shown)) << shape.name;
        for (std::size_t f = 0; f < kFaceCount; ++f) {
            EXPECT_TRUE(test::SameBytes(t[0].panorama.faces[f], t[1].panorama.faces[f])) << shape.name << f;
        }
    }
}

}  // namespace
}  // namespace skyvault
