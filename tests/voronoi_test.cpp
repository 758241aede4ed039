// The Voronoi generator against a plain reading of what it draws: every seed asked at every pixel.
#include "generators/voronoi.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "generators/palette.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

Color8 PlainColour(const VoronoiSeeds& voronoi, const VoronoiLook& look, const Direction& d) {
    const SeedArrays seeds = voronoi.Arrays();
    const SeedColours colours = voronoi.Colours();
    std::vector<float> q;
    for (int k = 0; k < seeds.count; ++k) {
        const float dx = seeds.x[k] - d.x, dy = seeds.y[k] - d.y, dz = seeds.z[k] - d.z;
        q.push_back(dx * dx + dy * dy + dz * dz);
    }
    if (look.border > 0.0f && seeds.count > 1) {
        std::vector<float> sorted = q;
        std::partial_sort(sorted.begin(), sorted.begin() + 2, sorted.end());
        if (look.border > sorted[1] - sorted[0]) return {0, 0, 0, 255};
    }
    if (!look.smooth) {
        return std::bit_cast<Color8>(seeds.colour[std::min_element(q.begin(), q.end()) - q.begin()]);
    }
    float sum = 0.0f, red = 0.0f, green = 0.0f, blue = 0.0f;
    for (float& weight : q) {
        const double base = static_cast<double>(weight) * 100.0;
        const double share = 100.0 / std::pow(base, static_cast<double>(look.power));
        weight = static_cast<float>(std::min(100.0, share));
        sum += weight;
    }
    if (sum == 0.0f) return {0, 0, 0, 255};
    for (std::size_t k = 0; k < q.size(); ++k) {
        red += q[k] / sum * colours.red[k];
        green += q[k] / sum * colours.green[k];
        blue += q[k] / sum * colours.blue[k];
    }
    return {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(blue),
            255};
}

struct VoronoiTest : test::GeneratorTest {
    const Image palette = test::RandomImage(23, 11, PixelFormat::Rgb8, 5);

    VoronoiSeeds Draw(int count) const {
        VoronoiSeeds seeds;
        EXPECT_TRUE(seeds.Resize(count));
        SeedRandom();
        for (int k = 0; k < count; ++k) {
            const Color8 colour = RandomPixel(palette);
            const RandomXyz place = RandomVector(2.0f);
            seeds.Set(k, place.x, place.y, place.z, colour);
        }
        return seeds;
    }

    static void ExpectPlain(const VoronoiSeeds& seeds, const VoronoiLook& look, std::uint32_t size,
                            int step) {
        test::GeneratorPanorama t;
        PaintVoronoi({t.panorama, t.feedback, L"", PixelFormat::Rgb8, size}, seeds, look);
        const auto isWrong = [&](const Direction& d, const Color8& colour) {
            return colour != PlainColour(seeds, look, d);
        };
        EXPECT_EQ(test::CountPixels(t.panorama, isWrong, step), 0)
            << seeds.Arrays().count << " seeds, power " << (look.smooth ? look.power : 0) << ", border "
            << look.border << ", size " << size;
    }
};

TEST_F(VoronoiTest, EveryPixelIsThatOfAskingEverySeed) {
    for (const int points : {1, 2, 40}) {
        for (const std::uint32_t size : {2u, 3u, 15u, 17u, 97u, 257u}) {
            for (const float border : {-1.0f, 0.0f, 0.01f, 0.3f, 20.0f}) {
                ExpectPlain(Draw(points), {.border = border}, size, 13);
            }
        }
        for (const float power : {0.0f, 0.3f, 1.0f, 2.0f, 2.5f, 3.0f, 4.0f, 30.0f}) {
            ExpectPlain(Draw(points), {.smooth = true, .power = power, .border = 0.004f * power}, 65, 7);
        }
    }
    ExpectPlain(Draw(500), {}, 256, 17);
    ExpectPlain(Draw(500), {.border = 0.004f}, 256, 17);
}

// Equal distances, exactly equal ones, and seeds that pixels look at exactly: where ruling out is hardest.
TEST_F(VoronoiTest, TheFirstOfEqualSeedsWins) {
    VoronoiSeeds heaps = Draw(60), lattice = Draw(125), pixels = Draw(200), middle = Draw(60);
    const SeedArrays drawn = heaps.Arrays();
    for (int k = 0; k < 200; ++k) {
        const Color8 colour(static_cast<std::uint8_t>(k * 37 + 11), static_cast<std::uint8_t>(k * 101 + 5),
                            static_cast<std::uint8_t>(k), 255);
        const auto at = [k](int part) { return static_cast<float>(k / part % 5) * 0.5f - 1.0f; };
        if (k < 60) heaps.Set(k, drawn.x[k * 7 % 20], drawn.y[k * 7 % 20], drawn.z[k * 7 % 20], colour);
        if (k < 60) middle.Set(k, 0.0f, 0.0f, 0.0f, colour);
        if (k < 125) lattice.Set(k, at(1), at(5), at(25), colour);
        const Direction d = FacePixelToDirection(65, static_cast<CubeFace>(k % 6), k * 3 % 65, k % 16 * 4);
        pixels.Set(k, d.x, d.y, d.z, colour);
    }
    for (const VoronoiSeeds* seeds : {&heaps, &lattice, &pixels, &middle}) {
        for (const VoronoiLook& look :
             {VoronoiLook{}, VoronoiLook{.border = 1e-6f}, VoronoiLook{.border = 0.02f},
              VoronoiLook{.smooth = true, .power = 2.0f}, VoronoiLook{.smooth = true, .power = 100.0f}}) {
            ExpectPlain(*seeds, look, 65, 7);
        }
    }
}

}  // namespace
}  // namespace skyvault
