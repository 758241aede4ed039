// Real key input, as from the keyboard: the program in this process, and once as the program it is.

#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "image/picture_files.h"
#include "platform/files.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "tests/temporary_folder.h"
#include "tests/window/place_picture.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

UINT ViewCommand(PanoramaFormat view) {
    return FindLayout(view)->viewCommand;
}

constexpr const wchar_t* kTitle = L"Skyvault - place.bmp Equirectangular (3600 x 1800) LDR 24 bpp RGB int";

// Where the 1000 × 500 equirectangular view has its front, its right, its left and its nadir.
constexpr POINT kFront{500, 349}, kRight{750, 349}, kNadir{500, 599};

class RealInput : public testing::Test {
  protected:
    void SetUp() override {
        settings_ = TestSettings(folder_.Path());
        Image picture = PlacePicture();
        ASSERT_TRUE(SavePicture(picture, folder_ / L"place.bmp"));
    }

    /// The place picture in the window, which takes the keys.
    bool ImportPlace(const RunningProgram& program) const {
        const UINT command = FindLayout(PanoramaFormat::Equirectangular)->importCommand;
        return program.Import(command, L"Select equirectangular", folder_ / L"place.bmp", kTitle) &&
               program.Focus();
    }
    static bool Shows(const RunningProgram& program, POINT at, const Place& place) {
        return Eventually([&] { return NearPlace(PlaceOfColour(program.PixelAt(at.x, at.y)), place); }, 3000);
    }

    const TemporaryFolder folder_;
    AppState settings_;
};

TEST_F(RealInput, ViewKeysMoveTheCheckMarkWithoutAPanorama) {
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(program.Focus());
    struct Row {
        WORD key;
        PanoramaFormat view;
    };
    for (const Row& row :
         {Row{VK_F2, PanoramaFormat::HorizontalCross}, Row{VK_F3, PanoramaFormat::VerticalCross},
          Row{VK_F4, PanoramaFormat::Strip}, Row{VK_F5, PanoramaFormat::StripXyz},
          Row{VK_F6, PanoramaFormat::SingleFiles}, Row{VK_F7, PanoramaFormat::SphereMap},
          Row{VK_F8, PanoramaFormat::MirrorBall}, Row{VK_F9, PanoramaFormat::Heart},
          Row{VK_F11, PanoramaFormat::Preview}, Row{VK_F1, PanoramaFormat::Equirectangular},
          Row{VK_SPACE, PanoramaFormat::Preview}}) {
        Press(row.key);
        EXPECT_TRUE(Eventually([&] { return IsChecked(program.Window(), ViewCommand(row.view)); }, 3000))
            << std::hex << row.key;
        int checked = 0;
        for (const LayoutRow& layout : Layouts()) {
            if (layout.viewCommand != 0 && IsChecked(program.Window(), layout.viewCommand)) ++checked;
        }
        EXPECT_EQ(checked, 1) << std::hex << row.key;
    }
    struct Toggle {
        WORD key;
        UINT command;
    };
    for (const Toggle& toggle : {Toggle{VK_TAB, kCommandCrosshair}, Toggle{'M', kCommandMagnifyingGlass}}) {
        for (const bool on : {true, false}) {
            Press(toggle.key);
            EXPECT_TRUE(Eventually([&] { return IsChecked(program.Window(), toggle.command) == on; }, 3000))
                << std::hex << toggle.key;
        }
    }
    const HeldKeys capital({VK_SHIFT, 'M'});
    EXPECT_TRUE(Eventually([&] { return IsChecked(program.Window(), kCommandMagnifyingGlass); }, 3000));
    EXPECT_EQ(program.Title(), L"Skyvault");
}

TEST_F(RealInput, StepKeysTurnBendAndSizeByTheHeldModifier) {
    Image logo(8, 8, PixelFormat::Rgb8);
    const Color8 logoColour(250, 10, 20, 255);
    logo.Fill(PixelValue(logoColour));
    settings_.logo = folder_ / L"logo.png";
    ASSERT_TRUE(SavePicture(logo, settings_.logo));
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(ImportPlace(program));
    const auto shows = [&](POINT at, const Place& place) { return Shows(program, at, place); };
    struct Row {
        std::initializer_list<WORD> keys;
        POINT at;
        Place place;  ///< ten pixels to a degree
    };
    const std::initializer_list<Row> rows = {
        {{VK_RIGHT}, kFront, {1810, 900}},
        {{VK_LEFT}, kFront, {1790, 900}},
        {{VK_SHIFT, VK_RIGHT}, kFront, {1950, 900}},
        {{VK_SHIFT, VK_LEFT}, kFront, {1650, 900}},
        {{VK_UP}, kFront, {1800, 890}},
        {{VK_DOWN}, kFront, {1800, 910}},
        {{VK_SHIFT, VK_UP}, kFront, {1800, 750}},
        {{VK_PRIOR}, kRight, {2700, 890}},
        {{VK_NEXT}, kRight, {2700, 910}},
        {{VK_SHIFT, VK_NEXT}, kRight, {2700, 1050}},
        // The horizon curve at eye level: 900 + 1800 / π × asin(1 − 2 × 0.5^power).
        {{VK_HOME}, kFront, {1800, 904}},
        {{VK_END}, kFront, {1800, 896}},
        {{VK_SHIFT, VK_HOME}, kFront, {1800, 908}},
    };
    for (const Row& row : rows) {
        const HeldKeys held(row.keys);
        EXPECT_TRUE(shows(row.at, row.place))
            << "keys ending in " << *(row.keys.end() - 1) << " of " << row.keys.size() << ": expected "
            << row.place << ", shown " << PlaceOfColour(program.PixelAt(row.at.x, row.at.y));
        program.Command(kCommandResetAll);
        ASSERT_TRUE(shows(kFront, {1800, 900}));
    }
    // A tenth of a degree is one pixel; ten of them are a degree. Ctrl goes before Shift.
    const std::initializer_list<WORD> fine = {VK_CONTROL, VK_RIGHT}, both = {VK_CONTROL, VK_SHIFT, VK_RIGHT};
    for (int i = 0; i < 10; ++i) {
        const Color8 before = program.PixelAt(kFront.x, kFront.y);
        const HeldKeys held(i % 2 == 0 ? fine : both);
        ASSERT_TRUE(Eventually([&] { return program.PixelAt(kFront.x, kFront.y) != before; }, 3000)) << i;
    }
    EXPECT_TRUE(shows(kFront, {1810, 900})) << PlaceOfColour(program.PixelAt(kFront.x, kFront.y));
    program.Command(kCommandResetAll);

    // The logo's disc at the nadir, in rows of 0.36° of the view: atan(size) ÷ 0.36, and the nadir itself.
    const auto logoRows = [&] {
        int rowsOfLogo = 0;
        while (rowsOfLogo < 50 && program.PixelAt(kNadir.x, kNadir.y - rowsOfLogo) == logoColour)
            ++rowsOfLogo;
        return rowsOfLogo;
    };
    struct LogoRow {
        std::initializer_list<WORD> keys;
        int rows;
    };
    for (const LogoRow& row :
         {LogoRow{{VK_INSERT}, 2}, LogoRow{{VK_SHIFT, VK_INSERT}, 7}, LogoRow{{VK_DELETE}, 5},
          LogoRow{{VK_SHIFT, VK_DELETE}, 0}, LogoRow{{VK_CONTROL, VK_INSERT}, 1}, LogoRow{{VK_DELETE}, 0}}) {
        const HeldKeys held(row.keys);
        EXPECT_TRUE(Eventually([&] { return logoRows() == row.rows; }, 3000))
            << logoRows() << " rows instead of " << row.rows;
    }

    // The number pad's plus and minus move the preview's field of view; the main keys do not.
    Press(VK_F11);
    const POINT beside{750, 350};
    ASSERT_TRUE(shows(beside, {1800 + 513, 900}));
    Press(VK_ADD);
    EXPECT_TRUE(shows(beside, {1800 + 528, 900}));
    Press(VK_OEM_PLUS);
    Press(VK_OEM_MINUS);
    Press(VK_SUBTRACT);
    EXPECT_TRUE(shows(beside, {1800 + 514, 900})) << PlaceOfColour(program.PixelAt(beside.x, beside.y));
    {
        const HeldKeys held({VK_SHIFT, VK_RIGHT});
        EXPECT_TRUE(shows({500, 350}, {3300, 900})) << "ten times fifteen degrees";
    }
    Press(VK_F1);
    EXPECT_TRUE(shows(kFront, {1800, 900}));
}

/// The real program, ended when this goes.
class ProgramProcess {
  public:
    ProgramProcess() {
        STARTUPINFOW start{};
        start.cb = sizeof start;
        std::wstring path = ProgramFolder() + L"\\Skyvault.exe";
        if (CreateProcessW(path.c_str(), path.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                           &process_)) {
            window_ = WaitForWindow(L"Skyvault", L"", process_.dwProcessId);
        }
    }
    ~ProgramProcess() {
        TerminateProcess(process_.hProcess, 72);
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
    }
    ProgramProcess(const ProgramProcess&) = delete;
    ProgramProcess& operator=(const ProgramProcess&) = delete;

    HWND Window() const { return window_; }
    DWORD Id() const { return process_.dwProcessId; }
    /// Waits for the end; the exit status, or −1 when it did not end.
    int ExitStatus() const {
        DWORD status = 0;
        if (WaitForSingleObject(process_.hProcess, kPatience) != WAIT_OBJECT_0) return -1;
        GetExitCodeProcess(process_.hProcess, &status);
        return static_cast<int>(status);
    }

  private:
    PROCESS_INFORMATION process_{};
    HWND window_ = nullptr;
};

/// The screen's pixel at a point of the window's client area.
Color8 ScreenPixel(HWND window, int x, int y) {
    POINT point{x, y};
    ClientToScreen(window, &point);
    const HDC screen = GetDC(nullptr);
    const COLORREF colour = GetPixel(screen, point.x, point.y);
    ReleaseDC(nullptr, screen);
    return {GetRValue(colour), GetGValue(colour), GetBValue(colour), 255};
}

TEST_F(RealInput, ProgramFileIsDrivenByTheKeyboardAlone) {
    PutSettings(&settings_);
    const ProgramProcess program;
    ASSERT_NE(program.Window(), nullptr);
    const auto active = [&](HWND window) {
        return Eventually([&] {
            SetForegroundWindow(window);
            return GetForegroundWindow() == window;
        });
    };
    const auto shows = [&](POINT at, const Place& place) {
        return Eventually(
            [&] { return NearPlace(PlaceOfColour(ScreenPixel(program.Window(), at.x, at.y)), place); }, 5000);
    };
    // Menu: FILE, "Import 360° photo", "Equirectangular...".
    ASSERT_TRUE(active(program.Window()));
    Press(VK_MENU);
    for (int i = 0; i < 3; ++i) {
        Sleep(200);
        Press(VK_RETURN);
    }
    HWND dialog = WaitForDialog(L"Select equirectangular", program.Id());
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(active(dialog));
    Sleep(300);
    Type(folder_ / L"place.bmp");
    Press(VK_RETURN);
    ASSERT_TRUE(Eventually([&] { return TextOf(program.Window()) == kTitle; }))
        << "title: " << testing::PrintToString(TextOf(program.Window()));
    ASSERT_TRUE(active(program.Window()));
    EXPECT_TRUE(shows(kFront, {1800, 900}));
    EXPECT_EQ(ScreenPixel(program.Window(), 500, 50), kBackground);
    ScreenShot("process");

    {
        const HeldKeys held({VK_SHIFT, VK_RIGHT});
        EXPECT_TRUE(shows(kFront, {1950, 900}));
    }
    Press(VK_F11);
    EXPECT_TRUE(shows({500, 350}, {1950, 900}));
    {
        const HeldKeys held({VK_CONTROL, VK_LEFT});
        EXPECT_TRUE(shows({500, 350}, {1940, 900}));
    }
    Press(VK_TAB);
    EXPECT_TRUE(Eventually([&] { return ScreenPixel(program.Window(), 500, 350) == kBackground; }, 5000));

    {
        const HeldKeys held({VK_MENU, VK_F4});
        EXPECT_EQ(program.ExitStatus(), 0);
    }
    const AppState saved = ReadSettings();
    EXPECT_EQ(saved.view, static_cast<std::int32_t>(PanoramaFormat::Preview));
    EXPECT_TRUE(saved.crosshair);
    EXPECT_EQ(saved.windowRect, settings_.windowRect);
}

TEST_F(RealInput, ExamplePictureOpensFromTheFirstDialog) {
    PutSettings(nullptr);
    const ProgramProcess program;
    ASSERT_NE(program.Window(), nullptr);
    PostMessageW(program.Window(), WM_COMMAND, FindLayout(PanoramaFormat::Equirectangular)->importCommand, 0);
    const HWND dialog = WaitForDialog(L"Select equirectangular", program.Id());
    ASSERT_NE(dialog, nullptr);
    Eventually([&] { return GetForegroundWindow() == dialog; });
    Sleep(300);
    Type(L"Mountain lake.jpg");
    ScreenShot("open-dialog");
    Press(VK_RETURN);
    EXPECT_TRUE(Eventually([&] {
        return TextOf(program.Window()) ==
               L"Skyvault - Mountain lake.jpg Equirectangular (4096 x 2048) LDR 24 bpp RGB int";
    }));
    // The preview is higher than the equirectangular view: it reaches into the bar above.
    RECT client{};
    GetClientRect(program.Window(), &client);
    const auto isWhite = [&](double share) {
        const int height = static_cast<int>(share * static_cast<double>(client.right));
        return ScreenPixel(program.Window(), client.right / 2, (client.bottom - height) / 2 + 3) ==
               kOpaqueWhite;
    };
    EXPECT_TRUE(Eventually([&] { return !isWhite(1.0 / 2.0); }));
    EXPECT_TRUE(isWhite(9.0 / 16.0));
    ScreenShot("example");
    Press(VK_SPACE);
    EXPECT_TRUE(Eventually([&] { return !isWhite(9.0 / 16.0); }));
    ScreenShot("example-preview");
    PostMessageW(program.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(program.ExitStatus(), 0);
}

}  // namespace
}  // namespace skyvault::test
