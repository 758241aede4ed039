// The window's mouse: files dropped on it, the preview dragged and zoomed, and input that comes too early.

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h:
#include <shlobj.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "app/help_pages.h"
#include "app/progress_box.h"
#include "image/picture_files.h"
#include "session/layouts.h"
#include "tests/temporary_folder.h"
#include "tests/window/place_picture.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

constexpr const wchar_t* kTitle = L"Skyvault - place.bmp Equirectangular (3600 x 1800) LDR 24 bpp RGB int";

// The middle of the 1000 × 562 preview, whose focal length is 200 pixels, and of the equirectangular view.
constexpr POINT kMiddle{500, 350}, kFront{500, 349};

/// Drops the files as the system does.
void Drop(HWND window, const std::vector<std::wstring>& paths) {
    std::wstring list;
    for (const std::wstring& path : paths) list += path + L'\0';
    const std::size_t bytes = (list.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GHND, sizeof(DROPFILES) + bytes);
    auto* const files = static_cast<DROPFILES*>(GlobalLock(memory));
    files->pFiles = sizeof(DROPFILES);
    files->fWide = TRUE;
    std::copy_n(list.c_str(), list.size() + 1, reinterpret_cast<wchar_t*>(files + 1));
    GlobalUnlock(memory);
    PostMessageW(window, WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0);
}

class WindowMouse : public testing::Test {
  protected:
    void SetUp() override {
        AppState settings = TestSettings(folder_.Path());
        PutSettings(&settings);
        Image picture = PlacePicture();
        ASSERT_TRUE(SavePicture(picture, folder_ / L"place.bmp"));
        program_.emplace();
        ASSERT_NE(program_->Window(), nullptr);
    }

    bool DropPlace() {
        Drop(program_->Window(), {folder_ / L"place.bmp"});
        return Eventually([&] { return program_->Title() == kTitle; });
    }

    void View(PanoramaFormat view) { program_->Command(FindLayout(view)->viewCommand); }

    void Mouse(UINT message, int x, int y, bool held = true) {
        SendMessageW(program_->Window(), message, held ? MK_LBUTTON : 0, MAKELPARAM(x, y));
    }
    void Wheel(int turn) {
        const auto delta = static_cast<WORD>(static_cast<SHORT>(turn));
        SendMessageW(program_->Window(), WM_MOUSEWHEEL, MAKEWPARAM(0, delta), MAKELPARAM(500, 350));
    }
    bool HasCapture() {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return GetGUIThreadInfo(GetWindowThreadProcessId(program_->Window(), nullptr), &info) &&
               info.hwndCapture == program_->Window();
    }

    testing::AssertionResult Shows(POINT at, const Place& place) {
        const auto shown = [&] { return PlaceOfColour(program_->PixelAt(at.x, at.y)); };
        if (Eventually([&] { return NearPlace(shown(), place); }, 5000)) return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << '(' << at.x << ',' << at.y << ") shows " << shown() << ", not " << place;
    }

    const TemporaryFolder folder_;
    std::optional<RunningProgram> program_;
};

TEST_F(WindowMouse, DroppedFilesOpenOrSayWhyNot) {
    ASSERT_TRUE(DropPlace()) << "title: " << testing::PrintToString(program_->Title());
    EXPECT_TRUE(Shows(kFront, {1800, 900}));

    Drop(program_->Window(), {folder_ / L"place.bmp", folder_ / L"other.bmp"});
    HWND box = WaitForMessage();
    ASSERT_NE(box, nullptr);
    EXPECT_NE(MessageText(box).find(L"six pictures of cube faces"), std::wstring::npos);
    Shot(box, "drop-error");
    // Meanwhile the window paints itself and can be moved, but takes no second drop.
    Drop(program_->Window(), {folder_ / L"missing.png"});
    RECT before{}, after{};
    GetWindowRect(program_->Window(), &before);
    SetWindowPos(program_->Window(), nullptr, before.left + 9, before.top + 7, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER);
    InvalidateRect(program_->Window(), nullptr, TRUE);
    EXPECT_TRUE(Shows({0, kFront.y}, {0, 900}));
    EXPECT_TRUE(PressButton(box, IDOK));
    GetWindowRect(program_->Window(), &after);
    EXPECT_EQ(after.left, before.left + 9);
    EXPECT_EQ(program_->Title(), kTitle);

    const std::wstring movie = folder_.Write(L"cut.mov", "moov");
    Drop(program_->Window(), {movie});
    box = WaitForMessage();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(MessageText(box), L"Could not open \"" + movie + L"\"");
    EXPECT_TRUE(PressButton(box, IDOK));
    EXPECT_TRUE(DropPlace()) << "the program goes on";
}

TEST_F(WindowMouse, ThePreviewMovesWithTheHandAndZoomsWithTheWheel) {
    ASSERT_TRUE(DropPlace());
    // Nothing of the kind in another view.
    Mouse(WM_LBUTTONDOWN, 500, 350);
    EXPECT_FALSE(HasCapture());
    Mouse(WM_MOUSEMOVE, 700, 400);
    Mouse(WM_LBUTTONUP, 700, 400, false);
    Wheel(120);
    EXPECT_TRUE(Shows(kFront, {1800, 900}));
    View(PanoramaFormat::Preview);
    ASSERT_TRUE(Shows(kMiddle, {1800, 900}));
    EXPECT_TRUE(Shows({750, 350}, {1800 + 513, 900}));

    // A tenth of the focal length is a tenth of a radian: 57 tenths of a degree.
    Mouse(WM_LBUTTONDOWN, 400, 300);
    EXPECT_TRUE(HasCapture());
    Mouse(WM_MOUSEMOVE, 420, 320);
    EXPECT_TRUE(Shows(kMiddle, {1800 - 57, 900 - 57}));
    EXPECT_TRUE(Shows({520, 370}, {1800, 900})) << "the picture is taken along";
    // Far more moves than could be drawn one by one.
    for (int i = 0; i < 2000; ++i) {
        PostMessageW(program_->Window(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(420 + i % 100, 300));
    }
    EXPECT_TRUE(Shows(kMiddle, {1800 - 341, 900}));
    // A key turns on under the hand, which goes on from there.
    SendMessageW(program_->Window(), WM_KEYDOWN, VK_RIGHT, 0);
    EXPECT_TRUE(Shows(kMiddle, {1800 - 241, 900}));
    Mouse(WM_MOUSEMOVE, 419 + 80, 300);
    EXPECT_TRUE(Shows(kMiddle, {1800 - 184, 900}));
    Mouse(WM_LBUTTONUP, 499, 300, false);
    EXPECT_FALSE(HasCapture());
    Mouse(WM_MOUSEMOVE, 600, 300, false);
    EXPECT_TRUE(Shows(kMiddle, {1800 - 184, 900}));

    // Whatever takes the mouse away ends the drag.
    Mouse(WM_LBUTTONDOWN, 500, 300);
    SendMessageW(program_->Window(), WM_CANCELMODE, 0, 0);
    EXPECT_FALSE(HasCapture());
    Mouse(WM_MOUSEMOVE, 520, 300);
    EXPECT_TRUE(Shows(kMiddle, {1800 - 184, 900}));

    Mouse(WM_LBUTTONDOWN, 500, 300);
    Mouse(WM_MOUSEMOVE, 436, 300);
    Mouse(WM_LBUTTONUP, 436, 300, false);
    ASSERT_TRUE(Shows(kMiddle, {1800, 900}));
    Wheel(120);
    EXPECT_TRUE(Shows({750, 350}, {1800 + 500, 900})) << "closer";
    for (int i = 0; i < 4; ++i) Wheel(-30);
    EXPECT_TRUE(Shows({750, 350}, {1800 + 514, 900}));
}

TEST_F(WindowMouse, TheWindowKeepsALeastSize) {
    SetWindowPos(program_->Window(), nullptr, 0, 0, 50, 50, SWP_NOMOVE | SWP_NOZORDER);
    RECT rect{};
    GetWindowRect(program_->Window(), &rect);
    EXPECT_EQ(rect.right - rect.left, 320);
    EXPECT_EQ(rect.bottom - rect.top, 240);
}

TEST(WaitingInput, IsForgottenWithTheProgressBoxAndNothingElse) {
    const HWND window =
        CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ProgressBox box;
    box.SetUp(GetModuleHandleW(nullptr), window);
    box.Begin();
    for (const UINT message : {WM_KEYDOWN, WM_CHAR, WM_LBUTTONDOWN, WM_COMMAND, WM_NCLBUTTONDOWN, WM_USER}) {
        PostMessageW(window, message, 0, 0);
    }
    box.End();
    std::vector<UINT> left;
    MSG message;
    while (PeekMessageW(&message, window, 0, 0, PM_REMOVE)) {
        if (message.message == WM_COMMAND || message.message == WM_USER || message.message < WM_PAINT ||
            (message.message >= WM_NCMOUSEMOVE && message.message <= WM_MOUSELAST)) {
            left.push_back(message.message);
        }
    }
    EXPECT_EQ(left, (std::vector<UINT>{WM_COMMAND, WM_USER}));
    DestroyWindow(window);
}

TEST(HelpPages, TheGuideBesideTheProgramGoesBeforeTheOneOnTheWeb) {
    const TemporaryFolder folder;
    EXPECT_EQ(AddressOf(HelpPage::UserGuide, folder.Path()), L"https://skyvault.example/guide");
    EXPECT_EQ(AddressOf(HelpPage::Community, folder.Path()), L"https://skyvault.example/community");
    std::filesystem::create_directories(folder.SystemPath(L"Media\\Guide"));
    const std::wstring guide = folder.Write(L"Media\\Guide\\index.html", "<p>guide</p>");
    EXPECT_EQ(AddressOf(HelpPage::UserGuide, folder.Path()), guide);
}

TEST(HelpPages, AnAddressThatCannotBeOpenedIsTold) {
    const TemporaryFolder folder;
    const std::wstring missing = folder / L"no such page.html";
    std::thread opening([&] { OpenAddress(nullptr, missing); });
    const HWND box = WaitForMessage();
    EXPECT_NE(box, nullptr);
    if (box != nullptr) {
        EXPECT_EQ(MessageText(box), L"Could not open \"" + missing + L"\"");
        EXPECT_TRUE(PressButton(box, IDOK));
    }
    opening.join();
}

}  // namespace
}  // namespace skyvault::test
