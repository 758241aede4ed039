// The boxes and dialogs on their own: message boxes, progress, file and folder dialogs, the about box.

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h:
#include <commctrl.h>

#include <algorithm>
#include <vector>

#include "app/about_box.h"
#include "app/file_dialogs.h"
#include "app/file_filters.h"
#include "app/message_box.h"
#include "app/progress_box.h"
#include "image/picture_codec.h"
#include "resources/resource_ids.h"
#include "tests/temporary_folder.h"
#include "tests/window/in_background.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

TEST(MessageBoxes, ShowTheirTextUnderTheProgramsName) {
    for (const bool isError : {false, true}) {
        InBackground box([&] { ShowMessage(L"Could not open \"C:\\ä.png\"", isError); });
        const HWND window = WaitForMessage();
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(MessageText(window), L"Could not open \"C:\\ä.png\"");
        EXPECT_EQ(GetWindow(window, GW_OWNER), nullptr);
        Shot(window, isError ? "message-error" : "message-information");
        EXPECT_TRUE(PressButton(window, IDOK));
    }
}

TEST(MessageBoxes, StaySilentWhileSwitchedOff) {
    const MessageBoxesOff outer;
    {
        const MessageBoxesOff inner;
        ShowMessage(L"nobody waits for this", true);
    }
    ShowMessage(L"nor for this", false);  // would wait for ever
}

/// Counts the messages that move the bar.
LRESULT CALLBACK CountMoves(HWND bar, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR moves) {
    if (message == PBM_SETPOS) ++*reinterpret_cast<int*>(moves);
    return DefSubclassProc(bar, message, wParam, lParam);
}

TEST(ProgressBox, ShowsWholePercentsAndTexts) {
    ProgressBox box;
    box.SetUp(GetModuleHandleW(nullptr), nullptr);
    box.Set(0.5f, L"not open yet");
    box.Begin();
    ASSERT_TRUE(box.IsOpen());
    const HWND window = WaitForDialog(L"Skyvault");
    const HWND text = GetDlgItem(window, IDC_PROGRESS_TEXT), bar = GetDlgItem(window, IDC_PROGRESS_BAR);
    const auto position = [&] { return SendMessageW(bar, PBM_GETPOS, 0, 0); };
    EXPECT_EQ(SendMessageW(bar, PBM_GETRANGE, TRUE, 0), 0);
    EXPECT_EQ(SendMessageW(bar, PBM_GETRANGE, FALSE, 0), 100);
    EXPECT_EQ(position(), 0);
    EXPECT_EQ(TextOf(text), L"");

    struct Row {
        float fraction;
        int percent;
    };
    for (const Row& row : {Row{0.009f, 0}, Row{0.5f, 50}, Row{0.999f, 99}, Row{1.0f, 100}, Row{7.0f, 100},
                           Row{0.25f, 25}, Row{-3.0f, 0}}) {
        box.Set(row.fraction, L"Creating cube faces...");
        EXPECT_EQ(position(), row.percent) << row.fraction;
    }
    EXPECT_EQ(TextOf(text), L"Creating cube faces...");
    box.Set(0.42f, L"Creating cube faces...");
    Shot(window, "progress");

    int moves = 0;
    SetWindowSubclass(bar, CountMoves, 1, reinterpret_cast<DWORD_PTR>(&moves));
    box.Set(0.421f, L"Creating cube faces...");
    box.Set(0.429f, L"another text");
    EXPECT_EQ(moves, 0) << "the percentage is the same";
    box.Set(0.43f, L"another text");
    EXPECT_GT(moves, 0);

    box.Begin();
    EXPECT_EQ(position(), 43) << "a second begin changes nothing";
    box.Reset();
    EXPECT_EQ(position(), 0);
    EXPECT_EQ(TextOf(text), L"");
    box.End();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(box.IsOpen());
}

TEST(FileDialogs, EachKindAsksAndGivesItsExtension) {
    const TemporaryFolder folder;
    folder.Write(L"there.png", "x");
    folder.Write(L"there.dds", "x");
    folder.Write(L"there.mov", "x");
    struct Row {
        FileDialogKind kind;
        const wchar_t* typed;
        const wchar_t* result;  ///< null: cancelled
    };
    const Row rows[] = {
        {FileDialogKind::OpenMovie, L"there.mov", L"there.mov"},
        {FileDialogKind::SaveMovie, L"new", L"new.mov"},
        {FileDialogKind::OpenDds, L"there.dds", L"there.dds"},
        {FileDialogKind::SaveDds, L"new", L"new.dds"},
        {FileDialogKind::OpenPicture, L"there.png", L"there.png"},
        {FileDialogKind::SavePicture, L"new", L"new.tif"},
        {FileDialogKind::SavePicture, nullptr, nullptr},
    };
    AppState settings;
    settings.filterIndex = 6;
    for (const Row& row : rows) {
        std::wstring result = L"not set";
        // A file's path as the start: its folder is shown.
        InBackground ask([&] {
            FileDialogs dialogs;
            if (dialogs.BuildFilters())
                result = dialogs.Ask(nullptr, folder / L"any.jpg", row.kind, L"Which file?", settings);
        });
        const HWND dialog = WaitForDialog(L"Which file?");
        ASSERT_NE(dialog, nullptr);
        // Names without a folder are looked for in the start folder.
        EXPECT_TRUE(row.typed != nullptr ? AnswerFileDialog(dialog, row.typed)
                                         : PressButton(dialog, IDCANCEL));
        ask.Join();
        EXPECT_EQ(result, row.result != nullptr ? folder / row.result : L"") << static_cast<int>(row.kind);
    }
    EXPECT_EQ(settings.filterIndex, 6);
}

TEST(FileDialogs, ReplacingAFileIsAskedForTheNameWithItsExtension) {
    const TemporaryFolder folder;
    folder.Write(L"pano.png", "x");
    AppState settings;
    settings.filterIndex = 5;
    std::wstring result;
    InBackground ask([&] {
        result = FileDialogs().Ask(nullptr, folder.Path(), FileDialogKind::SavePicture, L"Save", settings);
    });
    for (const int answer : {IDNO, IDYES}) {
        const HWND dialog = WaitForDialog(L"Save");
        ASSERT_NE(dialog, nullptr);
        ASSERT_TRUE(AnswerFileDialog(dialog, L"pano"));
        const HWND question = WaitForMessage();
        ASSERT_NE(question, nullptr);
        EXPECT_EQ(MessageText(question), L"pano.png already exists.\nDo you want to replace it?");
        EXPECT_TRUE(PressButton(question, answer));
    }
    ask.Join();
    EXPECT_EQ(result, folder / L"pano.png");
}

TEST(FileDialogs, UnknownKindIsAnError) {
    AppState settings;
    std::wstring result = L"not set";
    InBackground ask(
        [&] { result = FileDialogs().Ask(nullptr, L"", static_cast<FileDialogKind>(6), L"?", settings); });
    const HWND box = WaitForMessage();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(MessageText(box), L"ERROR: unknown path type");
    EXPECT_TRUE(PressButton(box, IDOK));
    ask.Join();
    EXPECT_EQ(result, L"");
}

TEST(FolderPicker, ReturnsTheFolderOrNothing) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.SystemPath(L"in side"));
    for (const bool cancel : {false, true}) {
        std::wstring result = L"not set";
        InBackground ask([&] { result = AskForFolder(nullptr, L"Select source folder", folder.Path()); });
        const HWND dialog = WaitForDialog(L"Select source folder");
        ASSERT_NE(dialog, nullptr);
        EXPECT_TRUE(AnswerFolderPicker(dialog, folder / L"in side", cancel ? IDCANCEL : IDOK));
        ask.Join();
        EXPECT_EQ(result, cancel ? L"" : folder / L"in side");
    }
}

TEST(AboutBox, DrawsItsTextsAndCloses) {
    InBackground box([] { ShowAboutBox(GetModuleHandleW(nullptr), nullptr); });
    const HWND window = WaitForDialog(L"About Skyvault");
    ASSERT_NE(window, nullptr);
    // White paper with dark texts on it.
    EXPECT_TRUE(Eventually([&] {
        const Image pixels = WindowPixels(window, false);
        int dark = 0;
        for (std::uint32_t y = pixels.width / 2 + 2; y < pixels.height; ++y) {
            for (std::uint32_t x = 0; x < pixels.width / 2; ++x) {
                dark += pixels.GetPixel8(static_cast<int>(x), static_cast<int>(y)).green < 100 ? 1 : 0;
            }
        }
        return dark > 50 && pixels.GetPixel8(2, static_cast<int>(pixels.height) - 3) == kOpaqueWhite;
    }));
    Shot(window, "about");
    // The keyboard reaches the links; Esc closes the box.
    const auto focus = [&] {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
        return info.hwndFocus;
    };
    for (const int control : {IDOK, IDC_ABOUT_GUIDE, IDC_ABOUT_COMMUNITY}) {
        EXPECT_TRUE(Eventually([&] { return focus() == GetDlgItem(window, control); }, 3000)) << control;
        PostMessageW(focus(), WM_KEYDOWN, VK_TAB, 0);
    }
    EXPECT_TRUE(Eventually([&] { return focus() == GetDlgItem(window, IDOK); }, 3000));
    PostMessageW(focus(), WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_TRUE(WaitUntilClosed(window));
}

}  // namespace
}  // namespace skyvault::test
