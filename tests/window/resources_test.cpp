// The menu bar, the icon and the dialogs as they come out of the program's resources.

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h:
#include <commctrl.h>

#include <algorithm>
#include <cwctype>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "app/menu_commands.h"
#include "platform/utf8.h"
#include "resources/resource_ids.h"
#include "session/layouts.h"

namespace skyvault::test {
namespace {

struct MenuLine {
    std::wstring popup;  ///< "FILE>Import 360° photo"
    std::wstring text, key;
};

/// Every command of the menu; a second line of one command fails.
void Walk(HMENU menu, const std::wstring& popup, std::map<UINT, MenuLine>& lines) {
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[128] = L"";
        GetMenuStringW(menu, static_cast<UINT>(i), text, 128, MF_BYPOSITION);
        const std::wstring all(text), words = all.substr(0, all.find_first_of(L".\t"));
        const std::size_t tab = all.find(L'\t');
        if (const HMENU sub = GetSubMenu(menu, i)) {
            Walk(sub, popup.empty() ? all : popup + L">" + all, lines);
        } else if (const UINT id = GetMenuItemID(menu, i); id != 0) {
            const MenuLine line{popup, words, tab == std::wstring::npos ? L"" : all.substr(tab + 1)};
            EXPECT_TRUE(lines.emplace(id, line).second) << id << " is there twice";
        }
    }
}

std::map<UINT, MenuLine> LoadedMenu() {
    std::map<UINT, MenuLine> lines;
    const HMENU menu = LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_MENU));
    Walk(menu, L"", lines);
    DestroyMenu(menu);
    return lines;
}

TEST(Resources, EveryLayoutCommandStandsUnderItsLayoutsName) {
    std::map<UINT, MenuLine> menu = LoadedMenu();
    for (const LayoutRow& row : Layouts()) {
        const bool generator = row.exportCommand == 0;
        const std::pair<UINT, const wchar_t*> commands[] = {
            {row.importCommand, generator ? L"GENERATE" : L"FILE>Import 360° photo"},
            {row.exportCommand, L"FILE>Export 360° photo"},
            {row.viewCommand, L"VIEW"}};
        for (const auto& [id, popup] : commands) {
            if (id == 0) continue;
            EXPECT_TRUE(menu[id].popup.starts_with(popup)) << row.consoleName << ' ' << id;
            EXPECT_EQ(_wcsicmp(menu[id].text.c_str(), row.name), 0) << row.consoleName << ' ' << id;
            menu.erase(id);
        }
    }
    EXPECT_EQ(menu.size(), 24u) << "commands that are no layout's";
}

TEST(Resources, EveryKeyRunsTheCommandWhoseMenuLineNamesIt) {
    using Key = std::pair<const std::wstring, WPARAM>;
    std::map<std::wstring, WPARAM> keys = {Key{L"+", VK_ADD},
                                           Key{L"-", VK_SUBTRACT},
                                           Key{L"TAB", VK_TAB},
                                           Key{L"HOME", VK_HOME},
                                           Key{L"END", VK_END},
                                           Key{L"INSERT", VK_INSERT},
                                           Key{L"DELETE", VK_DELETE},
                                           Key{L"PAGE UP", VK_PRIOR},
                                           Key{L"PAGE DOWN", VK_NEXT},
                                           Key{L"ARROW UP", VK_UP},
                                           Key{L"ARROW DOWN", VK_DOWN},
                                           Key{L"ARROW LEFT", VK_LEFT},
                                           Key{L"ARROW RIGHT", VK_RIGHT}};
    for (WORD number = 1; number <= 12; ++number) keys[L"F" + std::to_wstring(number)] = VK_F1 + number - 1u;
    std::map<WPARAM, UINT> expected = {{VK_SPACE, IDM_VIEW_PREVIEW}};
    for (const auto& [id, line] : LoadedMenu()) {
        if (line.key == L"M") {
            for (const wchar_t c : {L'M', L'm'}) EXPECT_EQ(CommandOfCharacter(c), id);
        } else if (!line.key.empty()) {
            ASSERT_TRUE(keys.contains(line.key)) << ToUtf8(line.key);
            expected[keys[line.key]] = id;
        }
    }
    for (WPARAM key = 0; key < 256; ++key) EXPECT_EQ(CommandOfKey(key), expected[key]) << std::hex << key;
    EXPECT_EQ(CommandOfCharacter(L'+'), 0);
}

TEST(Resources, IconHasSmallAndLargePictures) {
    // Six bytes of head, and fourteen for each picture that begin with its width; 256 is written as 0.
    const HRSRC group = FindResourceW(nullptr, MAKEINTRESOURCEW(IDI_SKYVAULT), MAKEINTRESOURCEW(14));
    ASSERT_NE(group, nullptr);
    const auto* const bytes = static_cast<const std::uint8_t*>(LockResource(LoadResource(nullptr, group)));
    std::set<int> widths;
    for (DWORD at = 6; at < SizeofResource(nullptr, group); at += 14) widths.insert(bytes[at]);
    for (const int width : {16, 32, 48, 0}) EXPECT_TRUE(widths.contains(width)) << width;
}

struct Part {
    HWND window;
    std::wstring windowClass, text;
    RECT place;  ///< in the dialog
    LONG_PTR style;

    bool IsButton(LONG_PTR type) const { return windowClass == L"Button" && (style & BS_TYPEMASK) == type; }
};

/// The controls in tab order.
std::vector<Part> PartsOf(HWND dialog) {
    std::vector<Part> parts;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        wchar_t name[64] = L"", text[128] = L"";
        GetClassNameW(child, name, 64);
        GetWindowTextW(child, text, 128);
        RECT place{};
        GetWindowRect(child, &place);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
        parts.push_back({child, name, text, place, GetWindowLongPtrW(child, GWL_STYLE)});
    }
    return parts;
}

LONG WidthOf(HWND control, const std::wstring& text) {
    const HDC context = GetDC(control);
    SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
    RECT rect{};
    DrawTextW(context, text.c_str(), -1, &rect, DT_CALCRECT | DT_SINGLELINE);
    ReleaseDC(control, context);
    return rect.right;
}

/// Pixels the control needs for its text, with what is beside the text.
LONG NeededWidth(const Part& part) {
    const LONG average = std::max(1L, WidthOf(part.window, L"xxxxxxxxxx") / 10);
    LONG beside = 0;
    if (part.windowClass == L"Button") beside = 3 * average;
    if (part.IsButton(BS_AUTOCHECKBOX)) beside = GetSystemMetrics(SM_CXMENUCHECK) + average;
    // A link's text stands between the marks <a> and </a>.
    const bool link = part.windowClass == L"SysLink";
    return WidthOf(part.window, link ? part.text.substr(3, part.text.size() - 7) : part.text) + beside;
}

class DialogLayout : public testing::TestWithParam<int> {};

TEST_P(DialogLayout, TextsFitKeysAreUniqueAndNothingOverlaps) {
    const INITCOMMONCONTROLSEX links{sizeof links, ICC_LINK_CLASS};
    InitCommonControlsEx(&links);
    const auto nothing = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; };
    const HWND dialog =
        CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(GetParam()), nullptr, nothing, 0);
    ASSERT_NE(dialog, nullptr);
    RECT client{};
    GetClientRect(dialog, &client);
    std::set<wint_t> keys;
    const std::vector<Part> parts = PartsOf(dialog);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Part& part = parts[i];
        SCOPED_TRACE(ToUtf8(part.windowClass + L' ' + part.text));
        EXPECT_LE(NeededWidth(part), part.place.right - part.place.left);
        RECT both{};
        EXPECT_TRUE(UnionRect(&both, &part.place, &client) && EqualRect(&both, &client)) << "sticks out";
        if (const std::size_t mark = part.text.find(L'&'); mark != std::wstring::npos) {
            EXPECT_TRUE(keys.insert(std::towlower(part.text.at(mark + 1))).second)
                << "its key is another's too";
        }
        if (part.windowClass == L"Static" && !part.text.empty()) {
            EXPECT_TRUE(i + 1 < parts.size() && (parts[i + 1].style & WS_TABSTOP) != 0) << "labels nothing";
        }
        for (std::size_t k = 0; k < i; ++k) {
            if (part.IsButton(BS_GROUPBOX) != parts[k].IsButton(BS_GROUPBOX)) continue;
            EXPECT_FALSE(IntersectRect(&both, &part.place, &parts[k].place)) << ToUtf8(parts[k].text);
        }
    }
    DestroyWindow(dialog);
}

INSTANTIATE_TEST_SUITE_P(Dialogs, DialogLayout,
                         testing::Values(IDD_ABOUT, IDD_OPTIONS, IDD_BATCH, IDD_PROGRESS));

}  // namespace
}  // namespace skyvault::test
