// The boxes and dialogs on their own: message boxes, progress, file and folder dialogs, help.

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h:
#include <commctrl.h>

#include <filesystem>
#include <tuple>
#include <vector>

#include "app/file_dialogs.h"
#include "app/help_menu.h"
#include "app/progress_box.h"
#include "app/window_helpers.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "resources/resource_ids.h"
#include "tests/temporary_folder.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

TEST(ProgressBox, ShowsWholePercentsAndTextsAndForgetsWaitingInput) {
    const HWND owner =
        CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ProgressBox box;
    box.SetUp(GetModuleHandleW(nullptr), owner);
    box.Set(0.5f, L"not open yet");
    box.Begin();
    const HWND window = WaitForDialog(L"Skyvault"), bar = GetDlgItem(window, IDC_PROGRESS_BAR);
    const auto shows = [&](int percent, const wchar_t* text) {
        EXPECT_EQ(SendMessageW(bar, PBM_GETPOS, 0, 0), percent);
        EXPECT_EQ(TextOf(window, IDC_PROGRESS_TEXT), text);
    };
    shows(0, L"");
    for (const auto& [fraction, percent] :
         {std::pair{0.009f, 0}, {0.999f, 99}, {7.0f, 100}, {-3.0f, 0}, {0.42f, 42}}) {
        box.Set(fraction, L"Creating cube faces...");
        shows(percent, L"Creating cube faces...");
    }
    box.Set(0.429f, L"another text");
    box.Begin();
    shows(42, L"another text");
    box.Reset();
    shows(0, L"");

    for (const UINT message : {WM_KEYDOWN, WM_CHAR, WM_LBUTTONDOWN, WM_COMMAND, WM_NCLBUTTONDOWN, WM_USER}) {
        PostMessageW(owner, message, 0, 0);
    }
    box.End();
    EXPECT_FALSE(IsWindow(window));
    for (const UINT left : {WM_COMMAND, WM_USER}) {
        MSG message;
        EXPECT_TRUE(PeekMessageW(&message, owner, 0, 0, PM_REMOVE));
        EXPECT_EQ(message.message, left);
    }
    DestroyWindow(owner);
}

TEST(FileDialogs, EachKindAsksAndGivesItsExtension) {
    const TemporaryFolder folder;
    for (const wchar_t* name : {L"there.png", L"there.dds", L"there.mov"}) folder.Write(name, "x");
    using Row = std::tuple<FileDialogKind, const wchar_t*, const wchar_t*>;
    using enum FileDialogKind;
    AppState settings;
    settings.filterIndex = 6;
    for (const auto& [kind, typed, expected] :
         {Row{OpenMovie, L"there.mov", L"there.mov"}, Row{SaveMovie, L"new", L"new.mov"},
          Row{OpenDds, L"there.dds", L"there.dds"}, Row{SaveDds, L"new", L"new.dds"},
          Row{OpenPicture, L"there.png", L"there.png"}, Row{SavePicture, L"new", L"new.tif"},
          Row{SavePicture, L"cancelled", nullptr}}) {
        std::wstring result = L"not set";
        // A file's path as the start: its folder is shown. Names without a folder are looked for there.
        std::jthread ask = InBackground([&, kind = kind] {
            FileDialogs dialogs;
            if (dialogs.BuildFilters())
                result = dialogs.Ask(nullptr, folder / L"any.jpg", kind, L"Which file?", settings);
        });
        const int button = expected != nullptr ? IDOK : IDCANCEL;
        EXPECT_TRUE(AnswerFileDialog(WaitForDialog(L"Which file?"), typed, button));
        ask.join();
        EXPECT_EQ(result, expected != nullptr ? folder / expected : L"") << static_cast<int>(kind);
    }
    EXPECT_EQ(settings.filterIndex, 6);
}

TEST(FileDialogs, WhatIsNotAcceptedIsAskedForAgainInAFolderWithAFullStop) {
    const TemporaryFolder folder;
    const std::wstring start = folder / L"john.smith v1.2";
    ASSERT_TRUE(CreateFolder(start));
    AppState settings;
    settings.filterIndex = 5;
    std::wstring result;
    std::vector<std::wstring> offered;
    std::jthread ask = InBackground([&] {
        result = FileDialogs().Ask(nullptr, start, FileDialogKind::SavePicture, L"Save", settings,
                                   [&](const std::wstring& path) {
                                       offered.push_back(path);
                                       return offered.size() == 2;
                                   });
    });
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(AnswerFileDialog(WaitForDialog(L"Save"), L"pano"));
    ask.join();
    EXPECT_EQ(offered, std::vector<std::wstring>(2, JoinPath(start, L"pano.png")));
    EXPECT_EQ(result, JoinPath(start, L"pano.png"));
}

TEST(FileFilters, ExtensionIsGivenOnceAndTakesTheOldOnesPlace) {
    using Row = std::tuple<const wchar_t*, int, const wchar_t*>;
    for (const auto& [chosen, filter, path] :
         {Row{L"C:\\a\\pano", 5, L"C:\\a\\pano.png"}, Row{L"C:\\a\\pano.PNG", 5, L"C:\\a\\pano.png"},
          Row{L"C:\\a\\pano.jpg", 5, L"C:\\a\\pano.png"}, Row{L"pano v1.2", 4, L"pano v1.2.jpg"},
          Row{L"C:\\my.jpg\\pano", 1, L"C:\\my.jpg\\pano.bmp"}, Row{L"pano", 2, L"pano.dds"},
          Row{L"pano", 3, L"pano.gif"}, Row{L"pano", 6, L"pano.tif"}, Row{L"pano", 0, L"pano.jpg"},
          Row{L"pano", 7, L"pano.exr"}, Row{L"pano.exr", 8, L"pano.hdr"}, Row{L"pano", 9, L"pano.jpg"}}) {
        EXPECT_EQ(GiveExtension(chosen, PictureSaveExtension(filter)), path) << filter;
    }
}

TEST(HelpPages, TheGuideBesideTheProgramGoesBeforeTheOneOnTheWeb) {
    const TemporaryFolder folder;
    EXPECT_EQ(AddressOf(HelpPage::UserGuide, folder.Path()), L"https://skyvault.example/guide");
    EXPECT_EQ(AddressOf(HelpPage::Community, folder.Path()), L"https://skyvault.example/community");
    std::filesystem::create_directories(folder.SystemPath(L"Media\\Guide"));
    const std::wstring guide = folder.Write(L"Media\\Guide\\index.html", "<p>guide</p>");
    EXPECT_EQ(AddressOf(HelpPage::UserGuide, folder.Path()), guide);
    const std::jthread opening = InBackground([&] { OpenAddress(nullptr, folder / L"none.html"); });
    EXPECT_EQ(AnswerMessage(), L"Could not open \"" + (folder / L"none.html") + L"\"");
}

}  // namespace
}  // namespace skyvault::test
