// The menu bar and the icon as they come out of the program's resources.

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
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

std::vector<MenuLine> LoadedMenu() {
    std::vector<MenuLine> lines;
    const HMENU menu = LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDM_MAIN));
    Walk(menu, L"", lines);
    DestroyMenu(menu);
    return lines;
}

TEST(Resources, EveryLayoutCommandHasItsMenuItemAndNoneIsLeftOver) {
    std::set<UINT> ofMenu;
    const std::vector<MenuLine> menu = LoadedMenu();
    for (const MenuLine& line : menu) {
        if (line.id == 0) continue;
        EXPECT_TRUE(ofMenu.insert(line.id).second) << line.id << " is there twice";
    }
    // Each stands under its layout's name where it belongs.
    std::size_t layoutCommands = 0;
    for (const LayoutRow& row : Layouts()) {
        const bool generator = row.exportCommand == 0;
        const std::pair<UINT, const wchar_t*> commands[] = {
            {row.importCommand, generator ? L"GENERATE" : L"FILE>Import 360° photo"},
            {row.exportCommand, L"FILE>Export 360° photo"},
            {row.viewCommand, L"VIEW"}};
        for (const auto& [id, popup] : commands) {
            if (id == 0) continue;
            ++layoutCommands;
            const auto line = std::find_if(menu.begin(), menu.end(),
                                           [id = id](const MenuLine& item) { return item.id == id; });
            ASSERT_NE(line, menu.end()) << row.consoleName << ' ' << id;
            EXPECT_TRUE(line->popup.starts_with(popup)) << row.consoleName << ' ' << id;
            const std::wstring name = line->text.substr(0, line->text.find_first_of(L".\t"));
            EXPECT_EQ(_wcsicmp(name.c_str(), row.name), 0) << row.consoleName << ' ' << id;
        }
    }
    constexpr std::size_t kOtherCommands = 24;  // those of MenuCommand
    EXPECT_EQ(ofMenu.size(), layoutCommands + kOtherCommands);
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
