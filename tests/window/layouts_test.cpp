// Every layout in the real window: shown, written through its menu command, and read back through it.

#include <gtest/gtest.h>
#include <windows.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "image/picture_files.h"
#include "projection/cube_face.h"
#include "projection/direction.h"
#include "projection/single_files.h"
#include "session/layouts.h"
#include "tests/temporary_folder.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

constexpr UINT kEquirectangularView = 32867, kEquirectangularImport = 32868;

/// The colour of a direction changes slowly, so that scaling on the screen leaves it alone.
Color8 ColourOfDirection(double x, double y, double z) {
    const auto channel = [](double v) { return static_cast<std::uint8_t>(127.5 + 100 * v); };
    return {channel(x), channel(y), channel(z), 255};
}

constexpr std::int32_t kPictureWidth = 2048;

Image DirectionPicture() {
    Image picture(kPictureWidth, kPictureWidth / 2, PixelFormat::Rgb8);
    for (std::int32_t row = 0; row < kPictureWidth / 2; ++row) {
        const double latitude = 3.14159265 * (0.5 - row / (kPictureWidth / 2.0));
        for (std::int32_t column = 0; column < kPictureWidth; ++column) {
            const double longitude = 2 * 3.14159265 * (column / double{kPictureWidth} - 0.5);
            picture.SetPixel(column, row,
                             ColourOfDirection(std::cos(latitude) * std::sin(longitude), std::sin(latitude),
                                               std::cos(latitude) * std::cos(longitude)));
        }
    }
    return picture;
}

bool Near(const Color8& a, const Color8& b) {
    return std::abs(a.red - b.red) <= 6 && std::abs(a.green - b.green) <= 6 && std::abs(a.blue - b.blue) <= 6;
}

const Color8 kFront = ColourOfDirection(0, 0, 1);
const Color8 kFrontRight = ColourOfDirection(0.70711, 0, 0.70711);

class LayoutWindow : public testing::Test {
  protected:
    void SetUp() override {
        settings_ = TestSettings(folder_.Path());
        settings_.filterIndex = 5;  // PNG
        settings_.compressDds = false;
        settings_.resolution0 = settings_.resolution2 = 1;  // 512
        Image picture = DirectionPicture();
        ASSERT_TRUE(SavePicture(picture, folder_ / L"sky.bmp"));
        PutSettings(&settings_);
    }

    bool ImportSky(const RunningProgram& program) const {
        return program.Import(kEquirectangularImport, L"Select equirectangular", folder_ / L"sky.bmp",
                              L"Skyvault - sky.bmp Equirectangular (2048 x 1024) LDR 24 bpp RGB int");
    }

    static bool Shows(const RunningProgram& program, int x, int y, const Color8& colour) {
        return Eventually([&] { return Near(program.PixelAt(x, y), colour); }, 5000);
    }

    const TemporaryFolder folder_;
    AppState settings_;
};

TEST_F(LayoutWindow, EveryViewFillsTheWindowWithItsLayout) {
    const RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(ImportSky(program));
    struct Row {
        PanoramaFormat view;
        int width, height;      ///< of the picture in a client area of 1000 × 700
        double frontX, frontY;  ///< the front's middle, in parts of the picture
    };
    for (const Row& row : {
             Row{PanoramaFormat::HorizontalCross, 932, 699, 1.5 / 4, 1.5 / 3},
             Row{PanoramaFormat::VerticalCross, 525, 700, 1.5 / 3, 1.5 / 4},
             Row{PanoramaFormat::Strip, 996, 166, 0.5 / 6, 0.5},
             Row{PanoramaFormat::StripXyz, 996, 166, 4.5 / 6, 0.5},
             Row{PanoramaFormat::InteriorStrip, 996, 166, 2.5 / 6, 0.5},
             Row{PanoramaFormat::SphereMap, 700, 700, 0.5, 0.5},
             Row{PanoramaFormat::MirrorBall, 700, 700, 0.5, 0.5},
             Row{PanoramaFormat::Heart, 700, 700, 0.5, 0.6121},
             Row{PanoramaFormat::InteriorSquare, 700, 700, 0.5, 0.5},
         }) {
        const LayoutRow& layout = *FindLayout(row.view);
        program.Command(layout.viewCommand);
        EXPECT_TRUE(IsChecked(program.Window(), layout.viewCommand)) << layout.consoleName;
        const int left = (kClientWidth - row.width) / 2, top = (kClientHeight - row.height) / 2;
        const int x = left + static_cast<int>(row.frontX * row.width);
        const int y = top + static_cast<int>(row.frontY * row.height);
        EXPECT_TRUE(Shows(program, x, y, kFront)) << layout.consoleName;
        EXPECT_EQ(program.PixelAt(kClientWidth - 1, kClientHeight - 1), kBackground) << layout.consoleName;
        Shot(program.Window(), layout.consoleName);
    }
    program.Command(FindLayout(PanoramaFormat::SingleFiles)->viewCommand);
    Shot(program.Window(), "single-files");
    // Six faces, each somewhere: their middles are all to be seen.
    const auto countOf = [&](const Color8& colour) {
        const Image shown = WindowPixels(program.Window(), false);
        int found = 0;
        for (std::int32_t y = 0; y < kClientHeight; ++y) {
            for (std::int32_t x = 0; x < kClientWidth; ++x) {
                found += Near(shown.GetPixel8(x, y), colour) ? 1 : 0;
            }
        }
        return found;
    };
    for (const Direction& d :
         {Direction{0, 0, 1}, {1, 0, 0}, {0, 0, -1}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}}) {
        const Color8 colour = ColourOfDirection(d.x, d.y, d.z);
        EXPECT_TRUE(Eventually([&] { return countOf(colour) > 20; }, 5000))
            << d.x << ' ' << d.y << ' ' << d.z;
    }
}

TEST_F(LayoutWindow, WhatEveryLayoutWritesItReadsBack) {
    const RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    for (const LayoutRow& layout : Layouts()) {
        if (layout.format > PanoramaFormat::InteriorSquare ||
            layout.format == PanoramaFormat::Equirectangular ||
            layout.format == PanoramaFormat::QuickTimeVr) {
            continue;
        }
        SCOPED_TRACE(layout.consoleName);
        ASSERT_TRUE(ImportSky(program));
        const std::wstring name(layout.consoleName, layout.consoleName + strlen(layout.consoleName));
        program.StartCommand(layout.exportCommand);
        const HWND save = WaitForDialog(L"Export Panorama");
        ASSERT_NE(save, nullptr);
        ASSERT_TRUE(AnswerFileDialog(save, folder_ / name.c_str()));
        const HWND box = WaitForMessage();
        ASSERT_NE(box, nullptr);
        EXPECT_TRUE(MessageText(box).starts_with(L"360° photo successfully exported!\n\n"))
            << testing::PrintToString(MessageText(box));
        EXPECT_TRUE(PressButton(box, IDOK));

        const bool dds = layout.format == PanoramaFormat::DirectXDds;
        const bool single = layout.format == PanoramaFormat::SingleFiles;
        const std::wstring prefix = layout.exportPrefix ? layout.exportPrefix : L"";
        const std::wstring file = prefix + name + (dds ? L".dds" : L".png");
        if (single) {
            constexpr const wchar_t* kTitles[] = {L"Select front face",    L"Select right face",
                                                  L"Select back face",     L"Select left face",
                                                  L"Select top (up) face", L"Select bottom (down) face"};
            program.StartCommand(layout.importCommand);
            for (int f = 0; f < kFaceCount; ++f) {
                const HWND open = WaitForDialog(kTitles[f]);
                ASSERT_NE(open, nullptr) << f;
                ASSERT_TRUE(AnswerFileDialog(
                    open, SingleFilePath(folder_ / file.c_str(), 0, static_cast<CubeFace>(f))));
            }
        } else {
            program.StartCommand(layout.importCommand);
            const HWND open = WaitForDialog(layout.importTitle);
            ASSERT_NE(open, nullptr);
            ASSERT_TRUE(AnswerFileDialog(open, folder_ / file.c_str()));
        }
        const std::wstring shownName = single ? L"single-files_front.png" : file;
        EXPECT_TRUE(Eventually([&] {
            return program.Title().starts_with(L"Skyvault - " + shownName + L" Cubemap (");
        })) << testing::PrintToString(program.Title());
        program.Command(kEquirectangularView);
        EXPECT_TRUE(Shows(program, 500, 349, kFront));
        EXPECT_TRUE(Shows(program, 625, 349, kFrontRight));
    }
}

}  // namespace
}  // namespace skyvault::test
