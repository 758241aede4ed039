// The whole program in this process, commanded through its menu: what it shows, writes and remembers.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "app/draw_canvas.h"
#include "image/picture_files.h"
#include "platform/files.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "tests/temporary_folder.h"
#include "tests/window/place_picture.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

const UINT kImport = FindLayout(PanoramaFormat::Equirectangular)->importCommand;
const UINT kExport = FindLayout(PanoramaFormat::Equirectangular)->exportCommand;
const UINT kViewEquirectangular = FindLayout(PanoramaFormat::Equirectangular)->viewCommand;
const UINT kViewCross = FindLayout(PanoramaFormat::HorizontalCross)->viewCommand;
const UINT kViewPreview = FindLayout(PanoramaFormat::Preview)->viewCommand;

constexpr const wchar_t* kTitle = L"Skyvault - place.bmp Equirectangular (3600 x 1800) LDR 24 bpp RGB int";

// The equirectangular view is 1000 × 500 in the middle of the client area and has its front one row above
// its middle; the preview is 1000 × 562 and has it in the middle.
constexpr int kTop = 100, kBottom = 600, kMiddleX = 500, kMiddleY = 349, kPreviewMiddleY = 350;

/// A test with the place picture on disk and the test settings in force.
class Program : public testing::Test {
  protected:
    void SetUp() override {
        settings_ = TestSettings(folder_.Path());
        Image picture = PlacePicture();
        ASSERT_TRUE(SavePicture(picture, folder_ / L"place.bmp"));
    }

    bool ImportPlace(const RunningProgram& program) {
        return program.Import(kImport, L"Select equirectangular", folder_ / L"place.bmp", kTitle);
    }

    static Place PlaceAt(const RunningProgram& program, int x, int y) {
        return PlaceOfColour(program.PixelAt(x, y));
    }

    /// Waits until the pixel shows the place.
    static testing::AssertionResult Shows(const RunningProgram& program, int x, int y, const Place& place) {
        if (Eventually([&] { return NearPlace(PlaceAt(program, x, y), place); }, 5000)) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure()
               << '(' << x << ',' << y << ") shows " << PlaceAt(program, x, y) << ", not " << place;
    }

    /// Waits until the equirectangular view at the window's present size has the front in its middle.
    static testing::AssertionResult ShowsFront(const RunningProgram& program) {
        RECT client{};
        GetClientRect(program.Window(), &client);
        int width = std::min<int>(client.right, 1024), height = std::min<int>(client.bottom, 512);
        if (2 * height > width)
            height = width / 2;
        else
            width = 2 * height;
        return Shows(program, (client.right - width) / 2 + width / 2,
                     (client.bottom - height) / 2 + height - 1 - height / 2, {1800, 900});
    }

    const TemporaryFolder folder_;
    AppState settings_;
};

TEST_F(Program, FirstStartIsAnEmptyWindowThatRemembersTheView) {
    PutSettings(nullptr);
    {
        RunningProgram program;
        ASSERT_NE(program.Window(), nullptr);
        EXPECT_EQ(program.Title(), L"Skyvault");
        EXPECT_TRUE(IsChecked(program.Window(), kViewEquirectangular));
        RECT rect{};
        GetWindowRect(program.Window(), &rect);
        const LONG height = GetSystemMetrics(SM_CYSCREEN) - 96;
        EXPECT_EQ(rect.left, 32);
        EXPECT_EQ(rect.bottom - rect.top, height);
        EXPECT_EQ(rect.right - rect.left,
                  std::min<LONG>(height * 16 / 9, GetSystemMetrics(SM_CXSCREEN) - 64));
        Shot(program.Window(), "empty");

        program.Command(kViewCross);
        EXPECT_TRUE(IsChecked(program.Window(), kViewCross));
        EXPECT_FALSE(IsChecked(program.Window(), kViewEquirectangular));
        EXPECT_EQ(program.Title(), L"Skyvault");
        EXPECT_EQ(program.Close(), 0);
    }
    const AppState saved = ReadSettings();
    EXPECT_TRUE(saved.settingsLoaded);
    EXPECT_EQ(saved.view, static_cast<std::int32_t>(PanoramaFormat::HorizontalCross));
}

TEST_F(Program, ImportedPanoramaIsFittedInTheMiddleOfTheBackground) {
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(ImportPlace(program)) << "title: " << testing::PrintToString(program.Title());
    EXPECT_TRUE(Shows(program, kMiddleX, kMiddleY, {1800, 900}));
    EXPECT_TRUE(Shows(program, 0, kMiddleY, {0, 900}));
    EXPECT_TRUE(Shows(program, 750, 224, {2700, 450}));
    for (const int y : {0, kTop - 1, kBottom, kClientHeight - 1}) {
        EXPECT_EQ(program.PixelAt(17, y), kBackground) << y;
        EXPECT_EQ(program.PixelAt(kMiddleX, y), kBackground) << y;
    }
    EXPECT_NE(program.PixelAt(17, kTop), kBackground);
    EXPECT_NE(program.PixelAt(17, kBottom - 1), kBackground);
    Shot(program.Window(), "equirectangular");

    program.Command(kCommandCrosshair);
    EXPECT_TRUE(IsChecked(program.Window(), kCommandCrosshair));
    EXPECT_TRUE(Eventually([&] { return program.PixelAt(3, kClientHeight / 2) == kBackground; }));
    EXPECT_EQ(program.PixelAt(kMiddleX, kTop + 3), kBackground);
    EXPECT_NE(program.PixelAt(kMiddleX + 2, kClientHeight / 2 + 2), kBackground);
    Shot(program.Window(), "crosshair");
    program.Command(kCommandCrosshair);
    EXPECT_FALSE(IsChecked(program.Window(), kCommandCrosshair));
    EXPECT_TRUE(Shows(program, kMiddleX, kMiddleY, {1800, 900}));

    // The preview at 0.2 picture widths: 250 pixels beside the middle are atan(250 / 200) to the right.
    program.Command(kViewPreview);
    EXPECT_TRUE(IsChecked(program.Window(), kViewPreview));
    EXPECT_TRUE(Shows(program, kMiddleX, kPreviewMiddleY, {1800, 900}));
    EXPECT_TRUE(Shows(program, kMiddleX + 250, kPreviewMiddleY, {1800 + 513, 900}));
    EXPECT_EQ(program.PixelAt(kMiddleX, 68), kBackground);
    Shot(program.Window(), "preview");
    program.Command(kCommandBiggerFov);
    EXPECT_TRUE(Shows(program, kMiddleX + 250, kPreviewMiddleY, {1800 + 528, 900}));
    program.Command(kCommandHeadingRight);  // turns the camera, ten times as far
    EXPECT_TRUE(Shows(program, kMiddleX, kPreviewMiddleY, {1900, 900}));
    program.Command(kViewEquirectangular);
    EXPECT_TRUE(Shows(program, kMiddleX, kMiddleY, {1800, 900}));
    EXPECT_EQ(program.Title(), kTitle);
}

TEST_F(Program, MagnifyingGlassEnlargesRoundTheMiddle) {
    settings_.magnifyingGlass = true;
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(ImportPlace(program));
    EXPECT_TRUE(IsChecked(program.Window(), kCommandMagnifyingGlass));
    EXPECT_TRUE(Shows(program, kMiddleX + 40, kMiddleY, {1800 + 36, 900}));  // 144 pixels of the picture ÷ 4
    EXPECT_TRUE(Shows(program, kMiddleX + 120, kMiddleY, {1800 + 432, 900}));
    Shot(program.Window(), "magnifying-glass");
    program.Command(kCommandMagnifyingGlass);
    EXPECT_FALSE(IsChecked(program.Window(), kCommandMagnifyingGlass));
    EXPECT_TRUE(Shows(program, kMiddleX + 40, kMiddleY, {1800 + 144, 900}));
}

TEST_F(Program, FlipsMirrorsAndResetFollowTheMenu) {
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    struct Row {
        UINT command;
        int x, y;
        Place place;  ///< shown at (x, y) while set
    };
    const Row rows[] = {{kCommandFlipHorizontal, kMiddleX, kMiddleY, {2700, 900}},
                        {kCommandMirrorTopToBottom, kMiddleX, kMiddleY + 100, {1800, 540}},
                        {kCommandMirrorFrontToBack, 0, kMiddleY, {1800, 900}}};
    for (const Row& row : rows) {
        program.Command(row.command);
        EXPECT_FALSE(IsChecked(program.Window(), row.command)) << "without a panorama";
    }
    ASSERT_TRUE(ImportPlace(program));
    for (const Row& row : rows) {
        program.Command(row.command);
        EXPECT_TRUE(IsChecked(program.Window(), row.command)) << row.command;
        EXPECT_TRUE(Shows(program, row.x, row.y, row.place)) << row.command;
        if (row.command == kCommandMirrorFrontToBack)
            program.Command(kCommandResetAll);
        else
            program.Command(row.command);
        EXPECT_FALSE(IsChecked(program.Window(), row.command)) << row.command;
        EXPECT_TRUE(Shows(program, kMiddleX, kMiddleY, {1800, 900})) << row.command;
        EXPECT_TRUE(Shows(program, 0, kMiddleY, {0, 900})) << row.command;
    }
    program.Command(kCommandPitchDown);
    program.Command(kCommandHorizonUp);
    EXPECT_TRUE(Shows(program, kMiddleX, kMiddleY, {1800, 914}));
    program.Command(kCommandResetAll);
    EXPECT_TRUE(Shows(program, kMiddleX, kMiddleY, {1800, 900}));
}

TEST_F(Program, ExportsThroughTheSaveDialogInEveryKind) {
    settings_.filterIndex = 5;
    PutSettings(&settings_);
    {
        RunningProgram program;
        ASSERT_NE(program.Window(), nullptr);
        ASSERT_TRUE(ImportPlace(program));
        program.Command(kViewPreview);
        int filterBefore = 5;
        struct Row {
            int filter;
            const wchar_t* name;
            bool exact;  ///< the written colours are the built ones
        };
        for (const Row& row : {Row{5, L"out.png", true}, Row{1, L"out.bmp", true}, Row{3, L"out.gif", false},
                               Row{6, L"out.tif", true}, Row{4, L"out.jpg", false}}) {
            program.StartCommand(kExport);
            const HWND dialog = WaitForDialog(L"Export Panorama");
            ASSERT_NE(dialog, nullptr) << row.name;
            EXPECT_EQ(ChosenFilter(dialog), filterBefore) << row.name;
            if (row.filter == 1) ScreenShot("save-dialog");
            ChooseFilter(dialog, row.filter);
            ASSERT_TRUE(AnswerFileDialog(dialog, folder_ / L"out")) << row.name;
            const HWND box = WaitForMessage();
            ASSERT_NE(box, nullptr) << row.name;
            const std::wstring path = folder_ / row.name;
            EXPECT_EQ(MessageText(box), L"360° photo successfully exported!\n\n" +
                                            PictureInfo(path, 1024, 512, PixelFormat::Rgb8));
            if (row.filter == 5) ScreenShot("export-message");
            EXPECT_TRUE(PressButton(box, IDOK));
            filterBefore = row.filter;

            const Image written = LoadPicture(path);
            ASSERT_TRUE(written.IsValid()) << row.name;
            EXPECT_EQ(written.width, 1024u) << row.name;
            EXPECT_EQ(written.height, 512u) << row.name;
            if (row.exact) {
                EXPECT_TRUE(NearPlace(PlaceOfColour(written.GetPixel8(512, 255)), {1800, 900})) << row.name;
                EXPECT_TRUE(NearPlace(PlaceOfColour(written.GetPixel8(768, 127)), {2700, 450})) << row.name;
            }
        }
        EXPECT_TRUE(Eventually([&] { return IsChecked(program.Window(), kViewEquirectangular); }))
            << "the window shows what was written";
    }
    EXPECT_EQ(ReadSettings().filterIndex, 4);
}

TEST_F(Program, UnreadablePictureIsReportedByItsPath) {
    folder_.Write(L"broken.png", "no picture at all");
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    program.StartCommand(kImport);
    const HWND dialog = WaitForDialog(L"Select equirectangular");
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(AnswerFileDialog(dialog, folder_ / L"broken.png"));
    const HWND box = WaitForMessage();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(MessageText(box), L"Could not open \"" + (folder_ / L"broken.png") + L"\"");
    EXPECT_TRUE(PressButton(box, IDOK));
    EXPECT_TRUE(ImportPlace(program)) << "the program goes on";
}

TEST_F(Program, NoSecondCommandStartsWhileAMessageIsOpen) {
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(ImportPlace(program));
    program.StartCommand(kExport);
    const HWND dialog = WaitForDialog(L"Export Panorama");
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(AnswerFileDialog(dialog, folder_ / L"out"));
    const HWND box = WaitForMessage();
    ASSERT_NE(box, nullptr);
    // All of these are answered before the box closes, and none of them does anything yet.
    SendMessageW(program.Window(), WM_COMMAND, kImport, 0);
    SendMessageW(program.Window(), WM_KEYDOWN, VK_RIGHT, 0);
    SendMessageW(program.Window(), WM_CLOSE, 0, 0);
    SetWindowPos(program.Window(), nullptr, 0, 0, 800, 700, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_TRUE(IsWindow(box));
    EXPECT_FALSE(DialogIsOpen(L"Select equirectangular"));
    EXPECT_TRUE(PressButton(box, IDOK));
    EXPECT_TRUE(ShowsFront(program)) << "drawn at the new size";
    EXPECT_EQ(program.PixelAt(300, 5), kBackground);
}

TEST_F(Program, WindowPlaceViewAndPathsComeBackInTheNextRun) {
    settings_.importPath = L"C:\\";
    PutSettings(&settings_);
    const RECT place{111, 77, 911, 677};
    {
        RunningProgram program;
        ASSERT_NE(program.Window(), nullptr);
        ASSERT_TRUE(ImportPlace(program));
        program.Command(kViewPreview);
        program.Command(kCommandCrosshair);
        SetWindowPos(program.Window(), nullptr, place.left, place.top, place.right - place.left,
                     place.bottom - place.top, SWP_NOZORDER);
        // Minimised windows have no place worth keeping.
        ShowWindow(program.Window(), SW_MINIMIZE);
        EXPECT_TRUE(Eventually([&] { return IsIconic(program.Window()) != FALSE; }));
        EXPECT_EQ(program.Close(), 0);
    }
    const AppState saved = ReadSettings();
    EXPECT_EQ(saved.windowRect, (ScreenRect{place.left, place.top, place.right, place.bottom}));
    EXPECT_EQ(saved.view, static_cast<std::int32_t>(PanoramaFormat::Preview));
    EXPECT_TRUE(saved.crosshair);
    EXPECT_EQ(saved.importPath, folder_.Path());

    RunningProgram again;
    ASSERT_NE(again.Window(), nullptr);
    RECT rect{};
    GetWindowRect(again.Window(), &rect);
    EXPECT_TRUE(EqualRect(&rect, &place));
    EXPECT_TRUE(IsChecked(again.Window(), kViewPreview));
    EXPECT_TRUE(IsChecked(again.Window(), kCommandCrosshair));
}

TEST_F(Program, PictureFollowsSizeRestoreAndResolutionOfTheScreen) {
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(ImportPlace(program));
    const int canvases = DrawCanvas::CreatedCount();
    SetWindowPos(program.Window(), nullptr, 0, 0, 700, 620, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_TRUE(ShowsFront(program));
    EXPECT_GT(DrawCanvas::CreatedCount(), canvases) << "the target is made anew at the new size";

    ShowWindow(program.Window(), SW_MINIMIZE);
    EXPECT_TRUE(Eventually([&] { return IsIconic(program.Window()) != FALSE; }));
    ShowWindow(program.Window(), SW_RESTORE);
    EXPECT_TRUE(Eventually([&] { return IsIconic(program.Window()) == FALSE; }));
    EXPECT_TRUE(ShowsFront(program));

    const RECT suggested{50, 60, 950, 760};
    SendMessageW(program.Window(), WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));
    RECT rect{};
    GetWindowRect(program.Window(), &rect);
    EXPECT_TRUE(EqualRect(&rect, &suggested));
    EXPECT_TRUE(ShowsFront(program));
}

TEST_F(Program, LostDeviceIsReplacedAndThePictureDrawnAgain) {
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(ImportPlace(program));
    const int canvases = DrawCanvas::CreatedCount();
    ReportDeviceLost(1);
    program.Command(kCommandHeadingRight);
    EXPECT_EQ(DrawCanvas::CreatedCount(), canvases + 1);
    EXPECT_TRUE(Shows(program, kMiddleX, kMiddleY, {1810, 900}));
    // Lost again and again: this time nothing is drawn, the next time it is.
    ReportDeviceLost(2);
    program.Command(kCommandHeadingRight);
    program.Command(kCommandHeadingRight);
    EXPECT_TRUE(Shows(program, kMiddleX, kMiddleY, {1830, 900}));
}

TEST_F(Program, AboutBoxBelongsToTheWindow) {
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    program.StartCommand(kCommandAbout);
    const HWND about = WaitForDialog(L"About Skyvault");
    ASSERT_NE(about, nullptr);
    EXPECT_EQ(GetWindow(about, GW_OWNER), program.Window());
    EXPECT_TRUE(PressButton(about, IDCANCEL));
}

TEST_F(Program, StartedMinimisedItKeepsItsPlace) {
    PutSettings(&settings_);
    {
        RunningProgram program(SW_SHOWMINIMIZED);
        ASSERT_NE(program.Window(), nullptr);
    }
    EXPECT_EQ(ReadSettings().windowRect, settings_.windowRect);
}

}  // namespace
}  // namespace skyvault::test
