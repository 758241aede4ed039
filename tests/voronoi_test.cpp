// The Voronoi generator against a plain reading of what it draws: every seed asked at every pixel.
#include "generators/voronoi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "generators/paint_faces.h"
#include "projection/build_faces.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

using test::GeneratorPanorama;

constexpr std::uint32_t kRandomSeed = 4711;

struct PlainSeed {
    float x = 0, y = 0, z = 0;
    Color8 colour;
};
using PlainSeeds = std::vector<PlainSeed>;

double PlainPower(double base, float power) {
    if (power == 0.0f) return 1.0;
    if (power == 1.0f) return base;
    if (power == 2.0f) return base * base;
    if (power == 3.0f) return base * base * base;
    if (power == 4.0f) return base * base * base * base;
    return std::pow(base, static_cast<double>(power));
}

Color8 PlainColour(const PlainSeeds& seeds, const VoronoiLook& look, const Direction& d) {
    std::vector<float> q;
    for (const PlainSeed& seed : seeds) {
        const float dx = seed.x - d.x, dy = seed.y - d.y, dz = seed.z - d.z;
        q.push_back(dx * dx + dy * dy + dz * dz);
    }
    if (look.border > 0.0f && seeds.size() > 1) {
        std::vector<float> sorted = q;
        std::partial_sort(sorted.begin(), sorted.begin() + 2, sorted.end());
        if (look.border > sorted[1] - sorted[0]) return {0, 0, 0, 255};
    }
    if (!look.smooth) {
        const Color8& c =
            seeds[static_cast<std::size_t>(std::min_element(q.begin(), q.end()) - q.begin())].colour;
        return {c.red, c.green, c.blue, 255};
    }
    float sum = 0.0f, red = 0.0f, green = 0.0f, blue = 0.0f;
    std::vector<float> weights;
    for (const float squared : q) {
        const double weight = 100.0 / PlainPower(static_cast<double>(squared) * 100.0, look.power);
        weights.push_back(squared == 0.0f || weight > 100.0 ? 100.0f : static_cast<float>(weight));
        sum += weights.back();
    }
    if (sum == 0.0f) return {0, 0, 0, 255};
    for (std::size_t k = 0; k < seeds.size(); ++k) {
        const float share = weights[k] / sum;
        red += share * static_cast<float>(seeds[k].colour.red);
        green += share * static_cast<float>(seeds[k].colour.green);
        blue += share * static_cast<float>(seeds[k].colour.blue);
    }
    return {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(blue),
            255};
}

/// Asks every step-th pixel of all faces, starting in another column in each row. Returns how many differ
/// and says where the first does.
int CountWrongPixels(const Panorama& panorama, const PlainSeeds& seeds, const VoronoiLook& look, int step) {
    int wrong = 0;
    const int size = static_cast<int>(panorama.faceSize);
    for (int f = 0; f < kFaceCount; ++f) {
        const Image& face = panorama.faces[static_cast<std::size_t>(f)];
        for (int row = 0; row < size; ++row) {
            for (int column = row % step; column < size; column += step) {
                const Direction d = FacePixelToDirection(size, static_cast<CubeFace>(f), column, row);
                if (face.GetPixel8(column, row) == PlainColour(seeds, look, d)) continue;
                if (wrong++ == 0) ADD_FAILURE() << "face " << f << " column " << column << " row " << row;
            }
        }
    }
    return wrong;
}

VoronoiSeeds ToSeeds(const PlainSeeds& plain) {
    VoronoiSeeds seeds;
    EXPECT_TRUE(seeds.Resize(static_cast<int>(plain.size())));
    for (std::size_t k = 0; k < plain.size(); ++k) {
        seeds.Set(static_cast<int>(k), plain[k].x, plain[k].y, plain[k].z, plain[k].colour);
    }
    return seeds;
}

Color8 ColourOfNumber(std::size_t k) {
    return {static_cast<std::uint8_t>(k * 37 + 11), static_cast<std::uint8_t>(k * 101 + 5),
            static_cast<std::uint8_t>(k), 255};
}

struct VoronoiTest : test::GeneratorTest {
    const std::wstring palettePath = Palette(23, 11);
    const Image palette = LoadPicture(palettePath);

    void SetUp() override { SetFixedSeed(kRandomSeed); }

    PlainSeeds Draw(int count) const {
        PlainSeeds seeds(static_cast<std::size_t>(count));
        SetRandomState(kRandomSeed);
        for (PlainSeed& seed : seeds) {
            const std::int32_t column = RandomInt(23);
            const std::int32_t row = RandomInt(11);
            seed.colour = palette.GetPixel8(column, row);
            seed.z = RandomFloat(2.0f) - 1.0f;
            seed.y = RandomFloat(2.0f) - 1.0f;
            seed.x = RandomFloat(2.0f) - 1.0f;
        }
        return seeds;
    }
};

struct Row {
    const char* name;
    int points;
    VoronoiLook look;
    std::uint32_t size;
    int step;
};

TEST_F(VoronoiTest, EveryPixelIsThatOfAskingEverySeed) {
    const Row rows[] = {
        {"one seed", 1, {}, 64, 3},
        {"one seed has no border", 1, {.border = 5.0f}, 64, 3},
        {"two", 2, {}, 97, 2},
        {"two, border", 2, {.border = 0.1f}, 97, 2},
        {"three", 3, {}, 97, 2},
        {"fifty", 50, {}, 256, 5},
        {"fifty, border of most", 50, {.border = 0.3f}, 97, 2},
        {"fifty, nothing but border", 50, {.border = 20.0f}, 64, 3},
        {"fifty, no border below zero", 50, {.border = -1.0f}, 64, 3},
        {"five hundred", 500, {}, 256, 17},
        {"five hundred, border", 500, {.border = 0.004f}, 256, 17},
        {"average", 50, {.smooth = true, .power = 0.0f}, 97, 7},
        {"power 1", 3, {.smooth = true, .power = 1.0f}, 97, 7},
        {"power 2", 50, {.smooth = true, .power = 2.0f}, 97, 7},
        {"power 3", 1, {.smooth = true, .power = 3.0f}, 64, 7},
        {"power 3, border", 51, {.smooth = true, .power = 3.0f, .border = 0.01f}, 97, 7},
        {"power 4", 2, {.smooth = true, .power = 4.0f}, 97, 7},
        {"power 4, many", 502, {.smooth = true, .power = 4.0f}, 65, 17},
        {"power 2.5", 50, {.smooth = true, .power = 2.5f}, 97, 7},
        {"power 0.3, border", 3, {.smooth = true, .power = 0.3f, .border = 0.1f}, 97, 7},
        {"power 30", 500, {.smooth = true, .power = 30.0f}, 65, 17},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        GeneratorPanorama t;
        const PlainSeeds seeds = Draw(row.points);
        PaintVoronoi(t.panorama, row.size, ToSeeds(seeds), row.look);
        EXPECT_EQ(CountWrongPixels(t.panorama, seeds, row.look, row.step), 0);
    }
}

TEST_F(VoronoiTest, SettingsReachTheSeedsWithinTheirBounds) {
    const struct {
        int points, meantPoints;
        VoronoiLook look;
        float meantPower;
        int step;
    } rows[] = {
        {0, 1, {.power = 0.0f}, 0.0f, 29},
        {50, 50, {.power = 3.0f, .border = 0.003f}, 3.0f, 7},
        {5000, 2000, {.power = 3.0f, .border = 0.001f}, 3.0f, 29},
        {3, 3, {.smooth = true, .power = -2.0f}, 0.0f, 17},
        {3, 3, {.smooth = true, .power = 1e6f, .border = 0.01f}, 100.0f, 17},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.points);
        GeneratorPanorama t;
        t.settings.voronoiPoints = row.points;
        t.settings.voronoiSmooth = row.look.smooth;
        t.settings.voronoiPower = row.look.power;
        t.settings.voronoiBorder = row.look.border;
        t.settings.transparency = row.look.smooth;
        ASSERT_TRUE(GenerateVoronoi(t.panorama, palettePath));
        EXPECT_EQ(t.panorama.faceSize, test::kFaceEdge);
        EXPECT_EQ(t.panorama.faces[5].format, row.look.smooth ? PixelFormat::Rgba8 : PixelFormat::Rgb8);
        VoronoiLook meant = row.look;
        meant.power = row.meantPower;
        EXPECT_EQ(CountWrongPixels(t.panorama, Draw(row.meantPoints), meant, row.step), 0);
    }
}

// Equal distances, exactly equal ones, and seeds that pixels look at exactly: where ruling out is hardest.
TEST_F(VoronoiTest, TheFirstOfEqualSeedsWins) {
    struct Arrangement {
        const char* name;
        PlainSeeds seeds;
    };
    Arrangement heaps{"heaps of seeds", {}}, lattice{"a lattice", {}}, pixels{"on pixels", {}},
        middle{"middle", {}};
    const PlainSeeds drawn = Draw(20);
    for (std::size_t k = 0; k < 60; ++k) {
        PlainSeed seed = drawn[k * 7 % drawn.size()];
        seed.colour = ColourOfNumber(k);
        heaps.seeds.push_back(seed);
        middle.seeds.push_back({0.0f, 0.0f, 0.0f, seed.colour});
    }
    for (std::size_t k = 0; k < 125; ++k) {
        const auto coordinate = [](std::size_t i) { return static_cast<float>(i % 5) * 0.5f - 1.0f; };
        lattice.seeds.push_back({coordinate(k), coordinate(k / 5), coordinate(k / 25), ColourOfNumber(k)});
    }
    for (int k = 0; k < 200; ++k) {
        const Direction d = FacePixelToDirection(65, static_cast<CubeFace>(k % 6), k * 3 % 65, k % 16 * 4);
        pixels.seeds.push_back({d.x, d.y, d.z, ColourOfNumber(static_cast<std::size_t>(k))});
    }
    for (const Arrangement& arrangement : {heaps, lattice, pixels, middle}) {
        for (const VoronoiLook& look :
             {VoronoiLook{}, VoronoiLook{.border = 1e-6f}, VoronoiLook{.border = 0.02f},
              VoronoiLook{.smooth = true, .power = 2.0f}, VoronoiLook{.smooth = true, .power = 100.0f}}) {
            SCOPED_TRACE(arrangement.name + (look.smooth ? " power " + std::to_string(look.power)
                                                         : " border " + std::to_string(look.border)));
            GeneratorPanorama t;
            PaintVoronoi(t.panorama, 65, ToSeeds(arrangement.seeds), look);
            EXPECT_EQ(CountWrongPixels(t.panorama, arrangement.seeds, look, 7), 0);
        }
    }
}

TEST_F(VoronoiTest, FacesOfAnySize) {
    const PlainSeeds seeds = Draw(40);
    for (const std::uint32_t size : {2u, 3u, 15u, 17u, 255u, 257u}) {
        for (const VoronoiLook& look : {VoronoiLook{}, VoronoiLook{.border = 0.01f}}) {
            SCOPED_TRACE(size);
            GeneratorPanorama t;
            PaintVoronoi(t.panorama, size, ToSeeds(seeds), look);
            EXPECT_EQ(CountWrongPixels(t.panorama, seeds, look, 13), 0);
        }
    }
}

TEST_F(VoronoiTest, SameBytesForAnyThreadsAndKernels) {
    for (const VoronoiLook& look :
         {VoronoiLook{}, VoronoiLook{.border = 0.004f}, VoronoiLook{.smooth = true, .power = 2.0f},
          VoronoiLook{.smooth = true, .power = 2.7f, .border = 0.01f}}) {
        GeneratorPanorama first;
        const VoronoiSeeds seeds = ToSeeds(Draw(43));
        SetThreadCount(1);
        ASSERT_TRUE(UseKernels(KernelSet::Baseline));
        PaintVoronoi(first.panorama, 300, seeds, look);
        for (const KernelSet set : {KernelSet::Baseline, KernelSet::Avx2}) {
            if (!UseKernels(set)) continue;
            for (const int threads : {1, 8}) {
                SetThreadCount(threads);
                GeneratorPanorama other;
                PaintVoronoi(other.panorama, 300, seeds, look);
                for (std::size_t f = 0; f < kFaceCount; ++f) {
                    EXPECT_TRUE(test::SameBytes(first.panorama.faces[f], other.panorama.faces[f]))
                        << "face " << f << ", " << threads << " threads, " << Kernels().name << ", power "
                        << look.power << ", border " << look.border;
                }
            }
        }
    }
}

TEST_F(VoronoiTest, PaintedAtDoubleSizeAndHalvedWithAntialiasing) {
    GeneratorPanorama halved, painted;
    halved.settings.antialiasing = true;
    halved.settings.voronoiPoints = 60;
    halved.feedback.active = true;
    ASSERT_TRUE(GenerateVoronoi(halved.panorama, palettePath));
    EXPECT_EQ(halved.panorama.faceSize, 256u);
    PaintVoronoi(painted.panorama, 512, ToSeeds(Draw(60)), {});
    AntialiasFaces(painted.panorama, 0.5f);
    for (std::size_t f = 0; f < kFaceCount; ++f) {
        EXPECT_TRUE(test::SameBytes(halved.panorama.faces[f], painted.panorama.faces[f])) << f;
    }
    ASSERT_FALSE(halved.feedback.progressTexts.empty());
    EXPECT_EQ(halved.feedback.progressTexts.front(), L"Generating Voronoi...");
}

}  // namespace
}  // namespace skyvault
