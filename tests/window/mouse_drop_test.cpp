// The window's mouse: files dropped on it, the preview dragged and zoomed.

#include <windows.h>
// After windows.h:
#include <shlobj.h>

#include <algorithm>

#include "tests/window/program_fixture.h"

namespace skyvault::test {
namespace {

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
    bool HasCapture() const {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return GetGUIThreadInfo(GetWindowThreadProcessId(Window(), nullptr), &info) &&
               info.hwndCapture == Window();
    }
};

TEST_F(WindowMouse, DroppedFilesOpenOrTellWhyNot) {
    ASSERT_TRUE(Start());
    Drop({folder_ / L"place.bmp"});
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    EXPECT_EQ(Title(), kPlaceTitle);

    Drop({folder_ / L"place.bmp", folder_ / L"other.bmp"});
    const HWND box = WaitForMessage();
    ASSERT_NE(box, nullptr);
    EXPECT_NE(MessageText(box).find(L"six pictures of cube faces"), std::wstring::npos);
    // Meanwhile the window paints itself, but takes no second drop.
    Drop({folder_ / L"missing.png"});
    ShowWindow(Window(), SW_HIDE);
    ShowWindow(Window(), SW_SHOW);
    EXPECT_TRUE(Shows({0, kFront.y}, {0, 900}));
    EXPECT_TRUE(PressButton(box, IDOK));
    EXPECT_EQ(Title(), kPlaceTitle);
}

TEST_F(WindowMouse, ThePreviewFollowsTheDragAndTheWheel) {
    ASSERT_TRUE(StartWithPlace());
    // Nothing of the kind in another view.
    Mouse(WM_LBUTTONDOWN, 500, 350);
    EXPECT_FALSE(HasCapture());
    Mouse(WM_MOUSEMOVE, 700, 400);
    Mouse(WM_LBUTTONUP, 700, 400, false);
    Wheel(120);
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    Command(IDM_VIEW_PREVIEW);
    ASSERT_TRUE(Shows(kPreviewFront, kFrontPlace));
    EXPECT_TRUE(Shows(kBeside, kBesidePlace));

    // A tenth of the focal length is a tenth of a radian: 57 tenths of a degree.
    Mouse(WM_LBUTTONDOWN, 400, 300);
    EXPECT_TRUE(HasCapture());
    Mouse(WM_MOUSEMOVE, 420, 320);
    EXPECT_TRUE(Shows(kPreviewFront, {1800 - 57, 900 - 57}));
    EXPECT_TRUE(Shows({520, 370}, kFrontPlace)) << "the picture is taken along";
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
    Mouse(WM_LBUTTONDOWN, 500, 300);
    Mouse(WM_MOUSEMOVE, 436, 300);
    Mouse(WM_LBUTTONUP, 436, 300, false);
    ASSERT_TRUE(Shows(kPreviewFront, kFrontPlace));
    Wheel(120);
    EXPECT_TRUE(Shows(kBeside, {1800 + 500, 900})) << "closer";
    for (int i = 0; i < 4; ++i) Wheel(-30);
    EXPECT_TRUE(Shows(kBeside, {1800 + 514, 900}));
}

}  // namespace
}  // namespace skyvault::test
