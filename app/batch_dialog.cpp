#include "app/batch_dialog.h"

// After windows.h:
#include <commctrl.h>

#include <new>
#include <string>

#include "app/file_dialogs.h"
#include "app/message_box.h"
#include "app/screen.h"
#include "app/waiting_input.h"
#include "platform/clock.h"
#include "resources/resource_ids.h"
#include "session/batch.h"

namespace skyvault {
namespace {

/// Long enough to read the line about each panorama.
constexpr std::uint32_t kReadingTime = 100;
constexpr int kLongestFolder = 260;

std::wstring TextOf(HWND dialog, int control) {
    wchar_t text[kLongestFolder + 1] = {};
    GetDlgItemTextW(dialog, control, text, kLongestFolder + 1);
    return text;
}

int Selected(HWND dialog, int list) {
    return static_cast<int>(SendDlgItemMessageW(dialog, list, CB_GETCURSEL, 0, 0));
}

void Select(HWND dialog, int list, int index) {
    SendDlgItemMessageW(dialog, list, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

void AddItem(HWND dialog, int list, const wchar_t* text) {
    SendDlgItemMessageW(dialog, list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
}

/// A settings file may hold any number: what is not in the list becomes `otherwise`.
int Listed(int index, int count, int otherwise) {
    return index >= 0 && index < count ? index : otherwise;
}

void EnableSubfolders(HWND dialog) {
    const bool singleFiles =
        Selected(dialog, IDC_BATCH_DESTINATION_LAYOUT) == static_cast<int>(PanoramaFormat::SingleFiles);
    EnableWindow(GetDlgItem(dialog, IDC_BATCH_SUBFOLDERS), singleFiles);
}

void Fill(HWND dialog, const AppState& settings) {
    SetWindowTextW(dialog, (std::wstring(kProgramName) + L" - Batch processing").c_str());
    for (int layout = 0; layout < kBatchLayoutCount; ++layout) {
        const wchar_t* const name = FindLayout(static_cast<PanoramaFormat>(layout))->name;
        AddItem(dialog, IDC_BATCH_SOURCE_LAYOUT, name);
        AddItem(dialog, IDC_BATCH_DESTINATION_LAYOUT, name);
    }
    for (const wchar_t* const extension : BatchExtensions()) AddItem(dialog, IDC_BATCH_EXTENSION, extension);

    const int layout = Listed(settings.batchDestinationFormatIndex, kBatchLayoutCount, 0);
    const int extension =
        Listed(settings.batchDestinationExtensionIndex, static_cast<int>(BatchExtensions().size()),
               BatchExtensionForLayout(layout, -1));
    Select(dialog, IDC_BATCH_SOURCE_LAYOUT, Listed(settings.batchSourceFormatIndex, kBatchLayoutCount, 0));
    Select(dialog, IDC_BATCH_DESTINATION_LAYOUT, layout);
    Select(dialog, IDC_BATCH_EXTENSION, extension);
    SetDlgItemTextW(dialog, IDC_BATCH_SOURCE, settings.batchSourceFolder.c_str());
    SetDlgItemTextW(dialog, IDC_BATCH_DESTINATION, settings.batchDestinationFolder.c_str());
    CheckDlgButton(dialog, IDC_BATCH_SUBFOLDERS, BST_UNCHECKED);
    SetDlgItemTextW(dialog, IDC_BATCH_STATUS, L"");
    SendDlgItemMessageW(dialog, IDC_BATCH_PROGRESS, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
    EnableSubfolders(dialog);
}

void BrowseInto(HWND dialog, int control, const wchar_t* title) {
    const std::wstring folder = AskForFolder(dialog, title, TextOf(dialog, control));
    if (!folder.empty()) SetDlgItemTextW(dialog, control, folder.c_str());
}

/// Shows in the dialog what is being converted, and looks for the Escape key in between.
class DialogObserver final : public BatchObserver {
  public:
    explicit DialogObserver(HWND dialog) : dialog_(dialog) {}

    bool OnBegin(const BatchItem& item, std::size_t index, std::size_t count) override {
        if (GetAsyncKeyState(VK_ESCAPE) & 0x8000) return false;
        // The one being converted counts as done.
        SendDlgItemMessageW(dialog_, IDC_BATCH_PROGRESS, PBM_SETPOS, 100 * (index + 1) / count, 0);
        const std::wstring line = L"Converting \"" + item.sources.front() + L"\" to \"" + item.output + L"\"";
        SetDlgItemTextW(dialog_, IDC_BATCH_STATUS, line.c_str());
        // No messages are let in meanwhile; the controls paint themselves now.
        RedrawWindow(dialog_, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        SleepMilliseconds(kReadingTime);
        return true;
    }
    void OnEnd(const BatchItem&, BatchOutcome, const std::wstring&) override {}

  private:
    HWND dialog_;
};

void ReadInto(HWND dialog, AppState& settings) {
    settings.batchSourceFolder = TextOf(dialog, IDC_BATCH_SOURCE);
    settings.batchSourceFormatIndex = Selected(dialog, IDC_BATCH_SOURCE_LAYOUT);
    settings.batchDestinationFolder = TextOf(dialog, IDC_BATCH_DESTINATION);
    settings.batchDestinationFormatIndex = Selected(dialog, IDC_BATCH_DESTINATION_LAYOUT);
    settings.batchDestinationExtensionIndex = Selected(dialog, IDC_BATCH_EXTENSION);
}

/// False when something stood in the way: it has been told, and the dialog stays.
bool Start(HWND dialog, AppState& settings) {
    ReadInto(dialog, settings);
    BatchJob job;
    job.from = static_cast<PanoramaFormat>(settings.batchSourceFormatIndex);
    job.to = static_cast<PanoramaFormat>(settings.batchDestinationFormatIndex);
    job.sourceFolder = settings.batchSourceFolder;
    job.destinationFolder = settings.batchDestinationFolder;
    job.extension = BatchExtensions()[static_cast<std::size_t>(settings.batchDestinationExtensionIndex)];
    job.subfolders = IsDlgButtonChecked(dialog, IDC_BATCH_SUBFOLDERS) == BST_CHECKED;
    const BatchPlan plan = PlanBatch(job, settings.fileNamingSystem);
    if (!plan.obstacle.empty()) {
        ShowMessage(plan.obstacle, true);
        return false;
    }
    settings.importPath = job.sourceFolder;
    settings.exportPath = job.destinationFolder;
    {
        const MessageBoxesOff silence;
        const HCURSOR before = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
        DialogObserver observer(dialog);
        RunBatch(job, plan.items, false, settings, observer);
        SetCursor(before);
    }
    ForgetWaitingInput();
    ShowMessage(L"Batch processing finished!", false);
    return true;
}

void OnCommand(HWND dialog, int control, int notification, AppState& settings) {
    switch (control) {
        case IDC_BATCH_DESTINATION_LAYOUT:
            if (notification != CBN_SELCHANGE) break;
            Select(dialog, IDC_BATCH_EXTENSION,
                   BatchExtensionForLayout(Selected(dialog, IDC_BATCH_DESTINATION_LAYOUT),
                                           Selected(dialog, IDC_BATCH_EXTENSION)));
            EnableSubfolders(dialog);
            break;
        case IDC_BATCH_EXTENSION:
            if (notification != CBN_SELCHANGE) break;
            Select(dialog, IDC_BATCH_DESTINATION_LAYOUT,
                   BatchLayoutForExtension(Selected(dialog, IDC_BATCH_EXTENSION),
                                           Selected(dialog, IDC_BATCH_DESTINATION_LAYOUT)));
            EnableSubfolders(dialog);
            break;
        case IDC_BATCH_BROWSE_SOURCE:
            BrowseInto(dialog, IDC_BATCH_SOURCE, L"Select source folder");
            break;
        case IDC_BATCH_BROWSE_DESTINATION:
            BrowseInto(dialog, IDC_BATCH_DESTINATION, L"Select destination folder");
            break;
        case IDOK:
            if (Start(dialog, settings)) EndDialog(dialog, 1);
            break;
        case IDCANCEL:
            EndDialog(dialog, 2);
            break;
        default:
            break;
    }
}

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    try {
        switch (message) {
            case WM_INITDIALOG:
                SetWindowLongPtrW(dialog, DWLP_USER, lParam);
                Fill(dialog, *reinterpret_cast<const AppState*>(lParam));
                CentreOverOwner(dialog);
                return TRUE;
            case WM_COMMAND:
                OnCommand(dialog, LOWORD(wParam), HIWORD(wParam),
                          *reinterpret_cast<AppState*>(GetWindowLongPtrW(dialog, DWLP_USER)));
                return TRUE;
            default:
                return FALSE;
        }
    } catch (const std::exception&) {
        ShowMessage(L"Out of memory", true);
        return TRUE;
    }
}

}  // namespace

INT_PTR ShowBatchDialog(HINSTANCE instance, HWND owner, AppState& settings) {
    return DialogBoxParamW(instance, MAKEINTRESOURCEW(IDD_BATCH), owner, Procedure,
                           reinterpret_cast<LPARAM>(&settings));
}

}  // namespace skyvault
