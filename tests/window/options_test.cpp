// The options dialog: what it shows, stores and leaves alone.

#include <fstream>
#include <map>
#include <tuple>
#include <variant>

#include "app/options_dialog.h"
#include "app/window_helpers.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "settings/settings_table.h"
#include "tests/data_table.h"
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

/// A row of data/option_controls.tsv.
struct Row {
    int id = 0;
    std::wstring key, before, entered, after;
};

std::vector<Row> Rows() {
    std::map<std::string, int> ids;
    std::ifstream header(SKYVAULT_SOURCE_DIR "/resources/resource_ids.h");
    for (std::string word, name; header >> word;) {
        if (word == "#define") header >> name >> ids[name];
    }
    std::vector<Row> rows;
    for (const DataRow& row : DataTable("option_controls"))
        rows.push_back({ids[row[0]], FromUtf8(row[1]), FromUtf8(row[2]), FromUtf8(row[3]), FromUtf8(row[4])});
    return rows;
}

class Options : public ProgramTest {
  protected:
    HWND Open() { return program_->Open(IDM_OPTIONS, kTitle); }
};

TEST_F(Options, EveryControlShowsItsSettingAndOnlyOkStoresIt) {
    AppState after = settings_;
    for (const Row& row : Rows()) {
        ASSERT_TRUE(SetFromText(settings_, *FindSetting(row.key), row.before)) << row.id;
        ASSERT_TRUE(SetFromText(after, *FindSetting(row.key), row.after)) << row.id;
    }
    ASSERT_TRUE(Start());
    for (const int button : {IDCANCEL, IDOK}) {
        const HWND dialog = Open();
        for (const Row& row : Rows()) {
            EXPECT_EQ(Shown(dialog, row.id), row.before) << row.id;
            Enter(dialog, row.id, row.entered.c_str());
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
    for (const auto& [id, last, text] : {std::tuple{IDC_CUBE_RESOLUTION, 6, L"6 x 16384 x 16384"},
                                         {IDC_EQUIRECTANGULAR_RESOLUTION, 6, L"16384 x 8182"},
                                         {IDC_SPHERE_MAP_RESOLUTION, 6, L"16384 x 16384"},
                                         {IDC_PREVIEW_RESOLUTION, 3, L"UHD 8K 7680 x 4320"},
                                         {IDC_NAMING_SYSTEM, 5, L"0, 1, 2, 3, 4, 5 (numbers)"}}) {
        const auto item = reinterpret_cast<LPARAM>(text);
        EXPECT_EQ(SendDlgItemMessageW(dialog, id, CB_FINDSTRINGEXACT, 0, item), last) << id;
    }
    EXPECT_EQ(Shown(dialog, IDC_CUBE_RESOLUTION) + Shown(dialog, IDC_NAMING_SYSTEM), L"-1-1") << "no choice";
    EXPECT_TRUE(PressButton(dialog, IDOK));
    program_->Close();
    ExpectSettings(ReadSettings(), settings_);
}

/// The middle of the colour: beside one control, at the height of another.
POINT SwatchOf(HWND dialog) {
    RECT box{}, list{};
    GetWindowRect(GetDlgItem(dialog, IDC_EXPORT_ALPHA), &box);
    GetWindowRect(GetDlgItem(dialog, IDC_EQUIRECTANGULAR_RESOLUTION), &list);
    POINT middle{box.right - 7, (list.top + list.bottom) / 2};
    MapWindowPoints(nullptr, dialog, &middle, 1);
    return middle;
}

/// Waits until the colour is there, up to the edges and no further.
bool SwatchShows(HWND dialog, const Color8& colour) {
    return Eventually([&] {
        const auto [x, y] = SwatchOf(dialog);
        for (const LONG d : {-8, -7, 6, 7}) {
            if ((PixelAt(dialog, x + d, y + d) == colour) != (d == -7 || d == 6)) return false;
        }
        return true;
    });
}

TEST_F(Options, ChosenColourStandsAfterCancel) {
    constexpr int kRed = 706, kGreen = 707, kBlue = 708;  // the system dialog's
    settings_.backgroundColour = Color8(12, 34, 56, 77);
    settings_.transparency = true;
    std::jthread options = InBackground(
        [&] { ShowOptionsDialog(GetModuleHandleW(nullptr), nullptr, settings_, FileDialogs()); });
    const HWND dialog = WaitForDialog(kTitle);
    EXPECT_TRUE(SwatchShows(dialog, {12, 34, 56, 255}));
    // What is on the screen counts only after OK.
    Enter(dialog, IDC_EXPORT_ALPHA, L"N");
    // A press beside the colour is over at once: it opens nothing.
    const auto [x, y] = SwatchOf(dialog);
    DWORD_PTR answer = 0;
    EXPECT_TRUE(SendMessageTimeoutW(dialog, WM_LBUTTONDOWN, 0, MAKELPARAM(x, y + 7), SMTO_NORMAL, kPatience,
                                    &answer));
    PostMessageW(dialog, WM_LBUTTONDOWN, 0, MAKELPARAM(x, y + 6));
    for (const bool chosen : {false, true}) {
        const HWND chooser = WaitForDialog(L"Color");
        EXPECT_EQ(GetWindow(chooser, GW_OWNER), dialog);
        EXPECT_EQ(Shown(chooser, kRed) + Shown(chooser, kGreen) + Shown(chooser, kBlue), L"123456");
        for (const auto& [id, value] : {std::pair{kRed, L"200"}, {kGreen, L"100"}, {kBlue, L"0"}})
            Enter(chooser, id, value);
        EXPECT_TRUE(PressButton(chooser, chosen ? IDOK : IDCANCEL));
        EXPECT_TRUE(SwatchShows(dialog, chosen ? Color8(200, 100, 0, 255) : Color8(12, 34, 56, 255)));
        if (!chosen) PostMessageW(dialog, WM_COMMAND, IDC_CHANGE_COLOUR, 0);
    }
    EXPECT_TRUE(PressButton(dialog, IDCANCEL));
    options.join();
    EXPECT_TRUE(settings_.transparency);
    EXPECT_EQ(settings_.backgroundColour, Color8(200, 100, 0, 0));
}

TEST_F(Options, ResetAllStandsAfterCancel) {
    for (const Row& row : Rows()) SetFromText(settings_, *FindSetting(row.key), row.before);
    settings_.view = static_cast<std::int32_t>(PanoramaFormat::Heart);
    settings_.crosshair = true;
    settings_.batchSourceFolder = L"C:\\in";
    const AppState defaults = DefaultSettingsOfScreen();
    ASSERT_TRUE(StartWithPlace());
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR));
    const HWND dialog = Open();
    SendDlgItemMessageW(dialog, IDC_RESET_ALL, BM_CLICK, 0, 0);
    EXPECT_EQ(Shown(dialog, IDC_EQUIRECTANGULAR_RESOLUTION), L"4");
    EXPECT_EQ(Shown(dialog, IDC_LOGO_PATH), defaults.logo);
    EXPECT_TRUE(SwatchShows(dialog, kOpaqueWhite));
    EXPECT_TRUE(PressButton(dialog, IDCANCEL));
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR, false));
    EXPECT_TRUE(BecomesChecked(IDM_VIEW_EQUIRECTANGULAR));
    EXPECT_TRUE(Shows(kFront, kFrontPlace)) << "the picture follows";
    program_->Close();
    AppState saved = ReadSettings();
    saved.importPath = defaults.importPath;
    ExpectSettings(saved, defaults);
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
    const auto becomes = [](HWND window, int x, int y, const Color8& colour) {
        return Eventually([&] { return PixelAt(window, x, y) == colour; });
    };
    EXPECT_TRUE(becomes(Window(), 500, 599, red)) << "the nadir";

    const HWND dialog = Open(), preview = GetDlgItem(dialog, IDC_LOGO_PREVIEW);
    EXPECT_TRUE(becomes(preview, 20, 20, red));
    Enter(dialog, IDC_LOGO_PATH, L"no picture of that name");
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    EXPECT_TRUE(becomes(preview, 20, 20, {GetRValue(face), GetGValue(face), GetBValue(face), 255}));
    Enter(dialog, IDC_LOGO_PATH, settings_.logo.c_str());
    EXPECT_TRUE(becomes(preview, 20, 20, red));
    for (const bool chosen : {false, true}) {
        PostMessageW(dialog, WM_COMMAND, IDC_LOGO_BROWSE, 0);
        const HWND browser = WaitForDialog(L"Select logo");
        EXPECT_EQ(GetWindow(browser, GW_OWNER), dialog);
        // Found without its folder: the dialog starts in that of the path.
        EXPECT_TRUE(AnswerFileDialog(browser, L"blue.png", chosen ? IDOK : IDCANCEL));
        EXPECT_TRUE(becomes(preview, 20, 20, chosen ? blue : red));
    }
    EXPECT_TRUE(PressButton(dialog, IDOK));
    EXPECT_TRUE(becomes(Window(), 500, 599, blue));
    EXPECT_EQ(program_->Close(), 0);
    EXPECT_EQ(ReadSettings().logo, folder_ / L"blue.png");
}

}  // namespace
}  // namespace skyvault::test
