#include "projection/cube_face.h"

#include <gtest/gtest.h>

#include <cmath>

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
        switch (edge) {
            case kLeft:
                return FacePixelToDirection(n, face, 0, t);
            case kRight:
                return FacePixelToDirection(n, face, last, t);
            case kTop:
                return FacePixelToDirection(n, face, t, 0);
            case kBottom:
                return FacePixelToDirection(n, face, t, last);
        }
        return Direction{};
    };
    struct Seam {
        CubeFace a;
        Edge edgeOfA;
        CubeFace b;
        Edge edgeOfB;
        bool reversed;
    };
    using enum CubeFace;
    const Seam seams[] = {{Front, kRight, Right, kLeft, false},    {Right, kRight, Back, kLeft, false},
                          {Back, kRight, Left, kLeft, false},      {Left, kRight, Front, kLeft, false},
                          {Top, kBottom, Front, kTop, false},      {Top, kLeft, Left, kTop, false},
                          {Top, kRight, Right, kTop, true},        {Top, kTop, Back, kTop, true},
                          {Bottom, kTop, Front, kBottom, false},   {Bottom, kLeft, Left, kBottom, true},
                          {Bottom, kRight, Right, kBottom, false}, {Bottom, kBottom, Back, kBottom, true}};
    for (const Seam& seam : seams) {
        for (int t = 0; t < n; ++t) {
            const Direction a = pixel(seam.a, seam.edgeOfA, t);
            const Direction b = pixel(seam.b, seam.edgeOfB, seam.reversed ? last - t : t);
            const float cosine = a.x * b.x + a.y * b.y + a.z * b.z;
            ASSERT_GT(cosine, 0.99995f)
                << "faces " << static_cast<int>(seam.a) << " and " << static_cast<int>(seam.b);
        }
    }
}

TEST(CubeFace, ADirectionMeetsTheFaceItLooksAt) {
    struct Case {
        Direction d;
        CubeFace face;
        int column, row;
    };
    using enum CubeFace;
    // Faces of 5 × 5: the middle is (2, 2); ties go to z before x before y.
    const Case cases[] = {
        {{0, 0, 1}, Front, 2, 2},     {{0, 0, -3}, Back, 2, 2},        {{2, 0, 0}, Right, 2, 2},
        {{-1, 0, 0}, Left, 2, 2},     {{0, 1, 0}, Top, 2, 2},          {{0, -1, 0}, Bottom, 2, 2},
        {{1, 0, 1}, Front, 4, 2},     {{1, 1, 0}, Right, 2, 0},        {{1, 1, 1}, Front, 4, 0},
        {{-1, 1, 1}, Front, 0, 0},    {{1, 0.6f, -1}, Back, 0, 0},     {{0.6f, -1, 0.6f}, Bottom, 3, 0},
        {{0.6f, 1, 0.6f}, Top, 3, 3}, {{1, -0.6f, 0.6f}, Right, 0, 3}, {{-1, -0.6f, 0.6f}, Left, 3, 3}};
    for (const Case& c : cases) {
        const FacePixel p = DirectionToFacePixel(c.d, 5);
        EXPECT_TRUE(p.found);
        EXPECT_EQ(p.face, c.face) << c.d.x << " " << c.d.y << " " << c.d.z;
        EXPECT_EQ(p.column, c.column) << c.d.x << " " << c.d.y << " " << c.d.z;
        EXPECT_EQ(p.row, c.row) << c.d.x << " " << c.d.y << " " << c.d.z;
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
        EXPECT_EQ(value.format, PixelFormat::Rgba8);
        EXPECT_EQ(value.color8, kOpaqueWhite);
    }
    EXPECT_EQ(SampleCubeFaces(faces, {0, 0, 1}).format, PixelFormat::Rgb16);
}

TEST(CubeFace, HorizonCurveIsUndoneBeforeNormalising) {
    Modifications m;
    ChangeHorizon(m, 1.0f);  // power 2
    const Direction d = FacePixelToOutputDirection(3, CubeFace::Front, 1, 1, m);
    // The middle of Front, (0, 0, 1): y becomes 2 · √½ − 1.
    const float y = 2.0f * std::sqrt(0.5f) - 1.0f;
    EXPECT_NEAR(d.y / d.z, y, 1e-6f);
    // Turned, a corner of Bottom lies below −1 before it is normalised: no number comes out.
    RotatePanorama(m, 0.0f, 0.3f, 0.0f);
    EXPECT_TRUE(std::isnan(FacePixelToOutputDirection(256, CubeFace::Bottom, 128, 0, m).y) ||
                std::isnan(FacePixelToOutputDirection(256, CubeFace::Bottom, 128, 255, m).y));
}

TEST(CubeFace, NamesOfTheSixFiles) {
    EXPECT_STREQ(FaceAffix(0, 5), L"_bottom");
    EXPECT_STREQ(FaceAffix(3, 5), L"_dn");
    EXPECT_STREQ(FaceAffix(4, 0), L"f_");
    EXPECT_STREQ(FaceAffix(5, 3), L"3");
    for (const auto& [system, face] : {std::pair{6, 0}, {-1, 0}, {0, 6}, {0, -1}}) {
        EXPECT_STREQ(FaceAffix(system, face), L"");
    }
}

TEST(Directions, NormalizeLeavesUnitAndZeroVectorsAlone) {
    for (const Direction& d : {Direction{0, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0.6f, 0.0f, 0.8f}}) {
        const float s = d.x * d.x + d.y * d.y + d.z * d.z;
        if (s != 0.0f && s != 1.0f) continue;
        Direction n = d;
        Normalize(n);
        EXPECT_TRUE(n.x == d.x && n.y == d.y && n.z == d.z);
    }
    Direction d{3, 0, 4};
    Normalize(d);
    EXPECT_FLOAT_EQ(d.x, 0.6f);
    EXPECT_FLOAT_EQ(d.z, 0.8f);
}

TEST(Directions, SphericalCoordinatesOfTheAxes) {
    struct Case {
        Direction d;
        float longitude, latitude;
    };
    const float half = kPi / 2;
    const Case cases[] = {{{0, 0, 1}, 0, 0},      {{1, 0, 0}, half, 0},      {{-1, 0, 0}, -half, 0},
                          {{0, 0, -1}, kPi, 0},   {{-0.0f, 0, -1}, -kPi, 0}, {{0, 1, 0}, 0, half},
                          {{0, -1, 0}, 0, -half}, {{0, 0, 0}, 0, -half}};
    for (const Case& c : cases) {
        const Spherical s = ToSpherical(c.d);
        EXPECT_EQ(s.longitude, c.longitude) << c.d.x << " " << c.d.y << " " << c.d.z;
        EXPECT_EQ(s.latitude, c.latitude) << c.d.x << " " << c.d.y << " " << c.d.z;
    }
}

}  // namespace
}  // namespace skyvault
