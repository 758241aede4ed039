#include "projection/cube_face.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "projection/fast_math.h"
#include "tests/data_table.h"
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

TEST(CubeFace, ADirectionMeetsTheFaceItLooksAt) {
    for (const auto& [where, x, y, z, face, column, row] :
         TableOf<float, float, float, int, int, int>("face_pixels")) {
        const FacePixel p = DirectionToFacePixel({x, y, z}, 5);
        EXPECT_TRUE(p.found && static_cast<int>(p.face) == face && p.column == column && p.row == row)
            << where << " gives " << static_cast<int>(p.face) << ": " << p.column << ", " << p.row;
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
    double twoUnits = 0, nearest = 0;  // what is allowed to be off, and what is to be the nearest float
    const auto see = [](double& worst, float value, double exact) {
        worst = std::max(worst, UnitsOff(value, exact));
    };
    for (int i = 0; i < 1'000'000; ++i) {
        const float y = component(random), x = component(random) * (i % 3 ? 1.0f : 1e-3f);
        see(twoUnits, Atan2(y, x), std::atan2(static_cast<double>(y), x));
        const float a = angle(random);
        see(nearest, Sin(a), std::sin(static_cast<double>(a)));
        see(nearest, Cos(a), std::cos(static_cast<double>(a)));
        // Every other one close to a multiple of π/2, where little is left of the angle.
        const float w = i % 2 ? static_cast<float>((i / 2 % 64) * 1.5707963267948966) + 1e-4f * y : 3.3f * a;
        see(twoUnits, SinCos(w).sine, std::sin(static_cast<double>(w)));
        see(twoUnits, SinCos(w).cosine, std::cos(static_cast<double>(w)));
        const float b = base(random), e = exponent(random);
        see(nearest, Pow(b, e), std::pow(static_cast<double>(b), e));
    }
    EXPECT_LE(twoUnits, 2.0);
    EXPECT_LE(nearest, 0.51);
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
