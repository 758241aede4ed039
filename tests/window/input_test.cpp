// The window's input: real keys, the mouse, dropped files.

#include <windows.h>
// After windows.h:
#include <shlobj.h>

#include <algorithm>

#include "tests/window/program_fixture.h"

namespace skyvault::test {
namespace {

class RealInput : public ProgramTest {};

TEST_F(RealInput, KeysDoWhatTheirMenuItemsDo) {
    ASSERT_TRUE(StartWithPlace());
    ASSERT_TRUE(Activate(Window()));
    struct Row {
        std::initializer_list<WORD> keys;
        Place place;  ///< ten pixels to a degree
    };
    // Ctrl goes before Shift.
    for (const Row& row : {Row{{VK_RIGHT}, {1810, 900}}, Row{{VK_SHIFT, VK_LEFT}, {1650, 900}},
                           Row{{VK_CONTROL, VK_RIGHT}, {1802, 900}}, Row{{VK_UP}, {1800, 890}},
                           Row{{VK_CONTROL, VK_SHIFT, VK_RIGHT}, {1802, 900}}}) {
        const HeldKeys held(row.keys);
        EXPECT_TRUE(Shows(kFront, row.place)) << std::hex << *(row.keys.end() - 1);
        Command(IDM_RESET_ALL);
        ASSERT_TRUE(Shows(kFront, kFrontPlace));
    }
    // A key's repetition counts while it is down, and is late once it is not.
    constexpr LPARAM kRepeated = 1 << 30;
    SendMessageW(Window(), WM_KEYDOWN, VK_RIGHT, kRepeated);
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    {
        const HeldKeys held({VK_RIGHT});
        EXPECT_TRUE(Shows(kFront, {1810, 900}));
        SendMessageW(Window(), WM_KEYDOWN, VK_RIGHT, kRepeated);
        EXPECT_TRUE(Shows(kFront, {1820, 900}));
    }
    // Which is one step to be taken back.
    for (const auto& [key, column] : {std::pair<WORD, int>{'Z', 1800}, {'Y', 1820}, {'Z', 1800}}) {
        const HeldKeys held({VK_CONTROL, key});
        EXPECT_TRUE(Shows(kFront, {column, 900}));
    }
    Press(VK_F11);
    ASSERT_TRUE(Shows(kBeside, kBesidePlace));
    Press(VK_ADD);
    EXPECT_TRUE(Shows(kBeside, {1800 + 528, 900}));
    // Typed characters, small and capital.
    for (const bool on : {true, false}) {
        const HeldKeys capital(on ? std::initializer_list<WORD>{'M'}
                                  : std::initializer_list<WORD>{VK_SHIFT, 'M'});
        EXPECT_TRUE(BecomesChecked(IDM_MAGNIFYING_GLASS, on));
    }
    Press(VK_TAB);
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR));
}

class WindowMouse : public ProgramTest {
  protected:
    /// Drops the files as the system does.
    void Drop(const std::vector<std::wstring>& paths) const {
        std::wstring list;
        for (const std::wstring& path : paths) list += path + L'\0';
        const std::size_t bytes = (list.size() + 1) * sizeof(wchar_t);
        const HGLOBAL memory = GlobalAlloc(GHND, sizeof(DROPFILES) + bytes);
        auto* const files = static_cast<DROPFILES*>(GlobalLock(memory));
        files->pFiles = sizeof(DROPFILES);
        files->fWide = TRUE;
        std::copy_n(list.c_str(), list.size() + 1, reinterpret_cast<wchar_t*>(files + 1));
        GlobalUnlock(memory);
        PostMessageW(Window(), WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0);
    }
    void Mouse(UINT message, int x, int y, bool held = true) const {
        SendMessageW(Window(), message, held ? MK_LBUTTON : 0, MAKELPARAM(x, y));
    }
    void Wheel(int turn) const {
        SendMessageW(Window(), WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(turn)), MAKELPARAM(500, 350));
    }
    bool HasCapture() const { return ThreadOf(Window()).hwndCapture == Window(); }
    void Drag(int x, int y, int toX, int toY) const {
        Mouse(WM_LBUTTONDOWN, x, y);
        Mouse(WM_MOUSEMOVE, toX, toY);
    }
};

TEST_F(WindowMouse, DroppedFilesOpenOrTellWhyNot) {
    const auto isGreyed = [&] {
        const HMENU modify = GetSubMenu(GetMenu(Window()), 2);
        SendMessageW(Window(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(modify), 2);
        return (GetMenuState(modify, IDM_HEADING_LEFT, MF_BYCOMMAND) & MF_GRAYED) != 0;
    };
    ASSERT_TRUE(Start());
    EXPECT_TRUE(isGreyed());
    Drop({folder_ / L"place.bmp"});
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    EXPECT_EQ(Title(), kPlaceTitle);

    Drop({folder_ / L"place.bmp", folder_ / L"other.bmp"});
    const HWND box = WaitForMessage();
    EXPECT_NE(MessageText(box).find(L"six pictures of cube faces"), std::wstring::npos);
    // Meanwhile the window paints itself, but takes no second drop.
    Drop({folder_ / L"missing.png"});
    ShowWindow(Window(), SW_HIDE);
    ShowWindow(Window(), SW_SHOW);
    EXPECT_TRUE(Shows({0, kFront.y}, {0, 900}));
    EXPECT_TRUE(PressButton(box, IDOK));
    EXPECT_EQ(Title(), kPlaceTitle);
    EXPECT_FALSE(isGreyed());

    // The program started with a file does the same.
    program_.reset();
    program_.emplace(SW_SHOWNORMAL, std::vector{folder_ / L"place.bmp"});
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    EXPECT_EQ(Title(), kPlaceTitle);
}

TEST_F(WindowMouse, ThePreviewFollowsTheDragAndTheWheel) {
    ASSERT_TRUE(StartWithPlace());
    // Nothing of the kind in another view.
    Drag(500, 350, 700, 400);
    EXPECT_FALSE(HasCapture());
    Wheel(120);
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    Command(IDM_VIEW_PREVIEW);
    ASSERT_TRUE(Shows(kPreviewFront, kFrontPlace));
    EXPECT_TRUE(Shows(kBeside, kBesidePlace));

    // A tenth of the focal length is a tenth of a radian: 57 tenths of a degree.
    Drag(400, 300, 420, 320);
    EXPECT_TRUE(HasCapture());
    EXPECT_TRUE(Shows(kPreviewFront, {1800 - 57, 900 - 57}));
    // Far more moves than could be drawn one by one.
    for (int i = 0; i < 2000; ++i) {
        PostMessageW(Window(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(420 + i % 100, 300));
    }
    EXPECT_TRUE(Shows(kPreviewFront, {1800 - 341, 900}));
    // A key turns on under the drag, which goes on from there.
    SendMessageW(Window(), WM_KEYDOWN, VK_RIGHT, 0);
    EXPECT_TRUE(Shows(kPreviewFront, {1800 - 241, 900}));
    Mouse(WM_MOUSEMOVE, 419 + 80, 300);
    EXPECT_TRUE(Shows(kPreviewFront, {1800 - 184, 900}));
    // Letting go ends the drag, and so does whatever takes the mouse away.
    Mouse(WM_LBUTTONUP, 499, 300, false);
    EXPECT_FALSE(HasCapture());
    Mouse(WM_MOUSEMOVE, 600, 300);
    Mouse(WM_LBUTTONDOWN, 500, 300);
    SendMessageW(Window(), WM_CANCELMODE, 0, 0);
    Mouse(WM_MOUSEMOVE, 520, 300);
    EXPECT_TRUE(Shows(kPreviewFront, {1800 - 184, 900}));
    Drag(500, 300, 436, 300);
    Mouse(WM_LBUTTONUP, 436, 300, false);
    ASSERT_TRUE(Shows(kPreviewFront, kFrontPlace));
    Wheel(120);
    EXPECT_TRUE(Shows(kBeside, {1800 + 500, 900})) << "closer";
}

}  // namespace
}  // namespace skyvault::test
