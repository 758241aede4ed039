#include "projection/cube_face.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "projection/fast_math.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

const float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(CubeFace, OutermostPixelsSitOneStepInsideTheEdge) {
    const Direction left = FacePixelToDirection(256, CubeFace::Front, 0, 0);
    const Direction right = FacePixelToDirection(256, CubeFace::Front, 255, 255);
    EXPECT_FLOAT_EQ(left.x / left.z, -254.0f / 255.0f);
    EXPECT_FLOAT_EQ(left.y / left.z, 254.0f / 255.0f);
    EXPECT_FLOAT_EQ(right.x / right.z, 254.0f / 255.0f);
    EXPECT_EQ(FacePixelToDirection(0, CubeFace::Top, 0, 0).y, 0.0f);
}

/// Along a shared edge two faces must look (nearly) the same way; a turned or mirrored face would not.
TEST(CubeFace, NeighboursMeetAlongAllTwelveEdges) {
    constexpr int n = 257, last = n - 1;
    enum Edge { kLeft, kRight, kTop, kBottom };
    const auto pixel = [](CubeFace face, Edge edge, int t) {
        const int column = edge == kLeft ? 0 : edge == kRight ? last : t;
        return FacePixelToDirection(n, face, column, edge == kTop ? 0 : edge == kBottom ? last : t);
    };
    using enum CubeFace;
    const struct {
        CubeFace a;
        Edge edgeOfA;
        CubeFace b;
        Edge edgeOfB;
        bool reversed;
    } seams[] = {{Front, kRight, Right, kLeft, false},    {Right, kRight, Back, kLeft, false},
                 {Back, kRight, Left, kLeft, false},      {Left, kRight, Front, kLeft, false},
                 {Top, kBottom, Front, kTop, false},      {Top, kLeft, Left, kTop, false},
                 {Top, kRight, Right, kTop, true},        {Top, kTop, Back, kTop, true},
                 {Bottom, kTop, Front, kBottom, false},   {Bottom, kLeft, Left, kBottom, true},
                 {Bottom, kRight, Right, kBottom, false}, {Bottom, kBottom, Back, kBottom, true}};
    for (const auto& seam : seams) {
        for (int t = 0; t < n; ++t) {
            const Direction a = pixel(seam.a, seam.edgeOfA, t);
            const Direction b = pixel(seam.b, seam.edgeOfB, seam.reversed ? last - t : t);
            ASSERT_GT(a.x * b.x + a.y * b.y + a.z * b.z, 0.99995f)
                << "faces " << static_cast<int>(seam.a) << " and " << static_cast<int>(seam.b);
        }
    }
}

TEST(CubeFace, ADirectionMeetsTheFaceItLooksAt) {
    using enum CubeFace;
    // Faces of 5 × 5: the middle is (2, 2); ties go to z before x before y.
    const struct {
        Direction d;
        CubeFace face;
        int column, row;
    } cases[] = {
        {{0, 0, 1}, Front, 2, 2},     {{0, 0, -3}, Back, 2, 2},        {{2, 0, 0}, Right, 2, 2},
        {{-1, 0, 0}, Left, 2, 2},     {{0, 1, 0}, Top, 2, 2},          {{0, -1, 0}, Bottom, 2, 2},
        {{1, 0, 1}, Front, 4, 2},     {{1, 1, 0}, Right, 2, 0},        {{1, 1, 1}, Front, 4, 0},
        {{-1, 1, 1}, Front, 0, 0},    {{1, 0.6f, -1}, Back, 0, 0},     {{0.6f, -1, 0.6f}, Bottom, 3, 0},
        {{0.6f, 1, 0.6f}, Top, 3, 3}, {{1, -0.6f, 0.6f}, Right, 0, 3}, {{-1, -0.6f, 0.6f}, Left, 3, 3}};
    for (const auto& c : cases) {
        const FacePixel p = DirectionToFacePixel(c.d, 5);
        EXPECT_TRUE(p.found && p.face == c.face && p.column == c.column && p.row == c.row)
            << c.d.x << " " << c.d.y << " " << c.d.z << " gives " << static_cast<int>(p.face) << ": "
            << p.column << ", " << p.row;
    }
    EXPECT_EQ(DirectionToFacePixel({1.0000001f, 0, 1}, 256).column, 0) << "Right, next to Front";
    EXPECT_EQ(DirectionToFacePixel({1, 0, 1}, 256).column, 255);
}

TEST(CubeFace, WhatIsNoDirectionOrNoFaceReadsOpaqueWhite) {
    CubeFaces faces;
    for (Image& face : faces) face = test::RandomImage(4, 4, PixelFormat::Rgb16);
    faces[2].Clear();
    for (const Direction& d : {Direction{0, 0, 0}, {kNan, 0, 1}, {0, kNan, 1}, {1, 0, kNan}, {0, 0, -1}}) {
        const PixelValue value = SampleCubeFaces(faces, d);
        EXPECT_TRUE(value.format == PixelFormat::Rgba8 && value.color8 == kOpaqueWhite);
    }
    EXPECT_EQ(SampleCubeFaces(faces, {0, 0, 1}).format, PixelFormat::Rgb16);
}

TEST(Directions, SphericalCoordinatesOfTheAxesAndUnitVectors) {
    const float half = kPi / 2;
    const struct {
        Direction d;
        float longitude, latitude;
    } cases[] = {{{0, 0, 1}, 0, 0},      {{1, 0, 0}, half, 0},      {{-1, 0, 0}, -half, 0},
                 {{0, 0, -1}, kPi, 0},   {{-0.0f, 0, -1}, -kPi, 0}, {{0, 1, 0}, 0, half},
                 {{0, -1, 0}, 0, -half}, {{0, 0, 0}, 0, -half}};
    for (const auto& c : cases) {
        const Spherical s = ToSpherical(c.d);
        EXPECT_TRUE(s.longitude == c.longitude && s.latitude == c.latitude)
            << c.d.x << " " << c.d.y << " " << c.d.z << " gives " << s.longitude << ", " << s.latitude;
        Direction n = c.d;
        Normalize(n);
        EXPECT_TRUE(n.x == c.d.x && n.y == c.d.y && n.z == c.d.z) << "unit and zero vectors stay";
    }
    Direction d{3, 0, 4};
    Normalize(d);
    EXPECT_FLOAT_EQ(d.x, 0.6f);
    EXPECT_FLOAT_EQ(d.z, 0.8f);
}

/// Distance of a float from the exact value, in units of the float's last place.
double UnitsOff(float value, double exact) {
    const float nearest = static_cast<float>(exact);
    const double unit =
        std::nextafter(std::fabs(nearest), INFINITY) - static_cast<double>(std::fabs(nearest));
    return std::fabs(static_cast<double>(value) - exact) / unit;
}

TEST(FastMath, AtMostTwoUnitsOffEverywhere) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> component(-1.0f, 1.0f), angle(-30.0f, 30.0f), base(0.0f, 1.5f),
        exponent(0.01f, 8.0f);
    double atan2Off = 0, sinCosOff = 0, sinOff = 0, cosOff = 0, powOff = 0;
    for (int i = 0; i < 1'000'000; ++i) {
        const float y = component(random), x = component(random) * (i % 3 ? 1.0f : 1e-3f);
        atan2Off = std::max(atan2Off, UnitsOff(Atan2(y, x), std::atan2(static_cast<double>(y), x)));
        const float a = angle(random);
        sinOff = std::max(sinOff, UnitsOff(Sin(a), std::sin(static_cast<double>(a))));
        cosOff = std::max(cosOff, UnitsOff(Cos(a), std::cos(static_cast<double>(a))));
        // Every other one close to a multiple of π/2, where little is left of the angle.
        const float w = i % 2 ? static_cast<float>((i / 2 % 64) * 1.5707963267948966) + 1e-4f * y : 3.3f * a;
        const SineCosineSingle both = SinCos(w);
        sinCosOff = std::max({sinCosOff, UnitsOff(both.sine, std::sin(static_cast<double>(w))),
                              UnitsOff(both.cosine, std::cos(static_cast<double>(w)))});
        const float b = base(random), e = exponent(random);
        powOff = std::max(powOff, UnitsOff(Pow(b, e), std::pow(static_cast<double>(b), e)));
    }
    EXPECT_LE(atan2Off, 2.0);
    EXPECT_LE(sinCosOff, 2.0);
    EXPECT_LE(sinOff, 0.51);
    EXPECT_LE(cosOff, 0.51);
    EXPECT_LE(powOff, 0.51);
}

TEST(FastMath, ExactWhereDirectionsMeetAnAxis) {
    const float rows[][3] = {{0, 0, 0},           {0, 1, 0},
                             {1, 0, 1.5707964f},  {-1, 0, -1.5707964f},
                             {0, -1, 3.1415927f}, {-0.0f, -1, -3.1415927f},
                             {1, 1, 0.78539819f}, {1e-45f, 1e-45f, 0.78539819f}};
    for (const auto& [y, x, angle] : rows) EXPECT_EQ(Atan2(y, x), angle) << y << ", " << x;
    EXPECT_TRUE(Sin(0.0f) == 0.0f && Cos(0.0f) == 1.0f);
    EXPECT_TRUE(SinCos(0.0f).sine == 0.0f && SinCos(0.0f).cosine == 1.0f);
    EXPECT_EQ(SinCos(1.5707964f).cosine, -4.3711388e-8f);
    EXPECT_TRUE(Pow(1.0f, 1.37f) == 1.0f && Pow(0.0f, 0.5f) == 0.0f && Pow(0.25f, 0.5f) == 0.5f);
}

TEST(FastMath, NotANumberStaysNotANumberAndHalvesRoundAwayFromZero) {
    for (const float value : {Atan2(kNan, 1.0f), Atan2(1.0f, kNan), Sin(kNan), SinCos(kNan).sine,
                              Pow(-1e-7f, 1.01f), Pow(kNan, 1.01f)})
        EXPECT_TRUE(std::isnan(value)) << value;
    for (const auto& [value, expected] :
         {std::pair{0.5f, 1}, {1.5f, 2}, {2.5f, 3}, {0.49999997f, 0}, {8388607.5f, 8388608}})
        EXPECT_EQ(RoundPositive(value), expected) << value;
}

}  // namespace
}  // namespace skyvault
