// The batch processing dialog of the running program: its lists, a run past a broken file, and the Escape
// key.

#include <windows.h>
// After windows.h:
#include <commctrl.h>

#include <tuple>

#include "platform/files.h"
#include "tests/picture_io.h"
#include "tests/window/program_fixture.h"

namespace skyvault::test {
namespace {

// Places in the dialog's lists of layouts and extensions.
constexpr int kCross = 3, kSingleFiles = 7, kBmp = 2;

class BatchDialog : public ProgramTest {
  protected:
    /// Opens the dialog with both folders and these lists.
    void Open() {
        ASSERT_TRUE(CreateFolder(settings_.batchSourceFolder = in_));
        ASSERT_TRUE(CreateFolder(settings_.batchDestinationFolder = out_));
        settings_.batchDestinationFormatIndex = kCross;
        settings_.batchDestinationExtensionIndex = kBmp;
        settings_.resolution0 = 0;
        ASSERT_TRUE(Start());
        dialog_ = program_->Open(IDM_BATCH, L"Skyvault - Batch processing");
    }
    void PutPicture(const wchar_t* name) const {
        Image picture(128, 64, PixelFormat::Rgb8);
        ASSERT_TRUE(Saved(picture, JoinPath(in_, name)));
    }
    void StartBatch() const { PostMessageW(dialog_, WM_COMMAND, IDOK, 0); }
    /// As the user would: CB_SETCURSEL alone tells the dialog nothing.
    void Choose(int list, int index) const {
        SendDlgItemMessageW(dialog_, list, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
        SendMessageW(dialog_, WM_COMMAND, MAKEWPARAM(list, CBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(GetDlgItem(dialog_, list)));
    }
    std::size_t Results() const { return FindFiles(out_).size(); }

    const std::wstring in_ = folder_ / L"in", out_ = folder_ / L"out";
    HWND dialog_ = nullptr;
};

TEST_F(BatchDialog, ListsFollowEachOtherAndBrowsingFillsTheFolders) {
    settings_.batchSourceFormatIndex = 12;
    Open();
    EXPECT_EQ(TextOf(dialog_, IDC_BATCH_SOURCE), in_);
    EXPECT_EQ(TextOf(dialog_, IDC_BATCH_DESTINATION), out_);
    EXPECT_EQ(TextOf(dialog_, IDC_BATCH_SOURCE_LAYOUT), L"Interior square");
    EXPECT_EQ(TextOf(dialog_, IDC_BATCH_DESTINATION_LAYOUT), L"Horizontal cross");
    EXPECT_EQ(TextOf(dialog_, IDC_BATCH_EXTENSION), L"bmp");
    for (const auto& [list, index, layout, extension, subfolders] :
         {std::tuple{IDC_BATCH_DESTINATION_LAYOUT, kSingleFiles, L"Single files", L"bmp", TRUE},
          {IDC_BATCH_EXTENSION, 0, L"DirectX DDS", L"dds", FALSE},
          {IDC_BATCH_DESTINATION_LAYOUT, kCross, L"Horizontal cross", L"png", FALSE}}) {
        Choose(list, index);
        EXPECT_EQ(TextOf(dialog_, IDC_BATCH_DESTINATION_LAYOUT), layout);
        EXPECT_EQ(TextOf(dialog_, IDC_BATCH_EXTENSION), extension);
        EXPECT_EQ(IsWindowEnabled(GetDlgItem(dialog_, IDC_BATCH_SUBFOLDERS)), subfolders);
    }
    StartBatch();
    EXPECT_EQ(AnswerMessage(), L"No files found in source folder");
    EXPECT_TRUE(IsWindowVisible(dialog_));
    for (const auto& [button, text, title] :
         {std::tuple{IDC_BATCH_BROWSE_SOURCE, IDC_BATCH_SOURCE, L"Select source folder"},
          {IDC_BATCH_BROWSE_DESTINATION, IDC_BATCH_DESTINATION, L"Select destination folder"}}) {
        PostMessageW(dialog_, WM_COMMAND, static_cast<WPARAM>(button), 0);
        EXPECT_TRUE(AnswerFileDialog(WaitForDialog(title), folder_.Path()));
        EXPECT_TRUE(Eventually([&, text = text] { return TextOf(dialog_, text) == folder_.Path(); }));
    }
    Choose(IDC_BATCH_DESTINATION_LAYOUT, kSingleFiles);
    EXPECT_TRUE(PressButton(dialog_, IDCANCEL));
    program_->Close();
    EXPECT_EQ(ReadSettings().batchDestinationFormatIndex, kCross);
}

TEST_F(BatchDialog, ConvertsTheFolderPastABrokenFile) {
    Open();
    PutPicture(L"a.bmp");
    folder_.Write(L"in\\b.png", "no picture");
    PutPicture(L"c.png");
    Choose(IDC_BATCH_DESTINATION_LAYOUT, kSingleFiles);
    CheckDlgButton(dialog_, IDC_BATCH_SUBFOLDERS, BST_CHECKED);
    StartBatch();
    WaitForMessage();
    EXPECT_EQ(SendDlgItemMessageW(dialog_, IDC_BATCH_PROGRESS, PBM_GETPOS, 0, 0), 100);
    EXPECT_TRUE(TextOf(dialog_, IDC_BATCH_STATUS).starts_with(L"Converting \"" + in_ + L"\\"));
    EXPECT_EQ(AnswerMessage(),
              L"Batch processing finished!\n\n2 converted, 1 failed, 0 skipped\n\nCould not open \"" + in_ +
                  L"\\b.png\": it is not a picture");
    EXPECT_TRUE(WaitUntilClosed(dialog_));
    EXPECT_EQ(Title(), L"Skyvault") << "the window's panorama is another matter";
    program_->Close();
    EXPECT_EQ(Results(), 2u);
    EXPECT_EQ(Loaded(folder_ / L"out\\a\\a_bottom.bmp").width, 32u);
    const AppState saved = ReadSettings();
    EXPECT_EQ(saved.batchDestinationFormatIndex, kSingleFiles);
    EXPECT_EQ(saved.importPath, in_);
    EXPECT_EQ(saved.exportPath, out_);
}

TEST_F(BatchDialog, RealInputEscapeStopsBeforeTheNextFile) {
    Open();
    constexpr std::size_t kMany = 300;
    PutPicture(L"0.bmp");
    const std::string bytes = folder_.Read(L"in/0.bmp");
    for (std::size_t i = 1; i < kMany; ++i) folder_.Write(L"in\\" + std::to_wstring(i) + L".bmp", bytes);
    StartBatch();
    ASSERT_TRUE(Eventually([&] { return Results() >= 2; }));
    {
        const HeldKeys escape{VK_ESCAPE};
        WaitForMessage();
    }
    EXPECT_TRUE(AnswerMessage().starts_with(L"Batch processing finished!\n\n"));
    EXPECT_TRUE(WaitUntilClosed(dialog_));
    EXPECT_LT(Results(), kMany);
    EXPECT_EQ(Loaded(out_ + L"\\0.bmp").width, 4u * 32);
}

}  // namespace
}  // namespace skyvault::test
