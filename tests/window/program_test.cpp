// The whole program in this process, commanded through its menu: what it shows, writes and remembers.

#include <algorithm>

#include "app/draw_canvas.h"
#include "app/window_helpers.h"
#include "tests/picture_io.h"
#include "tests/window/program_fixture.h"

namespace skyvault::test {
namespace {

class Program : public ProgramTest {
  protected:
    /// Waits until the equirectangular view at the window's present size has the place in its middle.
    testing::AssertionResult ShowsInItsMiddle(const Place& place = kFrontPlace) const {
        RECT client{};
        GetClientRect(Window(), &client);
        const int height = std::min<int>({client.right / 2, client.bottom, 512}), width = 2 * height;
        return Shows(
            {(client.right - width) / 2 + width / 2, (client.bottom - height) / 2 + height - 1 - height / 2},
            place);
    }
    void Minimise(bool minimised) const {
        ShowWindow(Window(), minimised ? SW_MINIMIZE : SW_RESTORE);
        EXPECT_TRUE(Eventually([&] { return (IsIconic(Window()) != FALSE) == minimised; }));
    }
};

TEST_F(Program, CommandsShowInPictureTitleAndCheckMarks) {
    ASSERT_TRUE(StartWithPlace()) << testing::PrintToString(Title());
    // Fitted in the middle of the background.
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    EXPECT_TRUE(Shows({0, kFront.y}, {0, 900}));
    EXPECT_TRUE(Shows({750, 224}, {2700, 450}));
    for (const int y : {0, 99, 600, kClientHeight - 1}) EXPECT_TRUE(IsColoured(17, y, kBackground)) << y;
    for (const int y : {100, 599}) EXPECT_TRUE(IsColoured(17, y, kBackground, false)) << y;

    Command(IDM_CROSSHAIR);
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR));
    EXPECT_TRUE(IsColoured(3, kClientHeight / 2, kBackground));
    Command(IDM_CROSSHAIR);
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR, false));
    Command(IDM_FLIP_HORIZONTAL);
    EXPECT_TRUE(Shows(kFront, {2700, 900}));
    Command(IDM_RESET_ALL);
    EXPECT_TRUE(BecomesChecked(IDM_FLIP_HORIZONTAL, false));
    EXPECT_TRUE(Shows(kFront, kFrontPlace));
    Command(IDM_VIEW_PREVIEW);
    EXPECT_TRUE(BecomesChecked(IDM_VIEW_PREVIEW));
    EXPECT_TRUE(Shows(kPreviewFront, kFrontPlace));
    EXPECT_TRUE(Shows(kBeside, kBesidePlace));
    EXPECT_TRUE(IsColoured(kPreviewFront.x, 68, kBackground));
    EXPECT_EQ(Title(), kPlaceTitle);
}

TEST_F(Program, ExportsWhatTheSaveDialogChooses) {
    settings_.filterIndex = 5;
    ASSERT_TRUE(StartWithPlace());
    Command(IDM_VIEW_PREVIEW);
    const HWND dialog = program_->Open(IDM_EXPORT_EQUIRECTANGULAR, L"Export Panorama");
    ChooseFilter(dialog, 1);
    ASSERT_TRUE(AnswerFileDialog(dialog, folder_ / L"out"));
    const std::wstring message = AnswerMessage();
    EXPECT_EQ(message, L"360° photo successfully exported!\n\n" +
                           PictureInfo(folder_ / L"out.bmp", 1024, 512, PixelFormat::Rgb8));
    // Once more: No leads back to the dialog.
    const HWND again = program_->Open(IDM_EXPORT_AGAIN, L"Export Panorama");
    ASSERT_TRUE(AnswerFileDialog(again, folder_ / L"out"));
    const HWND question = WaitForMessage();
    EXPECT_EQ(MessageText(question), L"out.bmp already exists.\nDo you want to replace it?");
    EXPECT_TRUE(PressButton(question, IDNO));
    EXPECT_TRUE(PressButton(WaitForDialog(L"Export Panorama"), IDCANCEL));
    EXPECT_TRUE(Place::Of(Loaded(folder_ / L"out.bmp").GetPixel8(768, 127)).IsNear({2700, 450}));
    EXPECT_TRUE(BecomesChecked(IDM_VIEW_EQUIRECTANGULAR)) << "the window shows what was written";
    program_->Close();
    EXPECT_EQ(ReadSettings().filterIndex, 1);
}

TEST_F(Program, TheViewIsCopiedAndFillsTheScreen) {
    ASSERT_TRUE(StartWithPlace());
    Command(IDM_COPY_VIEW);
    ASSERT_TRUE(OpenClipboard(nullptr));
    const auto* const bitmap = static_cast<const BITMAPINFOHEADER*>(GlobalLock(GetClipboardData(CF_DIB)));
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->biWidth, 2 * bitmap->biHeight);
    // The lowest row first: a quarter down on the left.
    const auto* const row = reinterpret_cast<const std::uint8_t*>(bitmap + 1) +
                            std::size_t{3} * bitmap->biWidth * (bitmap->biHeight * 3 / 4);
    EXPECT_TRUE(Place::Of({row[2], row[1], row[0], 255}).IsNear({0, 450})) << bitmap->biWidth;
    CloseClipboard();

    RECT before{}, full{};
    GetWindowRect(Window(), &before);
    Command(IDM_FULL_SCREEN);
    EXPECT_TRUE(Eventually([&] {
        return GetClientRect(Window(), &full) && full.right == GetSystemMetrics(SM_CXSCREEN) &&
               full.bottom == GetSystemMetrics(SM_CYSCREEN);
    }));
    EXPECT_EQ(GetMenu(Window()), nullptr);
    EXPECT_EQ(ReadSettings().windowRect, settings_.windowRect);
    SendMessageW(Window(), WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_NE(GetMenu(Window()), nullptr);
    RECT after{};
    EXPECT_TRUE(Eventually([&] { return GetWindowRect(Window(), &after) && EqualRect(&after, &before); }));
}

TEST_F(Program, NoSecondCommandStartsWhileAMessageIsOpen) {
    ASSERT_TRUE(StartWithPlace());
    ASSERT_TRUE(
        AnswerFileDialog(program_->Open(IDM_EXPORT_EQUIRECTANGULAR, L"Export Panorama"), folder_ / L"out"));
    const HWND box = WaitForMessage();
    // All of these are answered before the box closes, and none of them does anything yet.
    SendMessageW(Window(), WM_COMMAND, IDM_VIEW_PREVIEW, 0);
    SendMessageW(Window(), WM_KEYDOWN, VK_RIGHT, 0);
    SendMessageW(Window(), WM_CLOSE, 0, 0);
    SetWindowPos(Window(), nullptr, 0, 0, 800, 700, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_TRUE(IsWindow(box));
    EXPECT_FALSE(program_->IsChecked(IDM_VIEW_PREVIEW));
    EXPECT_TRUE(PressButton(box, IDOK));
    EXPECT_TRUE(ShowsInItsMiddle()) << "drawn at the new size";
    EXPECT_TRUE(IsColoured(300, 5, kBackground));
}

TEST_F(Program, WindowPlaceViewAndPathsComeBackInTheNextRun) {
    settings_.importPath = L"C:\\";
    ASSERT_TRUE(StartWithPlace());
    Command(IDM_VIEW_PREVIEW);
    Command(IDM_CROSSHAIR);
    SetWindowPos(Window(), nullptr, 111, 77, 800, 600, SWP_NOZORDER);
    Minimise(true);  // minimised windows have no place worth keeping
    // A session that does not end after all saves nothing; one that ends may not let the program do it later.
    SendMessageW(Window(), WM_ENDSESSION, FALSE, 0);
    EXPECT_FALSE(ReadSettings().crosshair);
    SendMessageW(Window(), WM_ENDSESSION, TRUE, ENDSESSION_LOGOFF);
    EXPECT_TRUE(ReadSettings().crosshair);
    EXPECT_EQ(program_->Close(), 0);
    const AppState saved = ReadSettings();
    EXPECT_EQ(saved.windowRect, (ScreenRect{111, 77, 911, 677}));
    EXPECT_EQ(saved.view, static_cast<std::int32_t>(PanoramaFormat::Preview));
    EXPECT_TRUE(saved.crosshair);
    EXPECT_EQ(saved.importPath, folder_.Path());

    settings_ = saved;
    ASSERT_TRUE(Start());
    RECT rect{};
    GetWindowRect(Window(), &rect);
    EXPECT_EQ((ScreenRect{rect.left, rect.top, rect.right, rect.bottom}), saved.windowRect);
    EXPECT_TRUE(BecomesChecked(IDM_VIEW_PREVIEW));
    EXPECT_TRUE(BecomesChecked(IDM_CROSSHAIR));

    ASSERT_TRUE(Start(SW_SHOWMINIMIZED));
    program_->Close();
    EXPECT_EQ(ReadSettings().windowRect, saved.windowRect) << "started minimised";

    PutSettings(nullptr);
    EXPECT_EQ(RunningProgram().Close(), 0);
    EXPECT_EQ(ReadSettings().windowRect, DefaultSettingsOfScreen().windowRect) << "a first run";
}

TEST_F(Program, PictureFollowsSizeRestoreResolutionAndALostDevice) {
    ASSERT_TRUE(StartWithPlace());
    int canvases = DrawCanvas::CreatedCount();
    SetWindowPos(Window(), nullptr, 0, 0, 700, 620, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_TRUE(ShowsInItsMiddle());
    EXPECT_GT(DrawCanvas::CreatedCount(), canvases) << "the target is made anew at the new size";
    Minimise(true);
    Minimise(false);
    EXPECT_TRUE(ShowsInItsMiddle());

    const RECT suggested{50, 60, 950, 760};
    SendMessageW(Window(), WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));
    RECT rect{};
    GetWindowRect(Window(), &rect);
    EXPECT_TRUE(EqualRect(&rect, &suggested));
    EXPECT_TRUE(ShowsInItsMiddle());
    // Nothing is smaller than the smallest window that shows anything.
    SetWindowPos(Window(), nullptr, 0, 0, 50, 50, SWP_NOMOVE | SWP_NOZORDER);
    GetWindowRect(Window(), &rect);
    EXPECT_EQ(rect.right - rect.left, 320);
    EXPECT_EQ(rect.bottom - rect.top, 240);

    UpdateWindow(Window());  // a paint that waits would be told of the loss instead
    canvases = DrawCanvas::CreatedCount();
    ReportDeviceLost(1);
    Command(IDM_FLIP_HORIZONTAL);
    EXPECT_EQ(DrawCanvas::CreatedCount(), canvases + 1);
    EXPECT_TRUE(ShowsInItsMiddle({2700, 900}));
    // Lost again and again: this time nothing is drawn, the next time it is.
    ReportDeviceLost(2);
    Command(IDM_CROSSHAIR);
    Command(IDM_FLIP_HORIZONTAL);
    Command(IDM_CROSSHAIR);
    EXPECT_TRUE(ShowsInItsMiddle());
}

TEST_F(Program, DialogsOfTheMenuBelongToTheWindow) {
    ASSERT_TRUE(Start());
    HWND dialog = nullptr;
    for (const auto& [command, title] : {std::pair{IDM_OPTIONS, L"Skyvault - Options"},
                                         {IDM_BATCH, L"Skyvault - Batch processing"},
                                         {IDM_ABOUT, L"About Skyvault"}}) {
        dialog = program_->Open(static_cast<UINT>(command), title);
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), Window());
        EXPECT_FALSE(IsWindowEnabled(Window()));
        if (command == IDM_ABOUT) break;
        EXPECT_TRUE(PressButton(dialog, IDCANCEL));
        EXPECT_TRUE(IsWindowEnabled(Window()));
    }
    // White paper with dark texts on it, and links that the keyboard reaches.
    RECT client{};
    GetClientRect(dialog, &client);
    EXPECT_TRUE(Eventually([&] {
        int dark = 0;
        for (int x = 0; x < 200; ++x) dark += PixelAt(dialog, x, client.right / 2 + 24).green < 100;
        return dark > 10 && PixelAt(dialog, 2, client.bottom - 3) == kOpaqueWhite;
    }));
    for (const int control : {IDOK, IDC_ABOUT_GUIDE, IDC_ABOUT_COMMUNITY}) {
        EXPECT_TRUE(Eventually([&] { return FocusOf(dialog) == GetDlgItem(dialog, control); })) << control;
        PostMessageW(FocusOf(dialog), WM_KEYDOWN, VK_TAB, 0);
    }
    PostMessageW(FocusOf(dialog), WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_TRUE(WaitUntilClosed(dialog));
}

}  // namespace
}  // namespace skyvault::test
