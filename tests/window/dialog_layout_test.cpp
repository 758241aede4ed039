// The dialogs as they are laid out: every text has its room, every key and every label its one control.

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h:
#include <commctrl.h>

#include <algorithm>
#include <cwctype>
#include <set>
#include <string>
#include <vector>

#include "platform/utf8.h"
#include "resources/resource_ids.h"

namespace skyvault::test {
namespace {

struct Part {
    HWND window;
    std::wstring windowClass, text;
    RECT place;  ///< in the dialog
    LONG_PTR style;

    bool IsButton(LONG_PTR type) const { return windowClass == L"Button" && (style & BS_TYPEMASK) == type; }
    bool IsLabel() const { return windowClass == L"Static" && !text.empty(); }
    bool HoldsOthers() const { return IsButton(BS_GROUPBOX); }
};

/// A dialog made from the program's resources, never shown.
class LaidOutDialog {
  public:
    explicit LaidOutDialog(int id) {
        const INITCOMMONCONTROLSEX links{sizeof links, ICC_LINK_CLASS};
        InitCommonControlsEx(&links);
        const auto nothing = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; };
        window_ = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), nullptr, nothing, 0);
        for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT)) {
            wchar_t name[64] = L"", text[128] = L"";
            GetClassNameW(child, name, 64);
            GetWindowTextW(child, text, 128);
            RECT place{};
            GetWindowRect(child, &place);
            MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&place), 2);
            parts.push_back({child, name, text, place, GetWindowLongPtrW(child, GWL_STYLE)});
        }
    }
    ~LaidOutDialog() { DestroyWindow(window_); }
    LaidOutDialog(const LaidOutDialog&) = delete;
    LaidOutDialog& operator=(const LaidOutDialog&) = delete;

    HWND Window() const { return window_; }

    std::vector<Part> parts;  ///< in tab order

  private:
    HWND window_ = nullptr;
};

LONG WidthOf(HWND control, const std::wstring& text) {
    const HDC context = GetDC(control);
    const HGDIOBJ before =
        SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
    RECT rect{};
    DrawTextW(context, text.c_str(), -1, &rect, DT_CALCRECT | DT_SINGLELINE);
    SelectObject(context, before);
    ReleaseDC(control, context);
    return rect.right;
}

/// A link's text without the marks around it.
std::wstring TextOfLink(const std::wstring& text) {
    return text.substr(3, text.size() - std::wstring(L"<a></a>").size());
}

/// Pixels the control needs for its text, with what is beside the text.
LONG NeededWidth(const Part& part) {
    const LONG average = std::max(1L, WidthOf(part.window, L"xxxxxxxxxx") / 10);
    if (part.IsButton(BS_AUTOCHECKBOX)) {
        return WidthOf(part.window, part.text) + GetSystemMetrics(SM_CXMENUCHECK) + average;
    }
    if (part.windowClass == L"Button") return WidthOf(part.window, part.text) + 3 * average;
    if (part.windowClass == L"SysLink") return WidthOf(part.window, TextOfLink(part.text));
    return WidthOf(part.window, part.text);
}

wchar_t AccessKey(const std::wstring& text) {
    const std::size_t mark = text.find(L'&');
    if (mark == std::wstring::npos || mark + 1 == text.size()) return L'\0';
    return static_cast<wchar_t>(std::towlower(text[mark + 1]));
}

bool Overlap(const RECT& a, const RECT& b) {
    RECT both{};
    return IntersectRect(&both, &a, &b) != FALSE;
}

class DialogLayout : public testing::TestWithParam<int> {};

TEST_P(DialogLayout, TextsFitKeysAreUniqueAndNothingOverlaps) {
    const LaidOutDialog dialog(GetParam());
    ASSERT_NE(dialog.Window(), nullptr);
    RECT client{}, window{};
    GetClientRect(dialog.Window(), &client);
    GetWindowRect(dialog.Window(), &window);
    const double scale = GetDpiForWindow(dialog.Window()) / 96.0;
    // The smallest screen of our days without its task bar.
    EXPECT_LE(window.right - window.left, 1366 * scale);
    EXPECT_LE(window.bottom - window.top, (768 - 48) * scale);

    std::set<wchar_t> keys;
    for (std::size_t i = 0; i < dialog.parts.size(); ++i) {
        const Part& part = dialog.parts[i];
        const std::string name = ToUtf8(part.windowClass + L' ' + part.text);
        EXPECT_LE(NeededWidth(part), part.place.right - part.place.left) << name;
        EXPECT_TRUE(part.place.left >= 0 && part.place.top >= 0 && part.place.right <= client.right &&
                    part.place.bottom <= client.bottom)
            << name;
        const wchar_t key = AccessKey(part.text);
        EXPECT_TRUE(key == L'\0' || keys.insert(key).second) << name;
        if (part.IsLabel()) {
            const Part* const next = i + 1 < dialog.parts.size() ? &dialog.parts[i + 1] : nullptr;
            EXPECT_TRUE(next != nullptr && (next->style & WS_TABSTOP) != 0) << name << " labels nothing";
        }
        for (std::size_t k = 0; k < i; ++k) {
            if (part.HoldsOthers() != dialog.parts[k].HoldsOthers()) continue;
            EXPECT_FALSE(Overlap(part.place, dialog.parts[k].place))
                << name << " and " << ToUtf8(dialog.parts[k].text);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Dialogs, DialogLayout,
                         testing::Values(IDD_ABOUT, IDD_OPTIONS, IDD_BATCH, IDD_PROGRESS));

}  // namespace
}  // namespace skyvault::test
