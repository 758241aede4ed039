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
#include "tests/data_table.h"

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
    EXPECT_EQ(menu.size(), 29u) << "commands that are no layout's";
}

TEST(Resources, EveryKeyRunsTheCommandWhoseMenuLineNamesIt) {
    std::map<std::wstring, WPARAM> keys;
    for (const DataRow& row : DataTable("menu_keys"))
        keys[FromUtf8(row[0])] = std::stoul(row[1], nullptr, 16);
    std::map<WPARAM, UINT> expected = {{VK_SPACE, IDM_VIEW_PREVIEW}}, withControl;
    for (const auto& [id, line] : LoadedMenu()) {
        if (line.key == L"M") {
            for (const wchar_t c : {L'M', L'm'}) EXPECT_EQ(CommandOfCharacter(c), id);
        } else if (line.key.starts_with(L"Ctrl+")) {
            withControl[line.key.back()] = id;
        } else if (!line.key.empty()) {
            ASSERT_TRUE(keys.contains(line.key)) << ToUtf8(line.key);
            expected[keys[line.key]] = id;
        }
    }
    for (WPARAM key = 0; key < 256; ++key) {
        EXPECT_EQ(CommandOfKey(key, false), expected[key]) << std::hex << key;
        EXPECT_EQ(CommandOfKey(key, true), expected[key] ? expected[key] : withControl[key]) << key;
    }
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
    std::wstring windowClass, text;
    LONG_PTR style;
    RECT place;        ///< in the dialog
    LONG neededWidth;  ///< for the text and what is beside it

    bool IsGroupBox() const { return windowClass == L"Button" && (style & BS_TYPEMASK) == BS_GROUPBOX; }
};

Part PartOf(HWND control) {
    wchar_t name[64] = L"", text[128] = L"";
    GetClassNameW(control, name, 64);
    GetWindowTextW(control, text, 128);
    Part part{name, text, GetWindowLongPtrW(control, GWL_STYLE), {}, 0};
    GetWindowRect(control, &part.place);
    MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&part.place), 2);
    // A link's text stands between the marks <a> and </a>.
    const std::wstring shown =
        part.windowClass == L"SysLink" ? part.text.substr(3, part.text.size() - 7) : text;
    const HDC context = GetDC(control);
    SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
    RECT ink{};
    DrawTextW(context, shown.c_str(), -1, &ink, DT_CALCRECT | DT_SINGLELINE);
    ReleaseDC(control, context);
    const int beside = part.windowClass == L"Button" ? GetSystemMetrics(SM_CXMENUCHECK) + 5 : 0;
    part.neededWidth = ink.right + beside;
    return part;
}

TEST(Resources, TextsOfDialogsFitKeysAreUniqueAndNothingOverlaps) {
    const INITCOMMONCONTROLSEX links{sizeof links, ICC_LINK_CLASS};
    InitCommonControlsEx(&links);
    const auto nothing = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; };
    for (const int id : {IDD_ABOUT, IDD_OPTIONS, IDD_BATCH, IDD_PROGRESS}) {
        SCOPED_TRACE(id);
        const HWND dialog =
            CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), nullptr, nothing, 0);
        ASSERT_NE(dialog, nullptr);
        RECT client{};
        GetClientRect(dialog, &client);
        std::set<wint_t> keys;
        std::vector<Part> parts;  // in tab order
        for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT))
            parts.push_back(PartOf(child));
        for (std::size_t i = 0; i < parts.size(); ++i) {
            const Part& part = parts[i];
            SCOPED_TRACE(ToUtf8(part.windowClass + L' ' + part.text));
            EXPECT_LE(part.neededWidth, part.place.right - part.place.left);
            RECT both{};
            EXPECT_TRUE(UnionRect(&both, &part.place, &client) && EqualRect(&both, &client)) << "sticks out";
            if (const std::size_t mark = part.text.find(L'&'); mark != std::wstring::npos) {
                EXPECT_TRUE(keys.insert(std::towlower(part.text.at(mark + 1))).second)
                    << "its key is another's too";
            }
            if (part.windowClass == L"Static" && !part.text.empty()) {
                EXPECT_TRUE(i + 1 < parts.size() && (parts[i + 1].style & WS_TABSTOP) != 0)
                    << "labels nothing";
            }
            for (std::size_t k = 0; k < i; ++k) {
                if (part.IsGroupBox() != parts[k].IsGroupBox()) continue;
                EXPECT_FALSE(IntersectRect(&both, &part.place, &parts[k].place)) << ToUtf8(parts[k].text);
            }
        }
        DestroyWindow(dialog);
    }
}

}  // namespace
}  // namespace skyvault::test
