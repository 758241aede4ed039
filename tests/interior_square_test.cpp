// The interior square, both ways.
#include "projection/interior_square.h"

#include <gtest/gtest.h>

#include <cmath>

#include "image/picture_files.h"
#include "projection/sample_panorama.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TestPanorama;

/// The picture pixel a face pixel is read from, worked out in double precision; −1 where that is too close
/// to a pixel's border to say.
struct Expected {
    int column, row;
};

Expected PixelOf(CubeFace face, double a, double b, int n) {
    double u = 0, v = 0;
    const double left = 1 / (2 * a + 1), right = 1 / (3 - 2 * a), top = 1 / (2 * b + 1),
                 bottom = 1 / (3 - 2 * b);
    switch (face) {
        case CubeFace::Front:
            u = (2 * a - 1) / 3, v = (2 * b - 1) / 3;
            break;
        case CubeFace::Right:
            u = right, v = (2 * b - 1) * right;
            break;
        case CubeFace::Left:
            u = -left, v = (2 * b - 1) * left;
            break;
        case CubeFace::Top:
            u = (2 * a - 1) * top, v = -top;
            break;
        case CubeFace::Bottom:
            u = (2 * a - 1) * bottom, v = bottom;
            break;
        case CubeFace::Back:
            break;
    }
    const auto pixel = [n](double position) {
        const double p = std::min(std::max(n * position / 2 + n / 2.0, 0.0), n - 1.0);
        const bool unsure = std::fabs(p - std::round(p)) < 1e-4 && p > 0 && p < n - 1;
        return unsure ? -1 : static_cast<int>(p);
    };
    return {pixel(u), pixel(v)};
}

TEST(InteriorSquare, ImportReadsEveryWallFromItsPlace) {
    const test::TemporaryFolder folder;
    for (const int n : {1, 7, 48}) {
        for (const int height : {n, n / 2 + 1, 2 * n}) {
            Image picture = test::RandomImage(static_cast<std::uint32_t>(n),
                                              static_cast<std::uint32_t>(height), PixelFormat::Rgb16);
            const std::wstring path = folder.Path(L"room.png");
            ASSERT_TRUE(SavePicture(picture, path));
            TestPanorama t;
            t.settings.backgroundColour = Color8(10, 20, 30, 0);
            ASSERT_TRUE(ImportInteriorSquare(t.panorama, path));
            ASSERT_EQ(t.panorama.faceSize, static_cast<std::uint32_t>(n));
            int compared = 0;
            for (int f = 0; f < kFaceCount; ++f) {
                const Image& face = t.panorama.faces[static_cast<std::size_t>(f)];
                ASSERT_EQ(face.format, PixelFormat::Rgb16);
                for (int r = 0; r < n; ++r) {
                    for (int c = 0; c < n; ++c) {
                        if (f == 2) {
                            ASSERT_EQ(face.GetPixel8(c, r), Color8(10, 20, 30, 255));
                            continue;
                        }
                        const Expected e = PixelOf(static_cast<CubeFace>(f), double(c) / n, double(r) / n, n);
                        if (e.column < 0 || e.row < 0) continue;
                        ++compared;
                        ASSERT_EQ(face.GetPixel16(c, r), picture.GetPixel16(e.column, e.row))
                            << n << " x " << height << ", face " << f << " " << c << " " << r;
                    }
                }
            }
            EXPECT_GT(compared, 3 * n * n) << "most pixels are not in doubt";
        }
    }
}

TEST(InteriorSquare, TransparencyMakesTheBackWallInvisible) {
    const test::TemporaryFolder folder;
    Image picture = test::RandomImage(9, 9, PixelFormat::Rgb8);
    const std::wstring path = folder.Path(L"room.png");
    ASSERT_TRUE(SavePicture(picture, path));
    TestPanorama t;
    t.settings.transparency = true;
    ASSERT_TRUE(ImportInteriorSquare(t.panorama, path));
    for (int f = 0; f < kFaceCount; ++f) {
        const Image& face = t.panorama.faces[static_cast<std::size_t>(f)];
        EXPECT_EQ(face.format, PixelFormat::Rgba8) << f;
        EXPECT_EQ(face.GetPixel8(4, 4).alpha, f == 2 ? 0 : 255) << f;
    }
    EXPECT_FALSE(ImportInteriorSquare(t.panorama, folder.Path(L"none.png")));
}

TEST(InteriorSquare, WhatWasExportedImportsBack) {
    const test::TemporaryFolder folder;
    constexpr int n = 256;
    for (const PixelFormat format : {PixelFormat::Rgb8, PixelFormat::Rgba16, PixelFormat::Grey8}) {
        TestPanorama t;
        t.settings.transparency = true;
        t.settings.antialiasing = false;
        t.settings.resolution2 = 0;
        t.SetFaces(n, format);
        std::wstring log;
        const std::wstring path = folder.Path(L"square.tif");
        ASSERT_TRUE(ExportInteriorSquare(t.panorama, path, log));
        const Image first = t.panorama.resultPicture.CopyRect();
        ASSERT_EQ(first.width, static_cast<std::uint32_t>(n));
        TestPanorama again;
        again.settings = t.settings;
        ASSERT_TRUE(ImportInteriorSquare(again.panorama, path));
        ASSERT_TRUE(ExportInteriorSquare(again.panorama, path, log));
        const Image& second = again.panorama.resultPicture;
        // Noise shows every pixel that comes from somewhere else.
        int same = 0;
        for (int y = 0; y < n; ++y) {
            for (int x = 0; x < n; ++x) same += second.GetPixel16(x, y) == first.GetPixel16(x, y) ? 1 : 0;
        }
        EXPECT_GT(same, n * n * 97 / 100);
    }
}

}  // namespace
}  // namespace skyvault
