// The fractal planet: its heights, and the panorama made of them.
#include "generators/fractal_planet.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <tuple>

#include "generators/cube_heights.h"
#include "projection/face_rows.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

using test::GeneratorPanorama;

struct FractalPlanet : test::GeneratorTest {};

/// A point on a side of a face, and the step that leads away from that side.
struct SidePoint {
    CubeFace face;
    int column, row, inwardColumn, inwardRow;
};
using Place = std::tuple<int, int, int>;

/// All points on the sides of n cells, `offset` into each cell, by where on the cube they are. Where a face
/// lies is asked of FaceRowDirections, which every other part of the program sees the faces by.
std::map<Place, std::vector<SidePoint>> PointsByPlace(int n, double offset) {
    std::map<Place, std::vector<SidePoint>> points;
    const int perSide = offset == 0.0 ? n + 1 : n;
    const int far = offset == 0.0 ? n : n - 1;
    for (int f = 0; f < kFaceCount; ++f) {
        for (int side = 0; side < 4; ++side) {
            for (int k = 0; k < perSide; ++k) {
                const double along = 2 * (k + offset) / n - 1, edge = side % 2 == 0 ? -1 : 1;
                const bool vertical = side >= 2;
                const float across = static_cast<float>(vertical ? edge : along);
                float x, y, z;
                FaceRowDirections(static_cast<CubeFace>(f), &across,
                                  static_cast<float>(vertical ? along : edge), 1, &x, &y, &z);
                const float scale =
                    static_cast<float>(n) / std::max({std::fabs(x), std::fabs(y), std::fabs(z)});
                const Place place(std::lround(x * scale), std::lround(y * scale), std::lround(z * scale));
                const int at = side % 2 == 0 ? 0 : far, in = side % 2 == 0 ? 1 : -1;
                points[place].push_back(vertical ? SidePoint{static_cast<CubeFace>(f), at, k, in, 0}
                                                 : SidePoint{static_cast<CubeFace>(f), k, at, 0, in});
            }
        }
    }
    return points;
}

float HeightAt(const CubeHeights& heights, const SidePoint& p, int inward = 0) {
    return heights.Row(
        p.face, static_cast<std::uint32_t>(p.row + inward * p.inwardRow))[p.column + inward * p.inwardColumn];
}

TEST(CubeHeights, FacesHaveTheSameHeightsAlongAllEdgesAndCorners) {
    for (const int n : {1, 2, 4, 64, 512}) {
        CubeHeights heights;
        ASSERT_TRUE(heights.Build(static_cast<std::uint32_t>(n), 1.0f, 77));
        int pairs = 0, corners = 0;
        for (const auto& [place, points] : PointsByPlace(n, 0.0)) {
            // A corner is on two sides of each of its three faces.
            ASSERT_TRUE(points.size() == 2 || points.size() == 6) << n;
            ++(points.size() == 2 ? pairs : corners);
            for (const SidePoint& p : points) {
                ASSERT_EQ(HeightAt(heights, p), HeightAt(heights, points[0]))
                    << n << ": faces " << int(p.face) << " and " << int(points[0].face);
            }
        }
        EXPECT_EQ(pairs, 12 * (n - 1));
        EXPECT_EQ(corners, 8);
    }
}

/// Mean and largest bend of the land: how far a point is off the mean of the two beside it.
struct Bends {
    double mean = 0, largest = 0;
};

TEST(CubeHeights, TheLandIsNoRougherAcrossTheCubesEdges) {
    constexpr int n = 256;
    const auto points = PointsByPlace(n, 0.0);
    for (const float roughness : {0.0f, 0.6f}) {
        CubeHeights heights;
        ASSERT_TRUE(heights.Build(n, roughness, 5));
        Bends across, inside;
        const auto add = [](Bends& bends, float before, float at, float after) {
            const double bend = std::fabs(before - 2.0 * double(at) + double(after));
            bends.mean += bend;
            bends.largest = std::max(bends.largest, bend);
        };
        int count = 0;
        for (const auto& [place, p] : points) {
            // Around a corner three squares meet instead of four: there the grid itself bends.
            const auto [x, y, z] = place;
            if (std::min({std::abs(x), std::abs(y), std::abs(z)}) > n * 3 / 4) continue;
            ++count;
            add(across, HeightAt(heights, p[0], 1), HeightAt(heights, p[0]), HeightAt(heights, p[1], 1));
            // In the middle of the face, where the grid of the first levels has a line too.
            add(inside, HeightAt(heights, p[0], n / 2 - 1), HeightAt(heights, p[0], n / 2),
                HeightAt(heights, p[0], n / 2 + 1));
        }
        for (const auto& [place, p] : points) {
            if (p.size() != 6) continue;
            double around = 0;
            for (const SidePoint& side : p) around += double(HeightAt(heights, side, 1)) / 6;
            EXPECT_LT(std::fabs(around - double(HeightAt(heights, p[0]))), 4 * inside.mean / count)
                << "a corner sticks out";
        }
        ASSERT_EQ(count, 12 * (n * 3 / 4 + 1));
        EXPECT_LT(across.mean, 1.3 * inside.mean) << roughness;
        EXPECT_LT(across.largest, 1.6 * inside.largest) << roughness;
        EXPECT_GT(across.mean, 0.6 * inside.mean) << roughness;
    }
}

/// Mean step from a height to the next, in standard deviations.
double MeanStep(const CubeHeights& heights) {
    double sum = 0;
    const std::uint32_t n = heights.Cells();
    for (int f = 0; f < kFaceCount; ++f) {
        for (std::uint32_t row = 0; row <= n; ++row) {
            const float* const at = heights.Row(static_cast<CubeFace>(f), row);
            for (std::uint32_t i = 0; i < n; ++i) sum += std::fabs(double(at[i + 1]) - double(at[i]));
        }
    }
    return sum / kFaceCount / n / (n + 1) / double(heights.Measure().deviation);
}

TEST(CubeHeights, RoughnessMakesRougherLand) {
    CubeHeights heights;
    std::vector<double> steps;
    for (const float roughness : {0.0f, 0.25f, 0.5f, 1.0f}) {
        ASSERT_TRUE(heights.Build(256, roughness, 3));
        steps.push_back(MeanStep(heights));
    }
    // A walk around the equator is 1024 steps: without roughness a few slopes of a few deviations.
    EXPECT_LT(steps[0], 12.0 / 1024);
    for (std::size_t i = 1; i < steps.size(); ++i) EXPECT_GT(steps[i], 1.25 * steps[i - 1]) << i;
    EXPECT_GT(steps.back(), 4 * steps[0]);
}

TEST(CubeHeights, MoreCellsShowTheSameLand) {
    CubeHeights coarse, fine;
    ASSERT_TRUE(coarse.Build(32, 0.6f, 9));
    ASSERT_TRUE(fine.Build(512, 0.6f, 9));
    double off = 0;
    for (int f = 0; f < kFaceCount; ++f) {
        for (std::uint32_t row = 0; row <= 32; ++row) {
            for (std::uint32_t column = 0; column <= 32; ++column) {
                off += std::fabs(coarse.Row(static_cast<CubeFace>(f), row)[column] -
                                 fine.Row(static_cast<CubeFace>(f), row * 16)[column * 16]);
            }
        }
    }
    EXPECT_LT(off / (6 * 33 * 33), 0.1 * double(fine.Measure().deviation));
}

/// A picture whose diagonal goes from black to white.
std::wstring GreyPalette(const test::TemporaryFolder& folder) {
    Image picture(256, 256, PixelFormat::Rgb8);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            // Away from the diagonal colours that must not be seen.
            picture.SetPixel(x, y, Color8(std::uint8_t(x), std::uint8_t(x), std::uint8_t(y), 255));
        }
    }
    const std::wstring path = folder.Path(L"grey.png");
    EXPECT_TRUE(SavePicture(picture, path));
    return path;
}

TEST_F(FractalPlanet, FacesMeetWithoutASeam) {
    const std::wstring palette = GreyPalette(folder);
    for (const bool antialiasing : {false, true}) {
        GeneratorPanorama t;
        t.settings.antialiasing = antialiasing;
        ASSERT_TRUE(GenerateFractalPlanet(t.panorama, palette));
        ASSERT_EQ(t.panorama.faceSize, 256u);
        const auto grey = [&](const SidePoint& p, int inward) {
            const Color8 c = t.panorama.faces[static_cast<std::size_t>(p.face)].GetPixel8(
                p.column + inward * p.inwardColumn, p.row + inward * p.inwardRow);
            EXPECT_TRUE(c.red == c.green && c.green == c.blue && c.alpha == 255);
            return int(c.red);
        };
        // By pairs of faces: one seam among twelve must not be lost in the mean.
        std::map<std::pair<CubeFace, CubeFace>, std::array<double, 2>> edges;
        for (const auto& [place, p] : PointsByPlace(256, 0.5)) {
            ASSERT_EQ(p.size(), 2u);
            auto& [across, inside] = edges[{p[0].face, p[1].face}];
            across += std::abs(grey(p[0], 0) - grey(p[1], 0));
            inside +=
                0.5 * std::abs(grey(p[0], 0) - grey(p[0], 1)) + 0.5 * std::abs(grey(p[1], 0) - grey(p[1], 1));
        }
        EXPECT_EQ(edges.size(), 12u);
        for (const auto& [faces, steps] : edges) {
            EXPECT_LT(steps[0], 1.5 * steps[1] + 256 * 0.2)
                << "faces " << int(faces.first) << " and " << int(faces.second);
        }
    }
}

TEST_F(FractalPlanet, ContrastReachesFurtherIntoThePalette) {
    const std::wstring palette = GreyPalette(folder);
    struct Row {
        float contrast;
        double leastAtEnds, mostAtEnds;  // share of pixels that are black or white
    };
    for (const Row& row : {Row{0.0f, 0.0, 0.005}, Row{0.5f, 0.01, 0.15}, Row{1.0f, 0.15, 0.45}}) {
        GeneratorPanorama t;
        t.settings.fractalContrast = row.contrast;
        ASSERT_TRUE(GenerateFractalPlanet(t.panorama, palette));
        int black = 0, white = 0, dark = 0;
        for (const Image& face : t.panorama.faces) {
            for (std::size_t i = 0; i < face.ByteCount(); i += 3) {
                const int grey = std::to_integer<int>(face.pixels[i]);
                black += grey == 0;
                white += grey == 255;
                dark += grey < 128;
            }
        }
        constexpr double kPixels = 6.0 * 256 * 256;
        EXPECT_GE((black + white) / kPixels, row.leastAtEnds) << row.contrast;
        EXPECT_LE((black + white) / kPixels, row.mostAtEnds) << row.contrast;
        EXPECT_NEAR(dark / kPixels, 0.5, 0.15) << "the middle stays where it is, contrast " << row.contrast;
    }
}

TEST_F(FractalPlanet, SettingsAreKeptWithin0And1) {
    const std::wstring palette = GreyPalette(folder);
    const auto checksum = [&](float roughness, float contrast) {
        GeneratorPanorama t;
        t.settings.fractalRoughness = roughness;
        t.settings.fractalContrast = contrast;
        EXPECT_TRUE(GenerateFractalPlanet(t.panorama, palette));
        return test::Checksum(t.panorama);
    };
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(checksum(-3.0f, -1.0f), checksum(0.0f, 0.0f));
    EXPECT_EQ(checksum(kNan, kNan), checksum(0.0f, 0.0f));
    EXPECT_EQ(checksum(7.0f, 1.5f), checksum(1.0f, 1.0f));
}

}  // namespace
}  // namespace skyvault
