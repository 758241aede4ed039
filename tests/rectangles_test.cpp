#include "generators/rectangles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/generator_checks.h"

namespace skyvault {
namespace {

using test::GeneratorPanorama;
using test::kAllPixels;
using test::kFaceEdge;

struct RectanglesTest : test::GeneratorTest {};

struct Vector {
    double x = 0, y = 0, z = 0;
    double operator*(const Vector& v) const { return x * v.x + y * v.y + z * v.z; }
    Vector operator-(const Vector& v) const { return {x - v.x, y - v.y, z - v.z}; }
    Vector operator*(double f) const { return {x * f, y * f, z * f}; }
};

/// A rectangle at distance 20 in double precision: a corner and the two sides that meet there.
struct PlainRectangle {
    Vector corner, up, across;
    Color8 colour;
};

Vector Turn(const Vector& v, double a, double b, double c) {
    const double sa = std::sin(a), ca = std::cos(a), sb = std::sin(b), cb = std::cos(b), sc = std::sin(c),
                 cc = std::cos(c);
    return {v.x * (sb * sa * sc + cc * ca) + v.y * (sb * sa * cc - sc * ca) + v.z * cb * sa,
            v.x * sc * cb + v.y * cc * cb - v.z * sb,
            v.x * (sb * ca * sc - cc * sa) + v.y * (sb * ca * cc + sc * sa) + v.z * cb * ca};
}

std::vector<PlainRectangle> PlainRectangles(int count, float size, const Image& palette) {
    SeedRandom();
    std::vector<PlainRectangle> rectangles(static_cast<std::size_t>(count));
    for (PlainRectangle& r : rectangles) {
        const double a = 0.5f * size + static_cast<double>(RandomInt(10000)) * size * 0.0001;
        const double b = 0.5f * size + static_cast<double>(RandomInt(10000)) * size * 0.0001;
        double angles[3];
        for (int i = 2; i >= 0; --i) angles[i] = RandomInt(10000) * 2 * kPiWide * 0.0001 - kPiWide;
        const auto turned = [&](double x, double y) {
            return Turn({x, y, 20}, angles[0], angles[1], angles[2]);
        };
        r.corner = turned(-a, -b);
        r.up = turned(-a, b) - r.corner;
        r.across = turned(a, -b) - r.corner;
    }
    for (PlainRectangle& r : rectangles) {
        const int x = RandomInt(static_cast<std::int32_t>(palette.width));
        const int y = RandomInt(static_cast<std::int32_t>(palette.height));
        r.colour = palette.GetPixel8(x, y);
    }
    return rectangles;
}

enum class Hit { No, Yes, Unsure };

/// The ray from the centre meets the rectangle's plane, forward of the centre, between its sides. Unsure too
/// close to an edge for single precision.
Hit Meets(const PlainRectangle& r, const Vector& d) {
    const Vector normal = {r.up.y * r.across.z - r.up.z * r.across.y,
                           r.up.z * r.across.x - r.up.x * r.across.z,
                           r.up.x * r.across.y - r.up.y * r.across.x};
    const double slope = normal * d;
    if (slope == 0) return Hit::No;
    const Vector point = d * ((normal * r.corner) / slope);
    if (point.x * d.x < 0 || point.y * d.y < 0 || point.z * d.z < 0) return Hit::No;
    const Vector offset = point - r.corner;
    const double u = (offset * r.across) / (r.across * r.across), v = (offset * r.up) / (r.up * r.up);
    const double inside = std::min({u, 1 - u, v, 1 - v});
    return std::fabs(inside) < 1e-5 ? Hit::Unsure : inside > 0 ? Hit::Yes : Hit::No;
}

TEST_F(RectanglesTest, TheFirstRectangleOnTheRayGivesTheColour) {
    const std::wstring path = Palette(37, 23, PixelFormat::Rgba8);
    const Image palette = LoadPicture(path);
    ASSERT_TRUE(palette.IsValid());
    struct Row {
        std::int32_t setting, rectangles;
        float power, size;
    };
    for (const Row& row : {Row{20, 20, 7.0f, 7.0f}, Row{0, 1, 100.0f, 50.0f}, Row{60, 60, -3.0f, 5.0f},
                           Row{25, 25, 30.0f, 30.0f}}) {
        GeneratorPanorama t;
        t.settings.transparency = true;
        t.settings.backgroundColour = Color8(3, 2, 1, 255);
        t.settings.blobsForceFields = row.setting;
        t.settings.blobsPower = row.power;
        ASSERT_TRUE(GenerateRectangles(t.panorama, path));
        const std::vector<PlainRectangle> rectangles = PlainRectangles(row.rectangles, row.size, palette);
        int wrong = 0, unsure = 0;
        test::ForEveryFacePixel(kFaceEdge, [&](int face, int x, int y) {
            const Direction d = FacePixelToDirection(kFaceEdge, static_cast<CubeFace>(face), x, y);
            Color8 expected(3, 2, 1, 0);
            for (const PlainRectangle& r : rectangles) {
                const Hit hit = Meets(r, {d.x, d.y, d.z});
                if (hit == Hit::No) continue;
                if (hit == Hit::Unsure) {
                    ++unsure;
                    return;
                }
                expected = r.colour;
                break;
            }
            wrong += t.panorama.faces[static_cast<std::size_t>(face)].GetPixel8(x, y) == expected ? 0 : 1;
        });
        EXPECT_EQ(wrong, 0) << row.setting << " rectangles, size " << row.power;
        EXPECT_LT(unsure, kAllPixels / 1000);
    }
}

}  // namespace
}  // namespace skyvault
