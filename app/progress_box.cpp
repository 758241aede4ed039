#include "app/progress_box.h"

#include <commctrl.h>

#include <algorithm>

#include "app/window_helpers.h"
#include "resources/resource_ids.h"

namespace skyvault {

void ProgressBox::SetUp(HINSTANCE instance, HWND owner) {
    instance_ = instance;
    owner_ = owner;
}

INT_PTR CALLBACK ProgressBox::Procedure(HWND box, UINT message, WPARAM, LPARAM lParam) {
    if (message != WM_INITDIALOG) return FALSE;
    auto& self = *reinterpret_cast<ProgressBox*>(lParam);
    self.box_ = box;
    SendDlgItemMessageW(box, IDC_PROGRESS_BAR, PBM_SETRANGE32, 0, 100);
    CentreOverOwner(box);
    self.Reset();
    return FALSE;  // the keyboard focus stays in the main window
}

void ProgressBox::Begin() {
    if (IsOpen()) return;
    box_ = CreateDialogParamW(instance_, MAKEINTRESOURCEW(IDD_PROGRESS), owner_, Procedure,
                              reinterpret_cast<LPARAM>(this));
    if (box_ == nullptr) return;
    ShowWindow(box_, SW_SHOWNA);
    UpdateWindow(box_);
}

void ProgressBox::Set(float fraction, std::wstring_view text) {
    if (!IsOpen()) return;
    // The comparison also turns a fraction that is not a number into 0.
    const float percents = fraction * 100.0f;
    const int percent = percents > 0.0f ? static_cast<int>(std::min(percents, 100.0f)) : 0;
    if (percent != lastPercent_) {
        lastPercent_ = percent;
        JumpTo(GetDlgItem(box_, IDC_PROGRESS_BAR), percent);
        UpdateWindow(box_);
    }
    if (text != lastText_) {
        lastText_ = text;
        SetDlgItemTextW(box_, IDC_PROGRESS_TEXT, lastText_.c_str());
        UpdateWindow(box_);
    }
}

void ProgressBox::Reset() {
    // Values that no report has, so that the next one is shown whatever it says.
    lastPercent_ = -1;
    lastText_ = L"XXX";
    Set(0.0f, L"");
}

void ProgressBox::End() {
    if (!IsOpen()) return;
    DestroyWindow(box_);
    box_ = nullptr;
    ForgetWaitingInput();
}

}  // namespace skyvault
