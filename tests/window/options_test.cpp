// The options dialog: what it shows, stores and leaves alone.

#include <tuple>
#include <variant>

#include "app/options_dialog.h"
#include "app/window_helpers.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "settings/settings_table.h"
#include "tests/picture_io.h"
#include "tests/window/program_fixture.h"

namespace skyvault::test {
namespace {

constexpr const wchar_t* kTitle = L"Skyvault - Options";

/// The first letter of a control's class: Button, ComboBox, Edit.
wchar_t KindOf(HWND control) {
    wchar_t name[64] = L"";
    GetClassNameW(control, name, 64);
    return name[0];
}

/// What a control says: the number of a list's chosen item, an edit's text, Y or N.
std::wstring Shown(HWND dialog, int id) {
    const HWND control = GetDlgItem(dialog, id);
    if (KindOf(control) == L'C') return std::to_wstring(SendMessageW(control, CB_GETCURSEL, 0, 0));
    if (KindOf(control) == L'E') return TextOf(control);
    return IsDlgButtonChecked(dialog, id) == BST_CHECKED ? L"Y" : L"N";
}

/// Chooses, types or clicks it.
void Enter(HWND dialog, int id, const wchar_t* value) {
    const HWND control = GetDlgItem(dialog, id);
    if (KindOf(control) == L'C') {
        SendMessageW(control, CB_SETCURSEL, static_cast<WPARAM>(_wtoi(value)), 0);
    } else if (KindOf(control) == L'E') {
        SendMessageW(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(value));
    } else if (Shown(dialog, id) != value) {
        SendMessageW(control, BM_CLICK, 0, 0);
    }
}

void ExpectSettings(const AppState& actual, const AppState& expected) {
    for (const Setting& setting : SettingsTable()) {
        const bool same =
            std::visit([&](auto field) { return actual.*field == expected.*field; }, setting.field);
        EXPECT_TRUE(same) << ToUtf8(setting.key);
    }
}

struct Row {
    int id;
    const wchar_t *key, *before, *entered;
    const wchar_t* after = nullptr;  ///< null: as entered
};
const Row kRows[] = {
    {IDC_CUBE_RESOLUTION, L"Resolution0", L"6", L"0"},
    {IDC_EQUIRECTANGULAR_RESOLUTION, L"Resolution1", L"6", L"1"},
    {IDC_SPHERE_MAP_RESOLUTION, L"Resolution2", L"0", L"6"},
    {IDC_PREVIEW_RESOLUTION, L"Resolution3", L"3", L"1"},
    {IDC_NAMING_SYSTEM, L"FileNamingSystem", L"5", L"2"},
    {IDC_EXPORT_ALPHA, L"Transparency", L"Y", L"N"},
    {IDC_ANTIALIASING, L"Antialiasing", L"N", L"Y"},
    {IDC_COMPRESS_DDS, L"CompressDDS", L"N", L"Y"},
    {IDC_LOGO_PATH, L"Logo", L"C:\\not there\\ä.png", L""},
    {IDC_VORONOI_POINTS, L"VoronoiPoints", L"-7", L"12.9", L"12"},
    {IDC_VORONOI_SMOOTH, L"VoronoiSmooth", L"Y", L"N"},
    {IDC_VORONOI_POWER, L"VoronoiPower", L"0.123456", L"no number", L"0"},
    {IDC_VORONOI_BORDER, L"VoronoiBorder", L"1234567.5", L"1,5", L"1"},
    {IDC_BLOBS_POINTS, L"BlobsForceFields", L"16777217", L"12.9", L"12"},
    {IDC_BLOBS_POWER, L"BlobsPower", L"-0.5", L"", L"0"},
    {IDC_BLOBS_CONTRAST, L"BlobsContrast", L"0.000001", L"1e3", L"1000"},
    {IDC_FRACTAL_ROUGHNESS, L"FractalRoughness", L"0.7", L"2.5"},
    {IDC_FRACTAL_CONTRAST, L"FractalContrast", L"100", L"-0.25"},
    {IDC_LIGHTS, L"LightsLights", L"2147483647", L"dark", L"0"},
    {IDC_LIGHTS_BRIGHTNESS, L"LightsBrightness", L"0.3", L"0.4"},
    {IDC_POLYHEDRA_BORDER, L"PolyhedraBorder", L"0.05", L".5", L"0.5"},
    {IDC_TEXTURE_SIZE, L"PolyhedraTextureScale", L"1.1", L"1.2"},
    {IDC_FILMSTRIP_FRAMES, L"PolyhedraFrames", L"4", L"1e30", L"2147483647"},
};

class Options : public ProgramTest {
  protected:
    HWND Open() { return program_->Open(IDM_OPTIONS, kTitle); }
};

TEST_F(Options, EveryControlShowsItsSettingAndOnlyOkStoresIt) {
    AppState after = settings_;
    for (const Row& row : kRows) {
        ASSERT_TRUE(SetFromText(settings_, *FindSetting(row.key), row.before)) << row.id;
        ASSERT_TRUE(SetFromText(after, *FindSetting(row.key), row.after ? row.after : row.entered)) << row.id;
    }
    ASSERT_TRUE(Start());
    for (const int button : {IDCANCEL, IDOK}) {
        const HWND dialog = Open();
        ASSERT_NE(dialog, nullptr);
        for (const Row& row : kRows) {
            EXPECT_EQ(Shown(dialog, row.id), row.before) << row.id;
            Enter(dialog, row.id, row.entered);
        }
        EXPECT_TRUE(PressButton(dialog, button));
    }
    program_->Close();
    ExpectSettings(ReadSettings(), after);

    // Numbers that are in no list are left alone.
    settings_.resolution0 = 7;
    settings_.fileNamingSystem = -3;
    ASSERT_TRUE(Start());
    const HWND dialog = Open();
    ASSERT_NE(dialog, nullptr);
    for (const auto& [id, items, last] : {std::tuple{IDC_CUBE_RESOLUTION, 7, L"6 x 16384 x 16384"},
                                          {IDC_EQUIRECTANGULAR_RESOLUTION, 7, L"16384 x 8182"},
                                          {IDC_SPHERE_MAP_RESOLUTION, 7, L"16384 x 16384"},
                                          {IDC_PREVIEW_RESOLUTION, 4, L"UHD 8K 7680 x 4320"},
                                          {IDC_NAMING_SYSTEM, 6, L"0, 1, 2, 3, 4, 5 (numbers)"}}) {
        EXPECT_EQ(SendDlgItemMessageW(dialog, id, CB_GETCOUNT, 0, 0), items) << id;
        EXPECT_EQ(SendDlgItemMessageW(dialog, id, CB_FINDSTRINGEXACT, 0, reinterpret_cast<LPARAM>(last)),
                  items - 1);
    }
    EXPECT_EQ(Shown(dialog, IDC_CUBE_RESOLUTION) + Shown(dialog, IDC_NAMING_SYSTEM), L"-1-1") << "no choice";
    EXPECT_TRUE(PressButton(dialog, IDOK));
    program_->Close();
    ExpectSettings(ReadSettings(), settings_);
}

/// Where the colour is: the right edge of one control, round the middle of another.
RECT SwatchOf(HWND dialog) {
    RECT box{}, list{};
    GetWindowRect(GetDlgItem(dialog, IDC_EXPORT_ALPHA), &box);
    GetWindowRect(GetDlgItem(dialog, IDC_EQUIRECTANGULAR_RESOLUTION), &list);
    const LONG middle = (list.top + list.bottom) / 2;
    RECT swatch{box.right - 14, middle - 7, box.right, middle + 7};
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&swatch), 2);
    return swatch;
}

/// Waits until the swatch is filled with the colour and what is around it is not.
bool SwatchShows(HWND dialog, const Color8& colour) {
    const auto [left, top, right, bottom] = SwatchOf(dialog);
    return Eventually([&, left = left, top = top, right = right, bottom = bottom] {
        const auto shows = [&](LONG x, LONG y) { return PixelAt(dialog, x, y) == colour; };
        return shows(left, top) && shows(right - 1, bottom - 1) && !shows(left - 1, top) &&
               !shows(left, top - 1) && !shows(right, top) && !shows(left, bottom);
    });
}

TEST_F(Options, ChosenColourStandsAfterCancel) {
    constexpr int kRed = 706, kGreen = 707, kBlue = 708;  // the system dialog's
    settings_.backgroundColour = Color8(12, 34, 56, 77);
    settings_.transparency = true;
    std::jthread options = InBackground(
        [&] { ShowOptionsDialog(GetModuleHandleW(nullptr), nullptr, settings_, FileDialogs()); });
    const HWND dialog = WaitForDialog(kTitle);
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(SwatchShows(dialog, {12, 34, 56, 255}));
    // What is on the screen counts only after OK.
    Enter(dialog, IDC_EXPORT_ALPHA, L"N");
    // A press on the edge is over at once: it opens nothing.
    const RECT swatch = SwatchOf(dialog);
    DWORD_PTR answer = 0;
    for (const LPARAM at :
         {MAKELPARAM(swatch.left, swatch.top + 1), MAKELPARAM(swatch.left + 1, swatch.top),
          MAKELPARAM(swatch.right, swatch.top + 1), MAKELPARAM(swatch.left + 1, swatch.bottom)}) {
        EXPECT_TRUE(SendMessageTimeoutW(dialog, WM_LBUTTONDOWN, 0, at, SMTO_NORMAL, kPatience, &answer));
    }
    PostMessageW(dialog, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(swatch.left + 1, swatch.bottom - 1));
    HWND chooser = WaitForDialog(L"Color");
    ASSERT_NE(chooser, nullptr);
    EXPECT_EQ(GetWindow(chooser, GW_OWNER), dialog);
    EXPECT_EQ(Shown(chooser, kRed) + Shown(chooser, kGreen) + Shown(chooser, kBlue), L"123456");
    Enter(chooser, kRed, L"99");
    EXPECT_TRUE(PressButton(chooser, IDCANCEL));
    EXPECT_TRUE(SwatchShows(dialog, {12, 34, 56, 255}));

    PostMessageW(dialog, WM_COMMAND, IDC_CHANGE_COLOUR, 0);
    chooser = WaitForDialog(L"Color");
    ASSERT_NE(chooser, nullptr);
    for (const auto& [id, value] : {std::pair{kRed, L"200"}, {kGreen, L"100"}, {kBlue, L"0"}})
        Enter(chooser, id, value);
    EXPECT_TRUE(PressButton(chooser, IDOK));
    EXPECT_TRUE(SwatchShows(dialog, {200, 100, 0, 255}));
    EXPECT_TRUE(PressButton(dialog, IDCANCEL));
    options.join();
    EXPECT_TRUE(settings_.transparency);
    EXPECT_EQ(settings_.backgroundColour, Color8(200, 100, 0, 0));
}

TEST_F(Options, ResetAllStandsAfterCancel) {
    for (const Row& row : kRows) SetFromText(settings_, *FindSetting(row.key), row.before);
    settings_.view = static_cast<std::int32_t>(PanoramaFormat::Heart);
    settings_.crosshair = true;
    settings_.batchSourceFolder = L"C:\\in";
    const AppState defaults = DefaultSettingsOfScreen();
    ASSERT_TRUE(Start());
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR));
    const HWND dialog = Open();
    ASSERT_NE(dialog, nullptr);
    SendDlgItemMessageW(dialog, IDC_RESET_ALL, BM_CLICK, 0, 0);
    EXPECT_EQ(Shown(dialog, IDC_EQUIRECTANGULAR_RESOLUTION), L"4");
    EXPECT_EQ(Shown(dialog, IDC_LOGO_PATH), defaults.logo);
    EXPECT_TRUE(SwatchShows(dialog, kOpaqueWhite));
    EXPECT_TRUE(PressButton(dialog, IDCANCEL));
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR, false));
    EXPECT_TRUE(BecomesChecked(IDM_VIEW_EQUIRECTANGULAR));
    program_->Close();
    ExpectSettings(ReadSettings(), defaults);
}

TEST_F(Options, LogoIsPreviewedWhenBrowsedOrTypedAndStampedAfterOk) {
    const Color8 red(220, 10, 20, 255), blue(20, 40, 230, 255);
    settings_.logo = folder_ / L"red.png";
    for (const auto& [name, colour] : {std::pair{L"red.png", red}, {L"blue.png", blue}}) {
        Image picture(40, 20, PixelFormat::Rgb8);
        picture.Fill(PixelValue(colour));
        ASSERT_TRUE(Saved(picture, folder_ / name));
    }
    ASSERT_TRUE(StartWithPlace());
    Command(IDM_BIGGER_LOGO);
    const auto nadirIs = [&](const Color8& colour) {
        return Eventually([&] { return PixelAt(Window(), 500, 599) == colour; });
    };
    EXPECT_TRUE(nadirIs(red));

    const HWND dialog = Open();
    ASSERT_NE(dialog, nullptr);
    const auto previewShows = [&](const Color8& colour) {
        return Eventually([&] { return PixelAt(GetDlgItem(dialog, IDC_LOGO_PREVIEW), 20, 20) == colour; });
    };
    EXPECT_TRUE(previewShows(red));
    Enter(dialog, IDC_LOGO_PATH, L"no picture of that name");
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    EXPECT_TRUE(previewShows(Color8(GetRValue(face), GetGValue(face), GetBValue(face), 255)));
    Enter(dialog, IDC_LOGO_PATH, settings_.logo.c_str());
    EXPECT_TRUE(previewShows(red));
    for (const bool cancel : {true, false}) {
        PostMessageW(dialog, WM_COMMAND, IDC_LOGO_BROWSE, 0);
        const HWND browser = WaitForDialog(L"Select logo");
        ASSERT_NE(browser, nullptr);
        EXPECT_EQ(GetWindow(browser, GW_OWNER), dialog);
        // Found without its folder: the dialog starts in that of the path.
        EXPECT_TRUE(AnswerFileDialog(browser, L"blue.png", cancel ? IDCANCEL : IDOK));
        EXPECT_TRUE(previewShows(cancel ? red : blue));
        EXPECT_EQ(Shown(dialog, IDC_LOGO_PATH), folder_ / (cancel ? L"red.png" : L"blue.png"));
        EXPECT_FALSE(IsWindowEnabled(Window()));
    }
    EXPECT_TRUE(PressButton(dialog, IDOK));
    EXPECT_TRUE(nadirIs(blue));
    EXPECT_EQ(program_->Close(), 0);
    EXPECT_EQ(ReadSettings().logo, folder_ / L"blue.png");
}

}  // namespace
}  // namespace skyvault::test
