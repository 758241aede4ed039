// The batch processing dialog of the running program: its lists, checks, runs and the Escape key.

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h:
#include <commctrl.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "image/picture_files.h"
#include "platform/files.h"
#include "resources/resource_ids.h"
#include "session/batch.h"
#include "session/commands.h"
#include "tests/temporary_folder.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

constexpr const wchar_t* kDialogTitle = L"Skyvault - Batch processing";
enum Layout { Equirect, CubeMap, Movie, Cross, SingleFiles = 7 };
enum Extension { Dds, Mov, Bmp, Jpg, Gif, Tif, Png };

/// What the dialog shows while its thread lets no messages in: seen by a hook in that thread.
class ShownProgress {
  public:
    explicit ShownProgress(HWND dialog)
        : bar_(GetDlgItem(dialog, IDC_BATCH_PROGRESS)), status_(GetDlgItem(dialog, IDC_BATCH_STATUS)) {
        current_ = this;
        hook_ = SetWindowsHookExW(WH_CALLWNDPROC, See, nullptr, GetWindowThreadProcessId(dialog, nullptr));
    }
    ~ShownProgress() {
        UnhookWindowsHookEx(hook_);
        current_ = nullptr;
    }
    ShownProgress(const ShownProgress&) = delete;
    ShownProgress& operator=(const ShownProgress&) = delete;

    std::vector<int> Positions() const {
        const std::lock_guard lock(mutex_);
        return positions_;
    }
    std::vector<std::wstring> Lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

  private:
    static LRESULT CALLBACK See(int code, WPARAM wParam, LPARAM lParam) {
        const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
        ShownProgress* const self = current_;
        if (code >= 0 && self != nullptr && sent.hwnd == self->status_ && sent.message == WM_SETTEXT) {
            // The bar is moved before its line is written. Asking it comes through here again.
            const auto position = static_cast<int>(SendMessageW(self->bar_, PBM_GETPOS, 0, 0));
            const std::lock_guard lock(self->mutex_);
            self->positions_.push_back(position);
            self->lines_.emplace_back(reinterpret_cast<const wchar_t*>(sent.lParam));
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline ShownProgress* current_ = nullptr;
    HWND bar_, status_;
    HHOOK hook_ = nullptr;
    mutable std::mutex mutex_;
    std::vector<int> positions_;
    std::vector<std::wstring> lines_;
};

class BatchDialog : public testing::Test {
  protected:
    void SetUp() override {
        settings_ = TestSettings(folder_.Path());
        ASSERT_TRUE(CreateFolder(settings_.batchSourceFolder = in_));
        ASSERT_TRUE(CreateFolder(settings_.batchDestinationFolder = out_));
        settings_.batchSourceFormatIndex = Equirect;
        settings_.batchDestinationFormatIndex = Cross;
        settings_.batchDestinationExtensionIndex = Bmp;
        settings_.resolution0 = 0;
    }

    void PutPicture(const std::wstring& name) const {
        Image picture(128, 64, PixelFormat::Rgb8);
        picture.Fill(PixelValue{});
        ASSERT_TRUE(SavePicture(picture, JoinPath(in_, name)));
    }
    static HWND Open(const RunningProgram& program) {
        program.StartCommand(kCommandBatch);
        return WaitForDialog(kDialogTitle);
    }
    static void Start(HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDOK, 0); }
    static int Chosen(HWND dialog, int list) {
        return static_cast<int>(SendDlgItemMessageW(dialog, list, CB_GETCURSEL, 0, 0));
    }
    /// As the user would: CB_SETCURSEL alone tells the dialog nothing.
    static void Choose(HWND dialog, int list, int index) {
        SendDlgItemMessageW(dialog, list, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(list, CBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(GetDlgItem(dialog, list)));
    }
    static bool SubfoldersEnabled(HWND dialog) {
        return IsWindowEnabled(GetDlgItem(dialog, IDC_BATCH_SUBFOLDERS));
    }
    /// The message that a start led to; closes it.
    static std::wstring AnswerMessage() {
        const HWND box = WaitForMessage();
        if (box == nullptr) return L"(no message)";
        const std::wstring text = MessageText(box);
        PressButton(box, IDOK);
        return text;
    }
    std::vector<std::wstring> Results() const {
        std::vector<std::wstring> names = FindFiles(out_);
        std::sort(names.begin(), names.end());
        return names;
    }

    const TemporaryFolder folder_;
    const std::wstring in_ = folder_ / L"in", out_ = folder_ / L"out";
    AppState settings_;
};

TEST_F(BatchDialog, ListsFollowEachOtherAndCancelStoresNothing) {
    settings_.batchSourceFormatIndex = 12;
    PutSettings(&settings_);
    {
        RunningProgram program;
        ASSERT_NE(program.Window(), nullptr);
        const HWND dialog = Open(program);
        ASSERT_NE(dialog, nullptr);
        EXPECT_FALSE(IsWindowEnabled(program.Window()));
        EXPECT_EQ(TextOf(GetDlgItem(dialog, IDC_BATCH_SOURCE)), in_);
        EXPECT_EQ(TextOf(GetDlgItem(dialog, IDC_BATCH_DESTINATION)), out_);
        EXPECT_EQ(TextOf(GetDlgItem(dialog, IDC_BATCH_SOURCE_LAYOUT)), L"Interior square");
        EXPECT_EQ(TextOf(GetDlgItem(dialog, IDC_BATCH_DESTINATION_LAYOUT)), L"Horizontal cross");
        EXPECT_EQ(TextOf(GetDlgItem(dialog, IDC_BATCH_EXTENSION)), L"bmp");
        EXPECT_EQ(SendDlgItemMessageW(dialog, IDC_BATCH_SOURCE_LAYOUT, CB_GETCOUNT, 0, 0), 13);
        EXPECT_EQ(SendDlgItemMessageW(dialog, IDC_BATCH_DESTINATION_LAYOUT, CB_GETCOUNT, 0, 0), 13);
        EXPECT_EQ(SendDlgItemMessageW(dialog, IDC_BATCH_EXTENSION, CB_GETCOUNT, 0, 0), 7);
        Shot(dialog, "batch");

        struct Row {
            int list, index;
            int layout, extension;
            bool subfolders;
        };
        for (const Row& row : {Row{IDC_BATCH_EXTENSION, Mov, Movie, Mov, false},
                               Row{IDC_BATCH_EXTENSION, Png, Equirect, Png, false},
                               Row{IDC_BATCH_DESTINATION_LAYOUT, CubeMap, CubeMap, Dds, false},
                               Row{IDC_BATCH_DESTINATION_LAYOUT, SingleFiles, SingleFiles, Png, true},
                               Row{IDC_BATCH_EXTENSION, Jpg, SingleFiles, Jpg, true},
                               Row{IDC_BATCH_EXTENSION, Dds, CubeMap, Dds, false},
                               Row{IDC_BATCH_DESTINATION_LAYOUT, Movie, Movie, Mov, false}}) {
            Choose(dialog, row.list, row.index);
            EXPECT_EQ(Chosen(dialog, IDC_BATCH_DESTINATION_LAYOUT), row.layout) << row.list << row.index;
            EXPECT_EQ(Chosen(dialog, IDC_BATCH_EXTENSION), row.extension) << row.list << row.index;
            EXPECT_EQ(SubfoldersEnabled(dialog), row.subfolders) << row.list << row.index;
        }
        SetDlgItemTextW(dialog, IDC_BATCH_SOURCE, L"C:\\elsewhere");
        EXPECT_TRUE(PressButton(dialog, IDCANCEL));
        EXPECT_TRUE(IsWindowEnabled(program.Window()));
        program.Close();
    }
    const AppState saved = ReadSettings();
    EXPECT_EQ(saved.batchSourceFolder, in_);
    EXPECT_EQ(saved.batchDestinationFormatIndex, Cross);
    EXPECT_EQ(saved.batchDestinationExtensionIndex, Bmp);
}

TEST_F(BatchDialog, WhatStandsInTheWayIsToldAndTheDialogStays) {
    // Numbers that are in no list choose its first entry.
    settings_.batchSourceFormatIndex = 99;
    settings_.batchDestinationFormatIndex = -5;
    settings_.batchDestinationExtensionIndex = 7;
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    const HWND dialog = Open(program);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(Chosen(dialog, IDC_BATCH_SOURCE_LAYOUT), Equirect);
    EXPECT_EQ(Chosen(dialog, IDC_BATCH_DESTINATION_LAYOUT), Equirect);
    EXPECT_EQ(Chosen(dialog, IDC_BATCH_EXTENSION), Png);
    const struct {
        std::wstring source, destination;
        const wchar_t* message;
    } rows[] = {
        {L"C:\\none", L"C:\\none", L"Destination folder must be different from the source folder"},
        {L"C:\\none", out_, L"Source folder does not exist"},
        {in_, L"C:\\none", L"Destination folder does not exist"},
        {in_, out_, L"No files found in source folder"},
    };
    for (const auto& row : rows) {
        SetDlgItemTextW(dialog, IDC_BATCH_SOURCE, row.source.c_str());
        SetDlgItemTextW(dialog, IDC_BATCH_DESTINATION, row.destination.c_str());
        Start(dialog);
        EXPECT_EQ(AnswerMessage(), row.message);
        EXPECT_TRUE(IsWindowVisible(dialog));
    }
    // The pickers start at the folder of the text and replace it.
    const struct {
        int button, text;
        const wchar_t* title;
    } browse[] = {{IDC_BATCH_BROWSE_SOURCE, IDC_BATCH_SOURCE, L"Select source folder"},
                  {IDC_BATCH_BROWSE_DESTINATION, IDC_BATCH_DESTINATION, L"Select destination folder"}};
    for (const auto& row : browse) {
        PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(row.button), 0);
        const HWND picker = WaitForDialog(row.title);
        ASSERT_NE(picker, nullptr);
        EXPECT_TRUE(AnswerFolderPicker(picker, folder_.Path()));
        EXPECT_TRUE(Eventually([&] { return TextOf(GetDlgItem(dialog, row.text)) == folder_.Path(); }));
    }
    EXPECT_TRUE(PressButton(dialog, IDCANCEL));
}

TEST_F(BatchDialog, ConvertsTheFolderPastABrokenFile) {
    PutPicture(L"a.bmp");
    folder_.Write(L"in\\b.png", "no picture");
    PutPicture(L"c.png");
    PutSettings(&settings_);
    {
        RunningProgram program;
        ASSERT_NE(program.Window(), nullptr);
        const HWND dialog = Open(program);
        ASSERT_NE(dialog, nullptr);
        Choose(dialog, IDC_BATCH_DESTINATION_LAYOUT, SingleFiles);
        CheckDlgButton(dialog, IDC_BATCH_SUBFOLDERS, BST_CHECKED);
        {
            const ShownProgress shown(dialog);
            Start(dialog);
            const HWND box = WaitForMessage();
            ASSERT_NE(box, nullptr);
            EXPECT_EQ(MessageText(box), L"Batch processing finished!");
            Shot(dialog, "batch-finished");
            EXPECT_EQ(shown.Positions(), (std::vector<int>{33, 66, 100}));
            std::vector<std::wstring> lines = shown.Lines();
            std::sort(lines.begin(), lines.end());
            ASSERT_EQ(lines.size(), 3u);
            EXPECT_EQ(lines[0], L"Converting \"" + in_ + L"\\a.bmp\" to \"" + out_ + L"\\a\\a.bmp\"");
            EXPECT_TRUE(PressButton(box, IDOK));
        }
        EXPECT_TRUE(WaitUntilClosed(dialog));
        EXPECT_EQ(program.Title(), L"Skyvault") << "the window's panorama is another matter";
        program.Close();
    }
    EXPECT_EQ(Results(), (std::vector<std::wstring>{L"a", L"c"}));
    for (const wchar_t* name : {L"a", L"c"}) {
        EXPECT_EQ(FindFiles(JoinPath(out_, name)).size(), 6u);
        const std::wstring file = std::wstring(name) + L"_bottom.bmp";
        EXPECT_EQ(LoadPicture(JoinPath(JoinPath(out_, name), file)).width, 32u);
    }
    const AppState saved = ReadSettings();
    EXPECT_EQ(saved.batchDestinationFormatIndex, SingleFiles);
    EXPECT_EQ(saved.importPath, in_);
    EXPECT_EQ(saved.exportPath, out_);
}

TEST_F(BatchDialog, RealInputEscapeStopsBeforeTheNextFile) {
    constexpr int kMany = 60;
    for (int i = 0; i < kMany; ++i) PutPicture(std::to_wstring(i) + L".bmp");
    PutSettings(&settings_);
    RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    const HWND dialog = Open(program);
    ASSERT_NE(dialog, nullptr);
    Start(dialog);
    ASSERT_TRUE(Eventually([&] { return Results().size() >= 2; }));
    HWND box = nullptr;
    {
        const HeldKeys escape{VK_ESCAPE};
        box = WaitForMessage();
    }
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(MessageText(box), L"Batch processing finished!");
    EXPECT_TRUE(PressButton(box, IDOK));
    EXPECT_TRUE(WaitUntilClosed(dialog));
    const std::size_t written = Results().size();
    EXPECT_GE(written, 2u);
    EXPECT_LT(written, std::size_t{kMany});
    for (const std::wstring& name : Results()) EXPECT_EQ(LoadPicture(JoinPath(out_, name)).width, 4u * 32);
}

}  // namespace
}  // namespace skyvault::test
