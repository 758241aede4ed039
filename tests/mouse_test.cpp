// What the mouse does: files dropped, the preview dragged and zoomed.

#include "session/drop_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "codecs/picture_files.h"
#include "platform/utf8.h"
#include "projection/matrix4.h"
#include "projection/single_files.h"
#include "resources/resource_ids.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "session/preview_drag.h"
#include "tests/data_table.h"
#include "tests/made_dds.h"
#include "tests/picture_io.h"
#include "tests/recording_host.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {
namespace {

using Paths = std::vector<std::wstring>;

TEST(DropFiles, ProportionsAndViewChooseTheLayout) {
    for (const DataRow& row : DataTable("dropped_pictures")) {
        const PictureSize size{static_cast<std::uint32_t>(std::stoul(row[0])),
                               static_cast<std::uint32_t>(std::stoul(row[1]))};
        const PanoramaFormat layout = LayoutOfPicture(size, LayoutOfConsoleName(row[2])->format);
        EXPECT_EQ(layout, LayoutOfConsoleName(row[3])->format) << row.where;
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
    for (const DataRow& row : DataTable("dropped_faces")) {
        Paths dropped;
        for (const std::string& name : row.cells) dropped.push_back(FromUtf8(name));
        dropped.erase(dropped.begin());
        EXPECT_EQ(OrderFaces(dropped).empty(), row[0] == "N") << row.where;
    }
}

class DroppedFiles : public testing::Test {
  protected:
    /// A picture of one colour, and its path.
    std::wstring Picture(const std::wstring& name, std::uint32_t width, std::uint32_t height,
                         std::uint8_t grey = 100) {
        Image picture(width, height, PixelFormat::Rgb8);
        picture.Fill(PixelValue(Color8(grey, grey, grey, 255)));
        EXPECT_TRUE(Saved(picture, folder / name)) << ToUtf8(name);
        return folder / name;
    }

    TemporaryFolder folder;
    AppState settings;
    RecordingHost host;
    Session session{settings, host};
};

TEST_F(DroppedFiles, OneFileOpensAsItsLayout) {
    const std::string header("\0\0\2\0\0\0\0\0\0\0\0\0\x08\0\4\0\x18\0", 18);
    const std::pair<std::wstring, const wchar_t*> rows[] = {
        {Picture(L"wide.png", 64, 32), L"wide.png Equirectangular (64 x 32)"},
        {folder.Write(L"wide.tga", header + std::string(8 * 4 * 3, 'x')),
         L"wide.tga Equirectangular (8 x 4)"},
        {Picture(L"cross.bmp", 64, 48), L"cross.bmp Cubemap (16 x 16 x 6)"},
        {Picture(L"strip.jpg", 96, 16), L"strip.jpg Cubemap (16 x 16 x 6)"},
    };
    for (const auto& [path, title] : rows) {
        settings.importPath.clear();
        OpenDroppedFiles(session, {path});
        EXPECT_EQ(session.title, L"Skyvault - " + std::wstring(title) + L" LDR 24 bpp RGB int");
        EXPECT_EQ(settings.importPath, folder.Path());
    }
    ASSERT_TRUE(WriteDds(folder / L"cube.dds", "caps2=0xfe00", Bytes(6 * 64)));
    OpenDroppedFiles(session, {folder / L"cube.dds"});
    EXPECT_TRUE(session.title.starts_with(L"Skyvault - cube.dds Cubemap (4 x 4 x 6)"));
    EXPECT_TRUE(host.errors.empty() && host.information.empty() && host.dialogs.empty());
}

TEST_F(DroppedFiles, SixFilesBecomeTheFacesTheyAreNamedFor) {
    Paths dropped;
    for (const int f : {4, 2, 0, 5, 1, 3}) {
        const std::wstring path = SingleFilePath(folder / L"room.png", 1, static_cast<CubeFace>(f));
        dropped.push_back(Picture(std::wstring(FileNamePart(path)), 8, 8, static_cast<std::uint8_t>(f * 40)));
    }
    OpenDroppedFiles(session, dropped);
    ASSERT_NE(session.panorama, nullptr);
    int green = -40;
    for (const Image& face : session.panorama->faces) {
        ASSERT_TRUE(face.IsValid());
        EXPECT_EQ(face.GetPixel8(3, 3).green, green += 40);
    }
    EXPECT_EQ(session.title, L"Skyvault - room_front.png Cubemap (8 x 8 x 6) LDR 24 bpp RGB int");
}

TEST_F(DroppedFiles, WhatIsNoPanoramaIsAnErrorAndChangesNothing) {
    const std::wstring wide = Picture(L"wide.png", 64, 32);
    OpenDroppedFiles(session, {wide});
    const Panorama* const before = session.panorama.get();
    std::filesystem::create_directory(folder.SystemPath(L"sub"));
    settings.importPath = L"kept";
    const std::pair<Paths, const wchar_t*> rows[] = {{{wide, folder / L"sub"}, L"is a folder"},
                                                     {{wide, wide}, L"2 files"},
                                                     {Paths(7, wide), L"7 files"},
                                                     {Paths(6, wide), L"cannot be told apart"}};
    for (const auto& [dropped, text] : rows) {
        host.errors.clear();
        OpenDroppedFiles(session, dropped);
        ASSERT_EQ(host.errors.size(), 1u) << ToUtf8(text);
        EXPECT_NE(host.errors[0].find(text), std::wstring::npos) << ToUtf8(host.errors[0]);
        EXPECT_EQ(session.panorama.get(), before);
        EXPECT_EQ(settings.importPath, L"kept");
    }
}

constexpr float kPi = 3.14159265f;
constexpr float kFocal = 200.0f;

TEST(PreviewDrag, WhatLayInTheMiddleStaysUnderTheMouse) {
    const Camera starts[] = {
        {0, 0, 0},   {2.5f, 0.4f, 0},  {-1, 1.0f, 0},      {0, -1.2f, 0},    {0.3f, 0, kPi / 2},
        {0, 0, kPi}, {1, 0.5f, -0.7f}, {0, kPi - 0.3f, 0}, {1, -2.5f, 0.6f}, {-70, 6.9f, 40},
    };
    for (const Camera& start : starts) {
        for (const auto& [right, down] : {std::pair(5.0f, 0.0f), {0, 5}, {-4, 3}, {3, -4}}) {
            SCOPED_TRACE(testing::Message() << start.heading << ' ' << start.pitch << ' ' << start.roll);
            const Camera camera = DragCamera(start, right, down, kFocal);
            const Direction middle =
                Transform({0, 0, kFocal}, YawPitchRollMatrix(start.heading, start.pitch, start.roll));
            const Direction seen = Transform(
                middle, InverseOfRotation(YawPitchRollMatrix(camera.heading, camera.pitch, camera.roll)));
            EXPECT_NEAR(seen.x / seen.z * kFocal, right, 0.3f);
            EXPECT_NEAR(-seen.y / seen.z * kFocal, down, 0.3f);
        }
    }
}

TEST(PreviewDrag, PolesStopADragWithoutAJump) {
    // Pitch before, pixels down, pitch after.
    constexpr float kRows[][3] = {{0, 10000, -kPi / 2},
                                  {0, -10000, kPi / 2},
                                  {2 * kPi + 1, -10000, 2.5f * kPi},
                                  {2 * kPi + 1, 10000, 1.5f * kPi},
                                  {2, -50, 2.25f},
                                  {2, 0, 2},
                                  {2, 10000, -kPi / 2},
                                  {2, -10000, 2.5f * kPi}};
    for (const auto& [start, down, pitch] : kRows) {
        const Camera camera = DragCamera({1, start, 0}, 0, down, kFocal);
        EXPECT_NEAR(camera.pitch, pitch, 1e-5f) << start << ' ' << down;
        EXPECT_EQ(camera.heading, 1) << start << ' ' << down;
    }
    // Any setting and any camera come to finite angles.
    for (const float focal : {0.0f, 1e-30f, -0.5f, std::nanf("")}) {
        const Camera camera = DragCamera({0, kPi / 2, 0}, 100, 100, focal);
        EXPECT_TRUE(std::isfinite(camera.heading) && std::isfinite(camera.pitch)) << focal;
    }
}

TEST(PreviewDrag, SmallTurnsOfTheWheelAddUpToNotches) {
    constexpr int kTurns[][2] = {{120, 1}, {360, 3}, {-240, -2}, {30, 0},    {30, 0},   {30, 0},
                                 {30, 1},  {100, 0}, {-100, 0},  {-100, -1}, {-40, -1}, {150, 1}};
    WheelNotches wheel;
    for (const auto& [turn, notches] : kTurns) EXPECT_EQ(wheel.Turn(turn), notches) << turn;
}

TEST(PreviewDrag, ANotchZoomsAsOneStepOfTheMenu) {
    AppState settings;
    RecordingHost host;
    Session session{settings, host};
    const float before = settings.previewFov;
    ZoomPreview(session, 2);
    RunCommand(session, IDM_BIGGER_FOV);
    ZoomPreview(session, -2);
    EXPECT_NEAR(settings.previewFov, before * 1.05f * 1.05f * 0.95f * 0.95f * 0.95f, 1e-6f);
    EXPECT_FALSE(PreviewIsShown(session));
    settings.view = static_cast<std::int32_t>(PanoramaFormat::Preview);
    EXPECT_FALSE(PreviewIsShown(session)) << "without a panorama";
}

}  // namespace
}  // namespace skyvault::test
