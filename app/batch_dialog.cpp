#include "app/batch_dialog.h"

// After windows.h:
#include <commctrl.h>

#include <algorithm>
#include <new>
#include <string>

#include "app/file_dialogs.h"
#include "app/window_helpers.h"
#include "platform/clock.h"
#include "platform/path_text.h"
#include "resources/resource_ids.h"
#include "session/batch.h"
#include "session/messages.h"

namespace skyvault {
namespace {

/// Long enough to read the line about each panorama.
constexpr std::uint32_t kReadingTime = 100;
constexpr int kLongestFolder = 260;

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
    const int layouts = static_cast<int>(BatchLayouts().size());
    for (const LayoutRow& layout : BatchLayouts()) {
        AddItem(dialog, IDC_BATCH_SOURCE_LAYOUT, layout.name);
        AddItem(dialog, IDC_BATCH_DESTINATION_LAYOUT, layout.name);
    }
    for (const wchar_t* const extension : BatchExtensions()) AddItem(dialog, IDC_BATCH_EXTENSION, extension);

    const int layout = Listed(settings.batchDestinationFormatIndex, layouts, 0);
    const int extension =
        Listed(settings.batchDestinationExtensionIndex, static_cast<int>(BatchExtensions().size()),
               BatchExtensionForLayout(layout, -1));
    Select(dialog, IDC_BATCH_SOURCE_LAYOUT, Listed(settings.batchSourceFormatIndex, layouts, 0));
    Select(dialog, IDC_BATCH_DESTINATION_LAYOUT, layout);
    Select(dialog, IDC_BATCH_EXTENSION, extension);
    for (const int folder : {IDC_BATCH_SOURCE, IDC_BATCH_DESTINATION}) {
        SendDlgItemMessageW(dialog, folder, EM_LIMITTEXT, kLongestFolder, 0);
    }
    SetDlgItemTextW(dialog, IDC_BATCH_SOURCE, settings.batchSourceFolder.c_str());
    SetDlgItemTextW(dialog, IDC_BATCH_DESTINATION, settings.batchDestinationFolder.c_str());
    CheckDlgButton(dialog, IDC_BATCH_SUBFOLDERS, BST_UNCHECKED);
    SetDlgItemTextW(dialog, IDC_BATCH_STATUS, L"");
    SendDlgItemMessageW(dialog, IDC_BATCH_PROGRESS, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
    EnableSubfolders(dialog);
}

void BrowseInto(HWND dialog, int control, const wchar_t* title) {
    const std::wstring folder = AskForFolder(dialog, title, TextOfControl(dialog, control));
    if (!folder.empty()) SetDlgItemTextW(dialog, control, folder.c_str());
}

/// Shows in the dialog what is being converted, and looks for the Escape key in between.
class DialogObserver final : public BatchObserver {
  public:
    explicit DialogObserver(HWND dialog) : dialog_(dialog) {}

    bool OnBegin(const BatchItem& item, std::size_t index, std::size_t count) override {
        if (GetAsyncKeyState(VK_ESCAPE) & 0x8000) return false;
        // The one being converted counts as done.
        JumpTo(GetDlgItem(dialog_, IDC_BATCH_PROGRESS), static_cast<int>(100 * (index + 1) / count));
        const std::wstring line = L"Converting \"" + item.sources.front() + L"\" to \"" + item.output + L"\"";
        SetDlgItemTextW(dialog_, IDC_BATCH_STATUS, line.c_str());
        // No messages are let in meanwhile; the controls paint themselves now.
        RedrawWindow(dialog_, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        SleepMilliseconds(kReadingTime);
        return true;
    }
    void OnEnd(const BatchItem& item, BatchEnd end, const ConversionResult& result) override {
        if (end == BatchEnd::Failed) Note(item, LineOf(result.outcome));
        for (const std::wstring& trouble : result.troubles) Note(item, trouble);
    }

    /// A line for each of the first failures, and how many more there are.
    std::wstring Failures() const {
        const std::size_t more = failures_ - std::min(failures_, kMostNamed);
        return more == 0 ? lines_ : lines_ + L"\n… and " + std::to_wstring(more) + L" more";
    }

  private:
    /// A message box has to fit the screen.
    static constexpr std::size_t kMostNamed = 12;

    void Note(const BatchItem& item, const std::wstring& reason) {
        if (failures_++ >= kMostNamed) return;
        const std::wstring& source = item.sources.front();
        const bool named = reason.find(Printable(source)) != std::wstring::npos;
        lines_ += L"\n" + (named ? reason : Quoted(source) + L": " + reason);
    }

    HWND dialog_;
    std::wstring lines_;
    std::size_t failures_ = 0;
};

void ReadInto(HWND dialog, AppState& settings) {
    settings.batchSourceFolder = TextOfControl(dialog, IDC_BATCH_SOURCE).substr(0, kLongestFolder);
    settings.batchSourceFormatIndex = Selected(dialog, IDC_BATCH_SOURCE_LAYOUT);
    settings.batchDestinationFolder = TextOfControl(dialog, IDC_BATCH_DESTINATION).substr(0, kLongestFolder);
    settings.batchDestinationFormatIndex = Selected(dialog, IDC_BATCH_DESTINATION_LAYOUT);
    settings.batchDestinationExtensionIndex = Selected(dialog, IDC_BATCH_EXTENSION);
}

/// False when something stood in the way: it has been told, and the dialog stays.
bool Start(HWND dialog, AppState& settings) {
    ReadInto(dialog, settings);
    BatchJob job;
    job.from = &BatchLayouts()[static_cast<std::size_t>(settings.batchSourceFormatIndex)];
    job.to = &BatchLayouts()[static_cast<std::size_t>(settings.batchDestinationFormatIndex)];
    job.sourceFolder = settings.batchSourceFolder;
    job.destinationFolder = settings.batchDestinationFolder;
    job.extension = BatchExtensions()[static_cast<std::size_t>(settings.batchDestinationExtensionIndex)];
    job.subfolders = IsDlgButtonChecked(dialog, IDC_BATCH_SUBFOLDERS) == BST_CHECKED;
    const BatchPlan plan = PlanBatch(job, settings);
    if (!plan.obstacle.IsDone()) {
        ShowMessage(MessageOf(plan.obstacle), true);
        return false;
    }
    settings.importPath = job.sourceFolder;
    settings.exportPath = job.destinationFolder;
    DialogObserver observer(dialog);
    BatchCounts counts;
    {
        const MessageBoxesOff silence;
        const HCURSOR before = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
        counts = RunBatch(job, plan.items, false, settings, observer);
        SetCursor(before);
    }
    ForgetWaitingInput();
    const std::wstring failures = observer.Failures();
    ShowMessage(L"Batch processing finished!\n\n" + TextOfCounts(counts) +
                    (failures.empty() ? L"" : L"\n" + failures),
                false);
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
