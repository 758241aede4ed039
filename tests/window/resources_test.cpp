// The menu bar, the icon and the dialogs as they come out of the program's resources.

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h:
#include <commctrl.h>

#include <set>
#include <string>
#include <vector>

#include "resources/resource_ids.h"
#include "session/commands.h"
#include "session/layouts.h"

namespace skyvault {
namespace {

struct MenuLine {
    std::wstring popup;  ///< "FILE>Import 360° photo"
    std::wstring text;   ///< empty: a separator
    UINT id;
    friend bool operator==(const MenuLine&, const MenuLine&) = default;
};

void Walk(HMENU menu, const std::wstring& popup, std::vector<MenuLine>& lines) {
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[128] = L"";
        GetMenuStringW(menu, static_cast<UINT>(i), text, 128, MF_BYPOSITION);
        if (const HMENU sub = GetSubMenu(menu, i)) {
            Walk(sub, popup.empty() ? text : popup + L">" + text, lines);
        } else {
            lines.push_back({popup, text, GetMenuItemID(menu, i)});
        }
    }
}

struct Popup {
    const wchar_t* name;
    std::vector<std::pair<const wchar_t*, UINT>> items;
};

const std::vector<Popup> kMenuBar = {
    {L"FILE>Import 360° photo",
     {{L"Equirectangular...", 32868},
      {L"DirectX DDS...", 32779},
      {L"QuickTime VR...", 32780},
      {L"Horizontal cross...", 32782},
      {L"Vertical cross...", 32783},
      {L"Strip...", 32784},
      {L"Strip XYZ...", 32813},
      {L"Single Files...", 32803},
      {L"Sphere map...", 32773},
      {L"Mirror ball...", 32807},
      {L"Heart...", 32811},
      {L"", 0},
      {L"Interior strip", 32920},
      {L"Interior square", 32914}}},
    {L"FILE>Export 360° photo",
     {{L"Equirectangular...", 32869},
      {L"DirectX DDS...", 32786},
      {L"QuickTime VR...", 32785},
      {L"Horizontal cross...", 32789},
      {L"Vertical cross...", 32790},
      {L"Strip...", 32791},
      {L"Strip XYZ...", 32814},
      {L"Single files...", 32805},
      {L"Sphere map...", 32788},
      {L"Mirror ball...", 32808},
      {L"Heart...", 32810},
      {L"Preview...", 32899},
      {L"", 0},
      {L"Interior strip", 32921},
      {L"Interior square", 32918},
      {L"", 0},
      {L"HTML...", 32900}}},
    {L"FILE", {{L"Batch processing...", 32820}, {L"Exit", 105}}},
    {L"VIEW",
     {{L"Equirectangular\tF1", 32867},
      {L"Horizontal cross\tF2", 32775},
      {L"Vertical cross\tF3", 32774},
      {L"Strip\tF4", 32776},
      {L"Strip XYZ\tF5", 32812},
      {L"Single files\tF6", 32802},
      {L"Sphere map\tF7", 32778},
      {L"Mirror ball\tF8", 32806},
      {L"Heart\tF9", 32809},
      {L"Preview\tF11", 32859},
      {L"Interior strip", 32913},
      {L"Interior square", 32911},
      {L"Bigger FOV\t+", 32890},
      {L"Smaller FOV\t-", 32891},
      {L"Crosshair\tTAB", 32889},
      {L"Magnifying glass\tM", 32903}}},
    {L"MODIFY",
     {{L"Heading right\tARROW RIGHT", 32861},
      {L"Heading left\tARROW LEFT", 32860},
      {L"Pitch up\tARROW UP", 32862},
      {L"Pitch down\tARROW DOWN", 32863},
      {L"Roll clockwise\tPAGE UP", 32865},
      {L"Roll counterclockwise\tPAGE DOWN", 32866},
      {L"Bigger logo\tINSERT", 32901},
      {L"Smaller logo\tDELETE", 32902},
      {L"Move horizon up\tHOME", 32872},
      {L"Move horizon down\tEND", 32873},
      {L"Flip horizontal", 32905},
      {L"Mirror top to bottom", 32851},
      {L"Mirror front to back", 32849},
      {L"Reset all modifications", 32897}}},
    {L"GENERATE",
     {{L"Voronoi...", 32826},
      {L"Blobs...", 32831},
      {L"Rectangles...", 32844},
      {L"Fractal planet...", 32828},
      {L"Dots of light...", 32829}}},
    {L"GENERATE>Polyhedra",
     {{L"Tetrahedron...", 32838},
      {L"Hexahedron (cube)...", 32839},
      {L"Octahedron...", 32840},
      {L"Dodecahedron...", 32841},
      {L"Icosahedron...", 32842},
      {L"Football...", 32843}}},
    {L"SETTINGS", {{L"Options...", 32847}}},
    {L"HELP", {{L"User guide", 32818}, {L"Community", 32846}, {L"About Skyvault", 104}}},
};

std::vector<MenuLine> LoadedMenu() {
    std::vector<MenuLine> lines;
    const HMENU menu = LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDM_MAIN));
    Walk(menu, L"", lines);
    DestroyMenu(menu);
    return lines;
}

TEST(Resources, MenuBarIsComplete) {
    std::vector<MenuLine> expected;
    for (const Popup& popup : kMenuBar) {
        for (const auto& [text, id] : popup.items) expected.push_back({popup.name, text, id});
    }
    const std::vector<MenuLine> loaded = LoadedMenu();
    for (std::size_t i = 0; i < std::min(loaded.size(), expected.size()); ++i) {
        EXPECT_EQ(loaded[i], expected[i])
            << "line " << i << ": id " << loaded[i].id << ", expected " << expected[i].id;
    }
    EXPECT_EQ(loaded.size(), expected.size());
}

TEST(Resources, EveryLayoutCommandHasItsMenuItemAndNoneIsLeftOver) {
    std::set<UINT> ofMenu;
    for (const MenuLine& line : LoadedMenu()) {
        if (line.id == 0) continue;
        EXPECT_TRUE(ofMenu.insert(line.id).second) << line.id << " is there twice";
    }
    std::size_t layoutCommands = 0;
    for (const LayoutRow& row : Layouts()) {
        for (const UINT id : {row.importCommand, row.exportCommand, row.viewCommand}) {
            if (id == 0) continue;
            ++layoutCommands;
            EXPECT_TRUE(ofMenu.contains(id)) << row.consoleName << ' ' << id;
        }
    }
    constexpr std::size_t kOtherCommands = 24;  // those of MenuCommand
    EXPECT_EQ(ofMenu.size(), layoutCommands + kOtherCommands);
}

TEST(Resources, DialogsHoldTheControlsTheProgramUses) {
    const INITCOMMONCONTROLSEX links{sizeof links, ICC_LINK_CLASS};
    InitCommonControlsEx(&links);
    struct Row {
        int dialog;
        int control;
        const wchar_t* windowClass;
    };
    for (const Row& row :
         {Row{IDD_ABOUT, IDOK, L"Button"}, Row{IDD_ABOUT, IDC_ABOUT_GUIDE, L"SysLink"},
          Row{IDD_ABOUT, IDC_ABOUT_COMMUNITY, L"SysLink"}, Row{IDD_PROGRESS, 1044, L"Static"},
          Row{IDD_PROGRESS, 1045, L"msctls_progress32"}}) {
        const auto nothing = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; };
        const HWND dialog =
            CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(row.dialog), nullptr, nothing, 0);
        ASSERT_NE(dialog, nullptr) << row.dialog;
        wchar_t name[64] = L"";
        GetClassNameW(GetDlgItem(dialog, row.control), name, 64);
        EXPECT_STREQ(name, row.windowClass) << row.dialog << '/' << row.control;
        DestroyWindow(dialog);
    }
}

TEST(Resources, IconHasSmallAndLargePictures) {
    for (const int size : {16, 32, 48, 256}) {
        const auto icon =
            static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_SKYVAULT),
                                          IMAGE_ICON, size, size, LR_DEFAULTCOLOR));
        ASSERT_NE(icon, nullptr) << size;
        ICONINFO info{};
        ASSERT_TRUE(GetIconInfo(icon, &info)) << size;
        BITMAP bitmap{};
        GetObjectW(info.hbmColor, sizeof bitmap, &bitmap);
        EXPECT_EQ(bitmap.bmWidth, size);
        DeleteObject(info.hbmColor);
        DeleteObject(info.hbmMask);
        DestroyIcon(icon);
    }
}

}  // namespace
}  // namespace skyvault
