#include "session/drop_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "image/picture_files.h"
#include "platform/utf8.h"
#include "projection/single_files.h"
#include "session/commands.h"
#include "tests/recording_host.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {
namespace {

using Paths = std::vector<std::wstring>;

TEST(DropFiles, ProportionsAndViewChooseTheLayout) {
    using enum PanoramaFormat;
    const struct {
        PictureSize size;
        PanoramaFormat view, layout;
    } rows[] = {
        {{4096, 2048}, Preview, Equirectangular},
        {{4096, 2048}, SphereMap, Equirectangular},
        {{2048, 1536}, Preview, HorizontalCross},
        {{1365, 1024}, Preview, HorizontalCross},
        {{1024, 1366}, Preview, Equirectangular},
        {{1536, 2048}, Strip, VerticalCross},
        {{6144, 1024}, Preview, Strip},
        {{6144, 1024}, StripXyz, StripXyz},
        {{6144, 1024}, InteriorStrip, InteriorStrip},
        {{6144, 1024}, InteriorSquare, Strip},
        {{1024, 1024}, Preview, SphereMap},
        {{1024, 1024}, MirrorBall, MirrorBall},
        {{1024, 1024}, Heart, Heart},
        {{1024, 1024}, InteriorSquare, InteriorSquare},
        {{1024, 1024}, InteriorStrip, SphereMap},
        {{1024, 1023}, Heart, Equirectangular},
        {{1920, 1080}, Heart, Equirectangular},
        {{1024, 6144}, Strip, Equirectangular},
        {{0, 0}, Heart, Equirectangular},
        {{4294967295u, 2147483648u}, Preview, Equirectangular},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(LayoutOfPicture(row.size, row.view), row.layout)
            << row.size.width << " x " << row.size.height << " in view " << static_cast<int>(row.view);
    }
}

TEST(DropFiles, FacesAreOrderedByAnyNamingSystem) {
    for (int system = 0; system < 6; ++system) {
        Paths faces;
        for (int f = 0; f < 6; ++f) {
            faces.push_back(
                SingleFilePath(L"C:\\f_room_ft0.d\\my.room.png", system, static_cast<CubeFace>(f)));
        }
        Paths dropped = faces;
        std::rotate(dropped.begin(), dropped.begin() + 1 + system % 5, dropped.end());
        std::swap(dropped[0], dropped[3]);
        EXPECT_EQ(OrderFaces(dropped), faces) << system;
    }
    const struct {
        Paths dropped;
        bool told;
    } rows[] = {
        {{L"A_FRONT.JPG", L"a_Right.jpg", L"b_back.png", L"a_left", L"a_up.jpg", L"a_down.jpg"}, true},
        {{L"3.png", L"0.png", L"1.png", L"5.png", L"4.png", L"2.png"}, true},
        {{L"a_front.png", L"a_right.png", L"a_back.png", L"a_left.png", L"a_top.png", L"a_down.png"}, false},
        {{L"a_front.png", L"b_front.png", L"a_back.png", L"a_left.png", L"a_top.png", L"a_bottom.png"},
         false},
        {{L"1.png", L"2.png", L"3.png", L"4.png", L"5.png", L"6.png"}, false},
        {{L"a_f.png", L"a_r.png", L"a_b.png", L"a_l.png", L"a_u.png"}, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(OrderFaces(row.dropped).empty(), !row.told) << ToUtf8(row.dropped.front());
    }
}

class DroppedFiles : public testing::Test {
  protected:
    /// A picture of one colour, and its path.
    std::wstring Picture(const std::wstring& name, std::uint32_t width, std::uint32_t height,
                         std::uint8_t grey = 100) {
        Image picture(width, height, PixelFormat::Rgb8);
        picture.Fill(PixelValue(Color8(grey, grey, grey, 255)));
        EXPECT_TRUE(SavePicture(picture, folder / name)) << ToUtf8(name);
        return folder / name;
    }

    TemporaryFolder folder;
    AppState settings;
    RecordingHost host;
    Session session{settings, host};
};

TEST_F(DroppedFiles, OneFileOpensAsItsLayout) {
    const std::wstring tga =
        folder.Write(L"wide.tga", std::string(2, '\0') + '\2' + std::string(9, '\0') +
                                      std::string({8, 0, 4, 0, 24, 0}) + std::string(8 * 4 * 3, 'x'));
    const struct {
        std::wstring path;
        const wchar_t* title;
    } rows[] = {
        {Picture(L"wide.png", 64, 32), L"Skyvault - wide.png Equirectangular (64 x 32) LDR 24 bpp RGB int"},
        {tga, L"Skyvault - wide.tga Equirectangular (8 x 4) LDR 24 bpp RGB int"},
        {Picture(L"cross.bmp", 64, 48), L"Skyvault - cross.bmp Cubemap (16 x 16 x 6) LDR 24 bpp RGB int"},
        {Picture(L"tall.tif", 48, 64), L"Skyvault - tall.tif Cubemap (16 x 16 x 6) LDR 24 bpp RGB int"},
        {Picture(L"strip.jpg", 96, 16), L"Skyvault - strip.jpg Cubemap (16 x 16 x 6) LDR 24 bpp RGB int"},
    };
    for (const auto& row : rows) {
        settings.importPath.clear();
        OpenDroppedFiles(session, {row.path});
        EXPECT_EQ(session.title, row.title);
        EXPECT_EQ(settings.importPath, folder.Path());
    }
    EXPECT_TRUE(host.errors.empty());
    EXPECT_TRUE(host.dialogs.empty());
    const std::vector<std::string> oneImport = {"begin", "end", "checks", "show", "title"};
    EXPECT_TRUE(std::equal(oneImport.begin(), oneImport.end(), host.calls.begin()));
}

TEST_F(DroppedFiles, SixFilesBecomeTheFacesTheyAreNamedFor) {
    Paths dropped;
    for (const int f : {4, 2, 0, 5, 1, 3}) {
        const std::wstring path = SingleFilePath(folder / L"room.png", 1, static_cast<CubeFace>(f));
        dropped.push_back(Picture(std::wstring(FileNamePart(path)), 8, 8, static_cast<std::uint8_t>(f * 40)));
    }
    OpenDroppedFiles(session, dropped);
    ASSERT_NE(session.panorama, nullptr);
    for (int f = 0; f < 6; ++f) {
        const Image& face = session.panorama->faces[static_cast<std::size_t>(f)];
        ASSERT_TRUE(face.IsValid()) << f;
        EXPECT_EQ(face.GetPixel8(3, 3).green, f * 40) << f;
    }
    EXPECT_EQ(session.title, L"Skyvault - room_front.png Cubemap (8 x 8 x 6) LDR 24 bpp RGB int");
}

TEST_F(DroppedFiles, WhatIsNoPanoramaIsAnErrorAndChangesNothing) {
    const std::wstring wide = Picture(L"wide.png", 64, 32);
    OpenDroppedFiles(session, {wide});
    const Panorama* const before = session.panorama.get();
    std::filesystem::create_directory(folder.SystemPath(L"sub"));
    settings.importPath = L"kept";
    const Paths six(6, wide);
    const struct {
        Paths dropped;
        const wchar_t* text;
    } rows[] = {
        {{folder / L"sub"}, L"is a folder"}, {{wide, folder / L"sub"}, L"is a folder"},
        {{wide, wide}, L"2 files"},          {Paths(7, wide), L"7 files"},
        {six, L"cannot be told apart"},
    };
    for (const auto& row : rows) {
        host.errors.clear();
        OpenDroppedFiles(session, row.dropped);
        ASSERT_EQ(host.errors.size(), 1u) << ToUtf8(row.text);
        EXPECT_NE(host.errors[0].find(row.text), std::wstring::npos) << ToUtf8(host.errors[0]);
        EXPECT_EQ(session.panorama.get(), before);
        EXPECT_EQ(settings.importPath, L"kept");
    }
}

TEST_F(DroppedFiles, EveryImportThatComesToNothingSaysSoOnce) {
    const std::wstring names[] = {L"no.png", L"no.tga", L"no.dds",
                                  L"no.mov",  // cut before its first picture: the reader says nothing
                                  L"no"};
    for (const std::wstring& name : names) {
        const std::wstring path = folder.Write(name, "moov mdat and nothing to see");
        host.errors.clear();
        OpenDroppedFiles(session, {path});
        EXPECT_EQ(host.errors, Paths{L"Could not open \"" + path + L"\""}) << ToUtf8(name);
        ASSERT_NE(session.panorama, nullptr);
        EXPECT_TRUE(session.panorama->IsEmpty());
    }
    host.errors.clear();
    host.answers = {folder / L"no.mov"};
    ImportCommand(session, PanoramaFormat::QuickTimeVr);
    EXPECT_EQ(host.errors.size(), 1u);
}

}  // namespace
}  // namespace skyvault::test
