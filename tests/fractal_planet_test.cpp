// The fractal planet: its heights, and the panorama made of them.
#include "generators/fractal_planet.h"

#include <cmath>
#include <map>
#include <tuple>
#include <vector>

#include "generators/cube_heights.h"
#include "projection/face_rows.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

TEST(CubeHeights, FacesMeet) {
    for (const int n : {1, 2, 4, 64}) {
        CubeHeights heights;
        ASSERT_TRUE(heights.Build(static_cast<std::uint32_t>(n), 0.6f, 5));
        // The heights of all points on the sides of faces, by where on the cube they are. Where a face lies
        // is asked of FaceRowDirections, which every other part of the program sees the faces by.
        std::map<std::tuple<long, long, long>, float> known;
        for (int i = 0; i < kFaceCount * 4 * (n + 1); ++i) {
            const auto face = static_cast<CubeFace>(i % kFaceCount);
            const int side = i / kFaceCount % 4, k = i / kFaceCount / 4, at = side % 2 * n;
            const int column = side >= 2 ? at : k, row = side >= 2 ? k : at;
            const auto scaled = [n](int j) { return 2 * static_cast<float>(j) / static_cast<float>(n) - 1; };
            const float across = scaled(column);
            float x, y, z;
            FaceRowDirections(face, &across, scaled(row), 1, &x, &y, &z);
            const float scale = static_cast<float>(n) / std::max({std::fabs(x), std::fabs(y), std::fabs(z)});
            const std::tuple place{std::lround(x * scale), std::lround(y * scale), std::lround(z * scale)};
            const float height = heights.Row(face, static_cast<std::uint32_t>(row))[column];
            EXPECT_EQ(known.emplace(place, height).first->second, height) << n << ": face " << i % kFaceCount;
        }
        EXPECT_EQ(known.size(), static_cast<std::size_t>(12 * (n - 1) + 8));
    }
}

/// The height in a direction, between the four points around it.
double HeightAt(const CubeHeights& heights, const Direction& d) {
    const double n = heights.Cells();
    const double size = static_cast<double>(std::max({std::fabs(d.x), std::fabs(d.y), std::fabs(d.z)}));
    const auto across = [&](float v) { return (static_cast<double>(v) / size + 1) / 2 * n; };
    const double x = across(d.x), y = n - across(d.y), z = across(d.z);
    const bool upright = std::fabs(d.y) < std::max(std::fabs(d.x), std::fabs(d.z));
    CubeFace face = d.y > 0 ? CubeFace::Top : CubeFace::Bottom;
    double column = x, row = face == CubeFace::Top ? z : n - z;
    if (upright) {
        const bool sideways = std::fabs(d.x) > std::fabs(d.z);
        face = sideways  ? (d.x > 0 ? CubeFace::Right : CubeFace::Left)
               : d.z > 0 ? CubeFace::Front
                         : CubeFace::Back;
        column = face == CubeFace::Front   ? x
                 : face == CubeFace::Right ? n - z
                 : face == CubeFace::Back  ? n - x
                                           : z;
        row = y;
    }
    const auto c = static_cast<std::uint32_t>(std::clamp(column, 0.0, n - 1)),
               r = static_cast<std::uint32_t>(std::clamp(row, 0.0, n - 1));
    const double u = column - c, v = row - r;
    const float* const above = heights.Row(face, r);
    const float* const below = heights.Row(face, r + 1);
    return (static_cast<double>(above[c]) * (1 - u) + static_cast<double>(above[c + 1]) * u) * (1 - v) +
           (static_cast<double>(below[c]) * (1 - u) + static_cast<double>(below[c + 1]) * u) * v;
}

TEST(CubeHeights, SlopesDoNotBendWhereTheFacesMeet) {
    // How much a slope changes within 3°, walking slantwise over an edge of the cube and over the middles of
    // its faces.
    const double step = 0.05;
    double bends[2] = {};
    for (std::uint32_t seed = 1; seed <= 8; ++seed) {
        CubeHeights heights;
        ASSERT_TRUE(heights.Build(256, 0.0f, seed));
        for (int i = 0; i < 64; ++i) {
            const double along = (i / 8 - 3.5) / 5;
            for (const int inside : {0, 1}) {
                // A point on the edge of front and right, or on the front; a way up and to the right.
                const double p[3] = {inside ? (i % 8 - 3.5) / 12 : 1.0, along, 1.0},
                             t[3] = {1, 1, inside - 1.0};
                const double length = std::hypot(p[0], p[1], p[2]), way = std::hypot(t[0], t[1], t[2]);
                const auto at = [&](double angle) {
                    float d[3];
                    for (int k = 0; k < 3; ++k) d[k] = static_cast<float>(p[k] / length + angle * t[k] / way);
                    return HeightAt(heights, Direction{d[0], d[1], d[2]});
                };
                bends[inside] += std::fabs(at(step) + at(-step) - 2 * at(0));
            }
        }
    }
    EXPECT_LT(bends[0], 1.5 * bends[1]);
}

TEST(CubeHeights, RoughnessMakesRougherLandAndMoreCellsTheSame) {
    // Mean step from a height to the next, in standard deviations.
    double before = 0;
    for (const float roughness : {0.0f, 0.25f, 0.5f, 1.0f}) {
        CubeHeights heights, coarse;
        ASSERT_TRUE(heights.Build(256, roughness, 3));
        ASSERT_TRUE(coarse.Build(32, roughness, 3));
        double steps = 0, off = 0;
        for (int f = 0; f < kFaceCount; ++f) {
            for (std::uint32_t row = 0; row <= 256; ++row) {
                const float* const at = heights.Row(static_cast<CubeFace>(f), row);
                for (int i = 0; i < 256; ++i) steps += static_cast<double>(std::fabs(at[i + 1] - at[i]));
                if (row % 8 != 0) continue;
                const float* const same = coarse.Row(static_cast<CubeFace>(f), row / 8);
                for (int i = 0; i <= 32; ++i) off += static_cast<double>(std::fabs(same[i] - at[8 * i]));
            }
        }
        const double deviation = static_cast<double>(heights.Measure().deviation);
        steps /= 6 * 257 * 256 * deviation;
        EXPECT_GT(steps, 1.25 * before) << roughness;
        // A walk around the equator is 1024 steps: without roughness a few slopes of a few deviations.
        EXPECT_TRUE(roughness > 0.0f || steps < 12.0 / 1024);
        before = steps;
        EXPECT_LT(off / (6 * 33 * 33), 0.2 * deviation) << roughness;
    }
}

using FractalPlanet = test::GeneratorTest;

TEST_F(FractalPlanet, ContrastReachesFurtherIntoThePalette) {
    const auto red = [](int x, int) { return Color8(static_cast<std::uint8_t>(x), 0, 0, 255); };
    const std::wstring palette = Save(test::Drawn(256, 1, PixelFormat::Rgb8, red));
    const double all = 6 * 256 * 256;
    // What is no number counts as 0.
    for (const auto& [contrast, least, most] :
         {std::tuple{NAN, 0.0, 0.005}, {0.5f, 0.01, 0.15}, {1.0f, 0.15, 0.45}}) {
        test::GeneratorPanorama t;
        t.settings.fractalRoughness = t.settings.fractalContrast = contrast;
        ASSERT_EQ(t.Generate(GenerateFractalPlanet, palette), Reason::Done);
        const auto isLow = [](auto&, const Color8& colour) { return colour.red < 128; };
        const auto isEnd = [](auto&, const Color8& colour) { return colour.red == 0 || colour.red == 255; };
        const double ends = test::CountPixels(t.panorama, isEnd) / all;
        EXPECT_TRUE(ends >= least && ends <= most) << ends << " at " << contrast;
        EXPECT_NEAR(test::CountPixels(t.panorama, isLow) / all, 0.5, 0.15) << "the middle stays where it is";
    }
}

}  // namespace
}  // namespace skyvault
