// Six files for six faces: their names, reading and writing them, and the window's view of them.
#include "projection/single_files.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "image/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "projection/build_faces.h"
#include "projection/pixel_text.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TemporaryFolder;
using test::TestPanorama;

TEST(SingleFiles, NamesOfEverySystem) {
    const wchar_t* const names[6][6] = {
        {L"room_front", L"room_right", L"room_back", L"room_left", L"room_top", L"room_bottom"},
        {L"room_front", L"room_right", L"room_back", L"room_left", L"room_up", L"room_down"},
        {L"room_f", L"room_r", L"room_b", L"room_l", L"room_u", L"room_d"},
        {L"room_ft", L"room_rt", L"room_bk", L"room_lf", L"room_up", L"room_dn"},
        {L"f_room", L"r_room", L"b_room", L"l_room", L"u_room", L"d_room"},
        {L"room0", L"room1", L"room2", L"room3", L"room4", L"room5"},
    };
    for (int system = 0; system < 6; ++system) {
        for (int f = 0; f < 6; ++f) {
            EXPECT_EQ(SingleFilePath(L"C:\\out\\room.jpg", system, static_cast<CubeFace>(f)),
                      std::wstring(L"C:\\out\\") + names[system][f] + L".jpg");
        }
    }
}

TEST(SingleFiles, NamesKeepFolderStemAndExtension) {
    const struct {
        const wchar_t* path;
        int system;
        const wchar_t* expected;
    } rows[] = {
        {L"room.jpg", 0, L"room_left.jpg"},
        {L"room.jpg", 4, L"l_room.jpg"},
        {L"my.room.v2.PNG", 0, L"my.room.v2_left.PNG"},
        {L"C:\\a.b\\room.tif", 5, L"C:\\a.b\\room3.tif"},
        {L"/home/me/room.tif", 4, L"/home/me/l_room.tif"},
        {L"/room.tif", 2, L"/room_l.tif"},
        {L"C:room.tif", 4, L"C:l_room.tif"},
        {L".png", 0, L"_left.png"},
        {L"C:\\a.b\\room", 0, L"C:\\a.b\\room_left."},
        {L"room.jpg", 6, L"room.jpg"},
        {L"room.jpg", -1, L"room.jpg"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(SingleFilePath(row.path, row.system, CubeFace::Left), row.expected);
    }
}

/// Saves a picture and returns its path.
std::wstring Save(const TemporaryFolder& folder, std::wstring_view name, Image picture) {
    const std::wstring path = folder / name;
    EXPECT_TRUE(SavePicture(picture, path));
    return path;
}

TEST(SingleFiles, AnyFaceMayBeMissingAndTheLastOneThereDecidesTheSize) {
    const TemporaryFolder folder;
    const std::wstring small = Save(folder, L"small.png", test::RandomImage(8, 8, PixelFormat::Rgb8));
    const std::wstring large = Save(folder, L"large.png", test::RandomImage(20, 16, PixelFormat::Rgba16));
    const std::wstring none = folder / L"none.png";
    const std::wstring text = folder.Write(L"text.png", "no picture");
    const struct {
        std::vector<std::wstring> paths;
        std::vector<std::uint32_t> widths;  ///< 0: not there
        std::uint32_t faceSize;
    } rows[] = {
        {{small, small, small, small, small, small}, {8, 8, 8, 8, 8, 8}, 8},
        {{none, L"", large, text, none, L""}, {0, 0, 20, 0, 0, 0}, 20},
        {{large, small, none, none, none, none}, {20, 8, 0, 0, 0, 0}, 8},
        {{small, none, none, none, none, large}, {8, 0, 0, 0, 0, 20}, 20},
        {{small}, {8, 0, 0, 0, 0, 0}, 8},
        {{none, none, none, none, none, none}, {0, 0, 0, 0, 0, 0}, 0},
        {{}, {0, 0, 0, 0, 0, 0}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        TestPanorama t;
        EXPECT_EQ(ImportSingleFiles(t.panorama, row.paths), row.faceSize > 0);
        EXPECT_EQ(t.panorama.faceSize, row.faceSize);
        for (std::size_t f = 0; f < 6; ++f) {
            const Image& face = t.panorama.faces[f];
            EXPECT_EQ(face.IsValid() ? face.width : 0, row.widths[f]) << f;
            if (face.IsValid()) {
                EXPECT_TRUE(test::SameBytes(face, LoadPicture(row.paths[f])));
            }
        }
        EXPECT_TRUE(t.feedback.errors.empty());
        // Faces of several sizes are odd, but can be looked at.
        std::wstring log;
        EXPECT_EQ(ExportSingleFiles(t.panorama, L"", log), row.faceSize > 0);
    }
}

TEST(SingleFiles, WritesTheSixFacesAndTheirDescriptions) {
    const TemporaryFolder folder;
    for (const PixelFormat format : {PixelFormat::Rgb8, PixelFormat::Rgba16, PixelFormat::Grey8}) {
        TestPanorama t;
        t.SetEquirectangular(test::RandomImage(96, 48, format));
        t.settings.fileNamingSystem = 3;
        t.settings.transparency = true;
        RotatePanorama(t.panorama.modifications, 0.4f, -0.8f, 0.3f);
        std::wstring log, expectedLog;
        ASSERT_TRUE(ExportSingleFiles(t.panorama, folder / L"room.png", log));
        for (int f = 0; f < 6; ++f) {
            const std::wstring path =
                folder / (std::wstring(L"room") + FaceAffix(3, f) + std::wstring(L".png"));
            Image face;
            ASSERT_TRUE(BuildFace(t.panorama, face, static_cast<CubeFace>(f), 24, format));
            EXPECT_TRUE(test::SameBytes(LoadPicture(path), face)) << f;
            expectedLog += PictureInfo(path, 24, 24, format);
        }
        EXPECT_EQ(log, expectedLog);
        EXPECT_EQ(folder.FileCount(), 6u);
        EXPECT_EQ(t.feedback.information.size(), 1u) << "faces of 24 pixels are too small for the list";
        EXPECT_EQ(t.target.showCount, 0);
        EXPECT_EQ(t.panorama.resultPicture.width, 1000u) << "what the window is to show now";
    }
}

TEST(SingleFiles, TheFirstFailureEndsTheExport) {
    const TemporaryFolder folder;
    ASSERT_TRUE(CreateFolder(folder / L"room_back.png"));
    TestPanorama t;
    std::wstring log;
    EXPECT_FALSE(ExportSingleFiles(t.panorama, folder / L"room.png", log)) << "an empty panorama";
    t.SetFaces(8, PixelFormat::Rgb8);
    EXPECT_FALSE(ExportSingleFiles(t.panorama, folder / L"room.png", log));
    EXPECT_TRUE(log.empty());
    std::vector<std::wstring> names = FindFiles(folder.Path());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::wstring>{L"room_back.png", L"room_front.png", L"room_right.png"}));
    t.panorama.faces[0].Clear();
    EXPECT_FALSE(ExportSingleFiles(t.panorama, folder / L"other.png", log)) << "no front face, no format";
    EXPECT_FALSE(ExportSingleFiles(t.panorama, folder / L"other", log)) << "no extension";
    EXPECT_EQ(folder.FileCount(), 3u);
}

const Color8 kFaceColours[6] = {{200, 0, 0, 255}, {0, 200, 0, 255},   {0, 0, 200, 255},
                                {90, 90, 0, 255}, {0, 120, 120, 255}, {150, 0, 150, 255}};

/// A panorama whose faces are of one colour each.
void SetColouredFaces(TestPanorama& t) {
    t.panorama.faceSize = 4;
    for (std::size_t f = 0; f < 6; ++f) {
        Image& face = t.panorama.faces[f];
        face = Image(4, 4, PixelFormat::Rgb8);
        for (int i = 0; i < 16; ++i) face.SetPixel(i % 4, i / 4, kFaceColours[f]);
    }
}

/// Columns and rows from the first to the last pixel of a colour; right < left when there is none.
PixelRect Extent(const Image& picture, const Color8& colour) {
    const int width = static_cast<int>(picture.width), height = static_cast<int>(picture.height);
    PixelRect extent{width, height, -1, -1};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (picture.GetPixel8(x, y) != colour) continue;
            extent = {std::min(extent.left, x), std::min(extent.top, y), std::max(extent.right, x),
                      std::max(extent.bottom, y)};
        }
    }
    return extent;
}

/// How many pixels of a colour lie in a rectangle.
int Count(const Image& picture, const PixelRect& area, const Color8& colour) {
    int count = 0;
    for (int y = area.top; y <= area.bottom; ++y) {
        for (int x = area.left; x <= area.right; ++x) count += picture.GetPixel8(x, y) == colour;
    }
    return count;
}

TEST(SingleFiles, TheWindowShowsSixSquareFacesEachWithItsLabelBelow) {
    struct Case {
        ClientSize client;
        Color8 background;
        bool transparency;
        Color8 text;
        int smallestEdge;
    };
    const Color8 black(0, 0, 0, 255), white(255, 255, 255, 255);
    const Case cases[] = {
        {{1000, 700}, {255, 255, 255, 255}, false, black, 290},
        {{1200, 600}, {20, 30, 60, 255}, false, white, 240},
        {{600, 1200}, {255, 255, 255, 255}, true, black, 270},
        {{1500, 200}, {0, 0, 0, 255}, true, white, 160},
        {{300, 2000}, {127, 127, 127, 255}, false, white, 270},
        {{200, 160}, {255, 255, 200, 255}, false, black, 50},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.client.width) + " x " + std::to_string(c.client.height));
        TestPanorama t;
        SetColouredFaces(t);
        t.target.size = c.client;
        t.settings.backgroundColour = c.background;
        t.settings.transparency = c.transparency;
        std::wstring log;
        ASSERT_TRUE(ExportSingleFiles(t.panorama, L"", log));
        const Image& shown = t.target.shown;
        ASSERT_EQ(shown.width, static_cast<std::uint32_t>(c.client.width));
        ASSERT_EQ(shown.height, static_cast<std::uint32_t>(c.client.height));
        EXPECT_EQ(shown.GetPixel8(0, 0).alpha, c.transparency ? 0 : 255);
        int edge = 0;
        for (const Color8& colour : kFaceColours) {
            const PixelRect face = Extent(shown, colour);
            edge = edge == 0 ? face.right - face.left + 1 : edge;
            EXPECT_EQ(face.right - face.left + 1, edge);
            EXPECT_EQ(face.bottom - face.top + 1, edge);
            EXPECT_EQ(Count(shown, face, colour), edge * edge) << "nothing is drawn over a face";
            const PixelRect below{face.left, face.bottom + 1, face.right,
                                  std::min(face.bottom + edge / 8 + 9, c.client.height - 1)};
            EXPECT_GT(Count(shown, below, c.text), 20);
        }
        EXPECT_GE(edge, c.smallestEdge) << "the faces are not lost in their frame";
    }
}

TEST(SingleFiles, LabelsFollowTheNamingSystem) {
    std::vector<Image> views;
    for (int system = 0; system < 7; ++system) {
        TestPanorama t;
        SetColouredFaces(t);
        t.settings.fileNamingSystem = system;
        std::wstring log;
        ASSERT_TRUE(ExportSingleFiles(t.panorama, L"", log));
        for (const Image& other : views) EXPECT_FALSE(test::SameBytes(other, t.target.shown)) << system;
        views.push_back(t.target.shown.CopyRect());
    }
}

TEST(SingleFiles, EveryLetterOfALabelIsInTheFont) {
    std::wstring letters = L"FrontRightBackLeftTopBottom*";
    for (int system = 0; system < 6; ++system) {
        for (int f = 0; f < 6; ++f) letters += FaceAffix(system, f);
    }
    for (const wchar_t letter : letters) {
        Image image(kPixelLetterWidth, kPixelLetterHeight, PixelFormat::Rgb8);
        image.Fill(PixelValue(Color8(0, 0, 0, 255)));
        const Image empty = image.CopyRect();
        DrawPixelText(image, 0, 0, 1, std::wstring(1, letter), Color8(255, 255, 255, 255));
        EXPECT_FALSE(test::SameBytes(image, empty)) << ToUtf8(std::wstring(1, letter));
    }
}

TEST(SingleFiles, TinyWindowsAreNoTrouble) {
    TestPanorama t;
    SetColouredFaces(t);
    std::wstring log;
    for (int width = -1; width < 40; width += 3) {
        for (int height = -1; height < 80; height += 3) {
            t.target.size = {width, height};
            const bool fits = width >= 3 && height >= 2;
            if (fits) {
                EXPECT_TRUE(ExportSingleFiles(t.panorama, L"", log)) << width << " x " << height;
            } else if (width < 1 || height < 1) {
                EXPECT_FALSE(ExportSingleFiles(t.panorama, L"", log)) << width << " x " << height;
            } else {
                ExportSingleFiles(t.panorama, L"", log);
            }
        }
    }
    EXPECT_TRUE(t.feedback.errors.empty());
    t.panorama.viewTarget = nullptr;
    EXPECT_FALSE(ExportSingleFiles(t.panorama, L"", log));
}

}  // namespace
}  // namespace skyvault
