// Crosses and strips against plans drawn by hand: imports from pictures in which every pixel is different,
// and exports pixel by pixel against the sampler.
#include "projection/cube_layouts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "image/bleed_alpha.h"
#include "image/picture_files.h"
#include "platform/utf8.h"
#include "projection/build_faces.h"
#include "projection/sample_panorama.h"
#include "session/layouts.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TemporaryFolder;
using test::TestPanorama;

/// A letter for each face, in the place of its cell; b: Back turned, m: Back mirrored.
struct Plan {
    PanoramaFormat format;
    std::vector<std::string> cells;

    std::uint32_t Columns() const { return static_cast<std::uint32_t>(cells[0].size()); }
    std::uint32_t Rows() const { return static_cast<std::uint32_t>(cells.size()); }
    bool IsCross() const { return cells.size() > 1; }
    std::string Name() const { return FindLayout(format)->consoleName; }
};

const Plan kPlans[] = {
    {PanoramaFormat::HorizontalCross, {".T..", "LFRB", ".D.."}},
    {PanoramaFormat::VerticalCross, {".T.", "LFR", ".D.", ".b."}},
    {PanoramaFormat::Strip, {"FRBLTD"}},
    {PanoramaFormat::StripXyz, {"RLTDFB"}},
    {PanoramaFormat::InteriorStrip, {"mRFLTD"}},
};

/// Number of the face in a cell; 6 for none.
int FaceOf(char cell) {
    static const std::string kLetters = "FRBLTD";
    return cell == '.' ? 6 : cell == 'b' || cell == 'm' ? 2 : static_cast<int>(kLetters.find(cell));
}

bool Export(TestPanorama& t, const Plan& plan, const std::wstring& path = {}) {
    std::wstring log;
    const bool done = FindLayout(plan.format)->exportTo(t.panorama, path, {}, log);
    EXPECT_EQ(log.empty(), path.empty() || !done);
    return done;
}

void Import(TestPanorama& t, const Plan& plan, const std::wstring& path) {
    const bool done = plan.format == PanoramaFormat::InteriorStrip
                          ? ImportInteriorStrip(t.panorama, path)
                          : ImportFaceLayout(t.panorama, path, plan.format);
    EXPECT_EQ(done, !t.panorama.IsEmpty());
}

/// What an export of squares of S pixels has to be.
Image Expected(TestPanorama& t, const Plan& plan, int S, PixelFormat format) {
    const int N = static_cast<int>(t.panorama.faceSize);
    Image picture(plan.Columns() * static_cast<std::uint32_t>(S), plan.Rows() * static_cast<std::uint32_t>(S),
                  format);
    for (int py = 0; py < static_cast<int>(picture.height); ++py) {
        for (int px = 0; px < static_cast<int>(picture.width); ++px) {
            const char cell = plan.cells[static_cast<std::size_t>(py / S)][static_cast<std::size_t>(px / S)];
            if (cell == '.') {
                Color8 background = t.settings.backgroundColour;
                background.alpha = t.settings.transparency ? 0 : 255;
                picture.SetPixel(px, py, background);
                continue;
            }
            const int i = cell == 'm' ? S - 1 - px % S : px % S;
            const int j = py % S;
            int x = 0, y = 0;
            if (plan.IsCross()) {
                x = N * i / S;
                y = N * j / S;
            } else if (S > 1) {
                x = (N - 1) * i / (S - 1);
                y = (N - 1) * j / (S - 1);
            }
            if (cell == 'b') {
                x = N - x - 1;
                y = N - y - 1;
            }
            const Direction d = FacePixelToDirection(N, static_cast<CubeFace>(FaceOf(cell)), x, y);
            picture.SetPixel(px, py, SamplePanorama(t.panorama, d, true));
        }
    }
    return picture;
}

enum class Source { Equirectangular, Faces };

struct ExportCase {
    Source source;
    std::uint32_t size;  ///< width of the equirectangular picture, or edge of the faces
    int edge;            ///< in the window
    bool transparency;
    bool turned;
};

TEST(CubeLayouts, EveryPixelOfAnExportIsThatOfItsGrid) {
    const ExportCase cases[] = {
        {Source::Equirectangular, 64, 16, false, false},  // as large as the faces
        {Source::Equirectangular, 64, 32, true, false},   // twice
        {Source::Equirectangular, 64, 11, false, true},   // smaller
        {Source::Equirectangular, 64, 1, false, false},
        {Source::Equirectangular, 64, 2, true, true},
        {Source::Equirectangular, 400, 97, true, true},  // blocks of 256 pixels span cells
        {Source::Equirectangular, 40, 257, false, false},
        {Source::Equirectangular, 3, 5, false, false},  // too narrow for a grid
        {Source::Equirectangular, 7, 5, false, false},  // faces of one pixel
        {Source::Equirectangular, 8, 5, false, false},
        {Source::Faces, 9, 9, false, false},
        {Source::Faces, 9, 18, true, true},
        {Source::Faces, 1, 4, false, false},
    };
    for (const ExportCase& c : cases) {
        for (const Plan& plan : kPlans) {
            SCOPED_TRACE(plan.Name() + " of " + std::to_string(c.size) + " at " + std::to_string(c.edge));
            TestPanorama t;
            if (c.source == Source::Faces) {
                t.SetFaces(c.size, PixelFormat::Rgba8);
            } else {
                t.SetEquirectangular(test::RandomImage(c.size, std::max(c.size / 2, 1u), PixelFormat::Rgb16));
            }
            t.settings.transparency = c.transparency;
            t.settings.backgroundColour = Color8(10, 20, 30, 77);
            t.settings.antialiasing = true;
            if (c.turned) {
                RotatePanorama(t.panorama.modifications, 0.4f, -0.8f, 0.3f);
                t.panorama.modifications.flipHorizontal = true;
                t.panorama.modifications.logoSize = 0.3f;
            }
            // One more pixel in height makes no difference.
            t.target.size = {static_cast<int>(plan.Columns()) * c.edge,
                             static_cast<int>(plan.Rows()) * c.edge + 1};
            ASSERT_TRUE(Export(t, plan));
            const PixelFormat format = c.transparency ? PixelFormat::Rgba8 : PixelFormat::Rgb8;
            EXPECT_TRUE(test::SameBytes(t.target.shown, Expected(t, plan, c.edge, format)));
            EXPECT_TRUE(t.feedback.information.empty() && t.feedback.errors.empty());
        }
    }
}

TEST(CubeLayouts, FilesKeepTheSourcesFormatAndAreNoLargerThanIt) {
    const TemporaryFolder folder;
    const struct {
        std::uint32_t faceSize;
        PixelFormat format;
        int edge;
        const wchar_t* extension;
    } cases[] = {{24, PixelFormat::Rgb8, 24, L"bmp"},   {24, PixelFormat::Rgba16, 24, L"png"},
                 {24, PixelFormat::Grey16, 24, L"tif"}, {24, PixelFormat::RgbaHalf, 24, L"tif"},
                 {24, PixelFormat::Rgba8, 24, L"png"},  {300, PixelFormat::Grey8, 256, L"png"}};
    for (const auto& c : cases) {
        for (const Plan& plan : kPlans) {
            SCOPED_TRACE(plan.Name() + " " + ToUtf8(FormatName(c.format)));
            TestPanorama t;
            t.SetEquirectangular(test::RandomImage(4 * c.faceSize, 2 * c.faceSize, c.format));
            t.settings.resolution0 = 0;
            t.settings.transparency = true;
            const std::wstring path = folder / (std::wstring(L"out.") + c.extension);
            ASSERT_TRUE(Export(t, plan, path));
            Image expected = Expected(t, plan, c.edge, c.format);
            BleedAlpha(expected);
            EXPECT_TRUE(test::SameBytes(t.panorama.resultPicture, expected));
            const Image written = LoadPicture(path);
            EXPECT_EQ(written.width, expected.width);
            EXPECT_EQ(written.height, expected.height);
            EXPECT_EQ(t.target.showCount, 0);
            EXPECT_EQ(t.feedback.information.size(), c.faceSize < 256 ? 1u : 0u);
        }
    }
}

TEST(CubeLayouts, WindowsAndPanoramasWithNothingToShowGiveNothing) {
    const TemporaryFolder folder;
    for (const Plan& plan : kPlans) {
        SCOPED_TRACE(plan.Name());
        TestPanorama t;
        EXPECT_FALSE(Export(t, plan)) << "an empty panorama";
        EXPECT_FALSE(Export(t, plan, folder / L"x.png"));
        t.SetFaces(8, PixelFormat::Rgb8);
        for (const ClientSize size : {ClientSize{0, 0}, {2, 500}, {500, 0}, {-6, -6}}) {
            t.target.size = size;
            EXPECT_FALSE(Export(t, plan)) << size.width << " " << size.height;
        }
        t.target.size = {600, 400};
        t.panorama.faces[0].Clear();
        EXPECT_TRUE(Export(t, plan)) << "the window needs no front face";
        EXPECT_FALSE(Export(t, plan, folder / L"x.png")) << "nothing says in which format";
        t.panorama.resultPicture.Clear();
        FailAllocationsAfter(0);
        EXPECT_FALSE(Export(t, plan));
        FailAllocationsAfter(3);
        EXPECT_FALSE(Export(t, plan)) << "no memory for the picture";
        FailAllocationsAfter(-1);
        EXPECT_EQ(t.feedback.errors, std::vector<std::wstring>(2, L"Out of memory"));
        t.panorama.viewTarget = nullptr;
        EXPECT_FALSE(Export(t, plan));
    }
    EXPECT_EQ(folder.FileCount(), 0u);
}

/// Red is the column, green the row, blue says that the pixel is there at all.
PixelValue PixelOfPlace(std::uint64_t column, std::uint64_t row) {
    PixelValue value;
    value.format = PixelFormat::Rgb16;
    value.color16 = {static_cast<std::uint16_t>(column), static_cast<std::uint16_t>(row), 999, 65535};
    return value;
}

std::wstring SavePlaces(const TemporaryFolder& folder, std::uint32_t width, std::uint32_t height) {
    Image picture(width, height, PixelFormat::Rgb16);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            picture.SetPixel(static_cast<int>(x), static_cast<int>(y), PixelOfPlace(x, y));
        }
    }
    const std::wstring path = folder / L"places.png";
    EXPECT_TRUE(SavePicture(picture, path));
    return path;
}

/// The faces that lie in a picture made by SavePlaces.
void ExpectFacesOfPlaces(const TestPanorama& t, const Plan& plan, std::uint32_t width, std::uint32_t height) {
    const bool interior = plan.format == PanoramaFormat::InteriorStrip;
    const std::uint32_t N = interior ? height : width / plan.Columns();
    ASSERT_EQ(t.panorama.faceSize, N);
    for (std::uint32_t cellRow = 0; cellRow < plan.Rows(); ++cellRow) {
        for (std::uint32_t cellColumn = 0; cellColumn < plan.Columns(); ++cellColumn) {
            const char cell = plan.cells[cellRow][cellColumn];
            if (cell == '.') continue;
            const Image& face = t.panorama.faces[static_cast<std::size_t>(FaceOf(cell))];
            Image expected(N, N, PixelFormat::Rgb16);
            std::memset(expected.pixels.get(), 0, expected.ByteCount());
            for (std::uint32_t r = 0; r < N; ++r) {
                for (std::uint32_t c = 0; c < N; ++c) {
                    std::uint32_t column = cellColumn * N + (cell == 'b' || cell == 'm' ? N - 1 - c : c);
                    const std::uint32_t row = cellRow * N + (cell == 'b' ? N - 1 - r : r);
                    if (interior) column %= width;
                    if (column >= width || row >= height) continue;
                    expected.SetPixel(static_cast<int>(c), static_cast<int>(r), PixelOfPlace(column, row));
                }
            }
            EXPECT_TRUE(test::SameBytes(face, expected)) << cell;
        }
    }
}

TEST(CubeLayouts, ImportsTakeEveryPixelFromItsPlace) {
    const TemporaryFolder folder;
    for (const Plan& plan : kPlans) {
        const std::uint32_t columns = plan.Columns(), rows = plan.Rows();
        const std::pair<std::uint32_t, std::uint32_t> sizes[] = {
            {columns * 5, rows * 5},
            {columns * 5 + columns - 1, rows * 5 + 2},  // columns and rows nobody needs
            {columns * 5, rows * 5 - 3},                // the last cells are cut
            {columns * 5, 2},                           // hardly anything there
            {columns * 7, 1},
            {columns * 2, rows * 40},
            {columns, rows},
            {columns - 1, 1},
            {1, 1},
        };
        for (const auto& [width, height] : sizes) {
            SCOPED_TRACE(plan.Name() + " " + std::to_string(width) + " x " + std::to_string(height));
            TestPanorama t;
            t.feedback.active = true;
            Import(t, plan, SavePlaces(folder, width, height));
            EXPECT_EQ(t.feedback.fractions.size(), plan.format == PanoramaFormat::InteriorStrip ? 6u : 0u);
            if (width < columns && plan.format != PanoramaFormat::InteriorStrip) {
                EXPECT_TRUE(t.panorama.IsEmpty());
            } else {
                ExpectFacesOfPlaces(t, plan, width, height);
            }
            EXPECT_TRUE(t.feedback.errors.empty() && t.feedback.information.empty());
        }
        TestPanorama t;
        Import(t, plan, folder / L"missing.png");
        EXPECT_TRUE(t.panorama.IsEmpty());
        EXPECT_TRUE(t.feedback.errors.empty());
    }
}

TEST(CubeLayouts, ImportsKeepFormatAndAlphaWhereTheyShould) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"in.tif";
    for (const PixelFormat format : {PixelFormat::Grey8, PixelFormat::Rgb16, PixelFormat::Rgba8,
                                     PixelFormat::Rgba16, PixelFormat::RgbaHalf}) {
        for (const Plan& plan : kPlans) {
            Image drawn = test::RandomImage(plan.Columns() * 4, plan.Rows() * 4, format);
            ASSERT_TRUE(SavePicture(drawn, path));
            Image read = LoadPicture(path);
            for (const bool transparency : {true, false}) {
                SCOPED_TRACE(plan.Name() + " " + ToUtf8(FormatName(format)));
                TestPanorama t;
                t.settings.transparency = transparency;
                t.settings.backgroundColour = Color8(200, 100, 50, 0);
                Import(t, plan, path);
                const bool flattened = plan.format == PanoramaFormat::InteriorStrip && !transparency;
                if (flattened) read.FlattenAlpha(Color8(200, 100, 50, 255));
                // Front lies upright everywhere.
                std::int32_t left = 4, top = plan.IsCross() ? 4 : 0;
                if (!plan.IsCross()) left = 4 * static_cast<std::int32_t>(plan.cells[0].find('F'));
                EXPECT_TRUE(test::SameBytes(t.panorama.faces[0],
                                            read.CopyRect(PixelRect{left, top, left + 3, top + 3})));
            }
        }
    }
}

TEST(CubeLayouts, WhatWasExportedComesBackAsTheSameFaces) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"out.png";
    TestPanorama original;
    original.SetEquirectangular(test::RandomImage(128, 64, PixelFormat::Rgb8));
    for (const Plan& plan : kPlans) {
        SCOPED_TRACE(plan.Name());
        ASSERT_TRUE(Export(original, plan, path));
        TestPanorama again;
        Import(again, plan, path);
        ASSERT_EQ(again.panorama.faceSize, 32u);
        for (int f = 0; f < kFaceCount; ++f) {
            Image face;
            ASSERT_TRUE(BuildFace(original.panorama, face, static_cast<CubeFace>(f), 32, PixelFormat::Rgb8));
            EXPECT_TRUE(test::SameBytes(again.panorama.faces[static_cast<std::size_t>(f)], face)) << f;
        }
    }
}

}  // namespace
}  // namespace skyvault
