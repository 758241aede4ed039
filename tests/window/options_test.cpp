// The options dialog: what it shows, stores and leaves alone.

#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <variant>

#include "app/options_dialog.h"
#include "app/screen.h"
#include "image/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "resources/resource_ids.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "settings/settings_table.h"
#include "tests/temporary_folder.h"
#include "tests/window/in_background.h"
#include "tests/window/place_picture.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

constexpr const wchar_t* kTitle = L"Skyvault - Options";
constexpr const wchar_t* kChooserTitle = L"Color";

bool IsOfClass(HWND control, const wchar_t* wanted) {
    wchar_t name[64] = L"";
    GetClassNameW(control, name, 64);
    return std::wstring_view(name) == wanted;
}

/// What a control says: a list's chosen item, an edit's text, "on" or "off".
std::wstring Shown(HWND dialog, int id) {
    const HWND control = GetDlgItem(dialog, id);
    if (!IsOfClass(control, L"Button")) return TextOf(control);
    return SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED ? L"on" : L"off";
}

/// Chooses, types or clicks it.
void Enter(HWND dialog, int id, const wchar_t* value) {
    const HWND control = GetDlgItem(dialog, id);
    if (IsOfClass(control, L"ComboBox")) {
        const LRESULT item = SendMessageW(control, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                          reinterpret_cast<LPARAM>(value));
        EXPECT_NE(item, CB_ERR) << ToUtf8(value);
        SendMessageW(control, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
    } else if (IsOfClass(control, L"Button")) {
        if (Shown(dialog, id) != value) SendMessageW(control, BM_CLICK, 0, 0);
    } else {
        SendMessageW(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(value));
    }
}

HWND OpenOptions(const RunningProgram& program) {
    program.StartCommand(kCommandOptions);
    return WaitForDialog(kTitle);
}

/// The settings that are in the file, field by field.
void ExpectSettings(const AppState& actual, const AppState& expected) {
    for (const Setting& setting : SettingsTable()) {
        const bool same =
            std::visit([&](auto field) { return actual.*field == expected.*field; }, setting.field);
        EXPECT_TRUE(same) << ToUtf8(setting.key);
    }
}

struct Row {
    int id;
    const wchar_t* key;
    const wchar_t* before;  ///< in the settings
    const wchar_t* shown;
    const wchar_t* entered;
    const wchar_t* after;
};
const Row kRows[] = {
    {1005, L"Resolution0", L"6", L"6 x 16384 x 16384", L"6 x 256 x 256", L"0"},
    {1006, L"Resolution1", L"6", L"16384 x 8182", L"512 x 256", L"1"},
    {1008, L"Resolution2", L"0", L"256 x 256", L"16384 x 16384", L"6"},
    {1009, L"Resolution3", L"3", L"UHD 8K 7680 x 4320", L"HD 1920 x 1080", L"1"},
    {1007, L"FileNamingSystem", L"5", L"0, 1, 2, 3, 4, 5 (numbers)", L"_f, _r, _b, _l, _u, _d (RealViz)",
     L"2"},
    {1040, L"Transparency", L"Y", L"on", L"off", L"N"},
    {1041, L"Antialiasing", L"N", L"off", L"on", L"Y"},
    {1024, L"CompressDDS", L"N", L"off", L"on", L"Y"},
    {1042, L"Logo", L"C:\\not there\\ä.png", L"C:\\not there\\ä.png", L"", L""},
    {1021, L"VoronoiPoints", L"-7", L"-7", L"12.9", L"12"},
    {1022, L"VoronoiSmooth", L"Y", L"on", L"off", L"N"},
    {1023, L"VoronoiPower", L"0.123456", L"0.123456", L"no number", L"0"},
    {1030, L"VoronoiBorder", L"1234567.5", L"1234567.5", L"1e39", L"340282346638528859811704183484516925440"},
    {1031, L"BlobsForceFields", L"16777217", L"16777217", L"12.9", L"12"},
    {1032, L"BlobsPower", L"-0.5", L"-0.5", L"", L"0"},
    {1033, L"BlobsContrast", L"0.000001", L"0.000001", L"1,5", L"1"},
    {1025, L"FractalRoughness", L"0.7", L"0.7", L"2.50", L"2.5"},
    {1026, L"FractalContrast", L"100", L"100", L"-0.25", L"-0.25"},
    {1027, L"LightsLights", L"2147483647", L"2147483647", L"dark", L"0"},
    {1028, L"LightsBrightness", L"0.3", L"0.3", L"0.4", L"0.4"},
    {1034, L"PolyhedraBorder", L"0.05", L"0.05", L".5", L"0.5"},
    {1035, L"PolyhedraTextureScale", L"1.1", L"1.1", L"1.2", L"1.2"},
    {1038, L"PolyhedraFrames", L"4", L"4", L"1e30", L"2147483647"},
};

class Options : public testing::Test {
  protected:
    void SetUp() override { settings_ = TestSettings(folder_.Path()); }

    /// Writes a picture of one colour and returns its path.
    std::wstring WritePicture(const wchar_t* name, const Color8& colour) const {
        Image picture(40, 20, PixelFormat::Rgb8);
        picture.Fill(PixelValue(colour));
        EXPECT_TRUE(SavePicture(picture, folder_ / name));
        return folder_ / name;
    }

    const TemporaryFolder folder_;
    AppState settings_;
};

TEST_F(Options, EveryControlShowsItsSettingAndOnlyOkStoresIt) {
    AppState after = settings_;
    for (const Row& row : kRows) {
        ASSERT_TRUE(SetFromText(settings_, *FindSetting(row.key), row.before)) << row.id;
        ASSERT_TRUE(SetFromText(after, *FindSetting(row.key), row.after)) << row.id;
    }
    PutSettings(&settings_);
    {
        RunningProgram program;
        HWND dialog = OpenOptions(program);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), program.Window());
        EXPECT_FALSE(IsWindowEnabled(program.Window()));
        Shot(dialog, "options-changed");
        for (const int button : {IDCANCEL, IDOK}) {
            for (const Row& row : kRows) EXPECT_EQ(Shown(dialog, row.id), row.shown) << row.id;
            if (button == IDCANCEL) {
                for (const Row& row : kRows) Enter(dialog, row.id, row.entered);
                EXPECT_TRUE(PressButton(dialog, button));
                dialog = OpenOptions(program);
                ASSERT_NE(dialog, nullptr);
            } else {
                EXPECT_TRUE(PressButton(dialog, button));
            }
        }
    }
    ExpectSettings(ReadSettings(), settings_);

    RunningProgram program;
    const HWND dialog = OpenOptions(program);
    ASSERT_NE(dialog, nullptr);
    for (const Row& row : kRows) Enter(dialog, row.id, row.entered);
    EXPECT_TRUE(PressButton(dialog, IDOK));
    EXPECT_EQ(program.Close(), 0);
    ExpectSettings(ReadSettings(), after);
}

TEST_F(Options, ListsHaveAllTheirItemsAndLeaveUnknownChoicesAlone) {
    settings_.resolution0 = 7;
    settings_.fileNamingSystem = -3;
    settings_.resolution3 = 2147483647;
    PutSettings(&settings_);
    {
        RunningProgram program;
        const HWND dialog = OpenOptions(program);
        ASSERT_NE(dialog, nullptr);
        for (const auto& [id, count] : {std::pair{1005, 7}, {1006, 7}, {1008, 7}, {1009, 4}, {1007, 6}}) {
            EXPECT_EQ(SendDlgItemMessageW(dialog, id, CB_GETCOUNT, 0, 0), count) << id;
        }
        for (const int id : {1005, 1007, 1009}) EXPECT_EQ(Shown(dialog, id), L"") << id;
        Enter(dialog, 1009, L"UHD 4K 3840 x 2160");
        EXPECT_TRUE(PressButton(dialog, IDOK));
    }
    settings_.resolution3 = 2;
    ExpectSettings(ReadSettings(), settings_);
}

/// Where the colour is: the right edge of one control, round the middle of another.
RECT SwatchOf(HWND dialog) {
    RECT box{}, list{};
    GetWindowRect(GetDlgItem(dialog, 1040), &box);
    GetWindowRect(GetDlgItem(dialog, 1006), &list);
    const LONG middle = (list.top + list.bottom) / 2;
    RECT swatch{box.right - 14, middle - 7, box.right, middle + 7};
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&swatch), 2);
    return swatch;
}

/// Whether the swatch is filled with the colour and the pixels around it are not.
bool SwatchShows(HWND dialog, const Color8& colour) {
    const Image pixels = WindowPixels(dialog, false);
    const RECT swatch = SwatchOf(dialog);
    for (LONG y = swatch.top - 1; y <= swatch.bottom; ++y) {
        for (LONG x = swatch.left - 1; x <= swatch.right; ++x) {
            const bool inside = x >= swatch.left && x < swatch.right && y >= swatch.top && y < swatch.bottom;
            if ((pixels.GetPixel8(x, y) == colour) != inside) return false;
        }
    }
    return true;
}

/// Presses the left button at the place; false when that is not over at once.
bool ClickEndsAtOnce(HWND dialog, LONG x, LONG y) {
    DWORD_PTR answer = 0;
    return SendMessageTimeoutW(dialog, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y), SMTO_NORMAL, 1000,
                               &answer) != 0;
}

void ClickWithTheMouse(HWND window, LONG x, LONG y) {
    POINT place{x, y};
    ClientToScreen(window, &place);
    SetCursorPos(place.x, place.y);
    INPUT input{};
    input.type = INPUT_MOUSE;
    for (const DWORD flags : {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP}) {
        input.mi.dwFlags = flags;
        SendInput(1, &input, sizeof input);
    }
}

// Real mouse input: nothing else may have the screen meanwhile.
TEST(RealInputOptions, SwatchOpensTheColourChooserAndItsColourStandsAfterCancel) {
    constexpr int kRed = 706, kGreen = 707, kBlue = 708;  // the system dialog's
    const Color8 before(12, 34, 56, 77);
    struct Case {
        bool exportAlpha;
        std::uint8_t alpha;
    };
    for (const Case& row : {Case{true, 0}, Case{false, 255}}) {
        AppState state;
        state.backgroundColour = before;
        state.transparency = row.exportAlpha;
        INT_PTR result = 0;
        InBackground options([&] {
            const FileDialogs fileDialogs;
            result = ShowOptionsDialog(GetModuleHandleW(nullptr), nullptr, state, fileDialogs);
        });
        const HWND dialog = WaitForDialog(kTitle);
        ASSERT_NE(dialog, nullptr);
        const Color8 opaque(before.red, before.green, before.blue, 255);
        EXPECT_TRUE(Eventually([&] { return SwatchShows(dialog, opaque); }, 3000));
        // What is on the screen counts only after OK.
        Enter(dialog, 1040, row.exportAlpha ? L"off" : L"on");

        const RECT swatch = SwatchOf(dialog);
        const LONG x = (swatch.left + swatch.right) / 2, y = (swatch.top + swatch.bottom) / 2;
        for (const auto& [outsideX, outsideY] : {std::pair{swatch.left, y},
                                                 {swatch.right, y},
                                                 {x, swatch.top},
                                                 {x, swatch.bottom},
                                                 {swatch.right + 20, y}}) {
            EXPECT_TRUE(ClickEndsAtOnce(dialog, outsideX, outsideY)) << outsideX - x << ' ' << outsideY - y;
        }
        if (row.exportAlpha) {
            ClickWithTheMouse(dialog, swatch.left + 1, swatch.bottom - 1);
        } else {
            PostMessageW(dialog, WM_COMMAND, IDC_CHANGE_COLOUR, 0);
        }
        HWND chooser = WaitForDialog(kChooserTitle);
        ASSERT_NE(chooser, nullptr);
        EXPECT_EQ(GetWindow(chooser, GW_OWNER), dialog);
        EXPECT_EQ(Shown(chooser, kRed) + L' ' + Shown(chooser, kGreen) + L' ' + Shown(chooser, kBlue),
                  L"12 34 56");
        Enter(chooser, kRed, L"99");
        EXPECT_TRUE(PressButton(chooser, IDCANCEL));
        EXPECT_TRUE(SwatchShows(dialog, opaque));

        ClickWithTheMouse(dialog, x, y);
        chooser = WaitForDialog(kChooserTitle);
        ASSERT_NE(chooser, nullptr);
        for (const auto& [id, value] : {std::pair{kRed, L"200"}, {kGreen, L"100"}, {kBlue, L"0"}})
            Enter(chooser, id, value);
        if (row.exportAlpha) ScreenShot("options-colour");
        EXPECT_TRUE(PressButton(chooser, IDOK));
        EXPECT_TRUE(Eventually([&] { return SwatchShows(dialog, Color8(200, 100, 0, 255)); }, 3000));
        EXPECT_TRUE(PressButton(dialog, IDCANCEL));
        options.Join();
        EXPECT_EQ(result, 2);
        EXPECT_EQ(state.transparency, row.exportAlpha);
        EXPECT_EQ(state.backgroundColour, Color8(200, 100, 0, row.alpha))
            << int{state.backgroundColour.alpha};
    }
}

TEST_F(Options, ResetAllStandsAfterCancel) {
    for (const Row& row : kRows) SetFromText(settings_, *FindSetting(row.key), row.before);
    settings_.view = static_cast<std::int32_t>(PanoramaFormat::Heart);
    settings_.crosshair = settings_.magnifyingGlass = true;
    settings_.previewFov = 0.9f;
    settings_.batchSourceFolder = L"C:\\in";
    settings_.batchDestinationFormatIndex = 4;
    PutSettings(&settings_);
    const AppState defaults = DefaultSettingsOfScreen();
    {
        RunningProgram program;
        ASSERT_NE(program.Window(), nullptr);
        EXPECT_TRUE(IsChecked(program.Window(), kCommandCrosshair));
        const HWND dialog = OpenOptions(program);
        ASSERT_NE(dialog, nullptr);
        SendMessageW(GetDlgItem(dialog, 1029), BM_CLICK, 0, 0);
        EXPECT_EQ(Shown(dialog, 1006), L"4096 x 2048");
        EXPECT_EQ(Shown(dialog, 1041), L"on");
        EXPECT_EQ(Shown(dialog, 1042), defaults.logo);
        EXPECT_EQ(Shown(dialog, 1035), L"0.7");
        EXPECT_TRUE(Eventually([&] { return SwatchShows(dialog, kOpaqueWhite); }, 3000));
        Shot(dialog, "options");
        EXPECT_TRUE(PressButton(dialog, IDCANCEL));
        EXPECT_TRUE(Eventually([&] { return !IsChecked(program.Window(), kCommandCrosshair); }, 3000));
        EXPECT_TRUE(IsChecked(program.Window(), FindLayout(PanoramaFormat::Equirectangular)->viewCommand));
        EXPECT_EQ(program.Close(), 0);
    }
    ExpectSettings(ReadSettings(), defaults);
}

TEST_F(Options, LogoIsPreviewedWhenBrowsedOrTypedAndStampedAfterOk) {
    const Color8 red(220, 10, 20, 255), blue(20, 40, 230, 255);
    settings_.logo = WritePicture(L"red.png", red);
    const std::wstring bluePath = WritePicture(L"blue.png", blue);
    Image place = PlacePicture();
    ASSERT_TRUE(SavePicture(place, folder_ / L"place.bmp"));
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    ASSERT_TRUE(program.Import(FindLayout(PanoramaFormat::Equirectangular)->importCommand,
                               L"Select equirectangular", folder_ / L"place.bmp",
                               L"Skyvault - place.bmp Equirectangular (3600 x 1800) LDR 24 bpp RGB int"));
    program.Command(kCommandBiggerLogo);
    const auto nadirIs = [&](const Color8& colour) {
        return Eventually([&] { return program.PixelAt(500, 599) == colour; }, 5000);
    };
    EXPECT_TRUE(nadirIs(red));

    const HWND dialog = OpenOptions(program);
    ASSERT_NE(dialog, nullptr);
    const HWND preview = GetDlgItem(dialog, IDC_LOGO_PREVIEW);
    const auto previewShows = [&](const Color8& colour) {
        return Eventually(
            [&] {
                const Image pixels = WindowPixels(preview, false);
                return pixels.GetPixel8(static_cast<int>(pixels.width / 2),
                                        static_cast<int>(pixels.height / 2)) == colour;
            },
            5000);
    };
    EXPECT_TRUE(previewShows(red));
    Enter(dialog, 1042, L"no picture of that name");
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    EXPECT_TRUE(previewShows(Color8(GetRValue(face), GetGValue(face), GetBValue(face), 255)));
    // Once read, the file is not needed any more.
    Enter(dialog, 1042, settings_.logo.c_str());
    EXPECT_TRUE(previewShows(red));
    EXPECT_TRUE(RemoveFile(settings_.logo));
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
    Sleep(100);
    EXPECT_TRUE(previewShows(red));

    for (const bool cancel : {true, false}) {
        PostMessageW(dialog, WM_COMMAND, 1039, 0);
        const HWND browser = WaitForDialog(L"Select logo");
        ASSERT_NE(browser, nullptr);
        EXPECT_EQ(GetWindow(browser, GW_OWNER), dialog);
        // Found without its folder: the dialog starts in that of the path.
        EXPECT_TRUE(cancel ? PressButton(browser, IDCANCEL) : AnswerFileDialog(browser, L"blue.png"));
        EXPECT_TRUE(previewShows(cancel ? red : blue));
        EXPECT_EQ(Shown(dialog, 1042), cancel ? settings_.logo : bluePath);
        EXPECT_FALSE(IsWindowEnabled(program.Window()));
    }
    Shot(dialog, "options-logo");
    EXPECT_TRUE(PressButton(dialog, IDOK));
    EXPECT_TRUE(nadirIs(blue));
    EXPECT_EQ(program.Close(), 0);
    EXPECT_EQ(ReadSettings().logo, bluePath);
}

}  // namespace
}  // namespace skyvault::test
