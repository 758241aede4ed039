#include "app/options_dialog.h"

#include <commctrl.h>
#include <commdlg.h>

#include <array>
#include <exception>

#include "app/draw_canvas.h"
#include "app/options_controls.h"
#include "app/window_helpers.h"
#include "platform/path_text.h"
#include "resources/resource_ids.h"

namespace skyvault {
namespace {

constexpr LONG kSwatchSize = 14;
constexpr UINT_PTR kLogoTimer = 1;
/// Without a pause in typing no picture is looked for.
constexpr UINT kTypingPause = 300;

COLORREF SystemColour(const Color8& colour) {
    return RGB(colour.red, colour.green, colour.blue);
}

class OptionsDialog {
  public:
    OptionsDialog(AppState& settings, const FileDialogs& fileDialogs)
        : settings_(settings), fileDialogs_(fileDialogs) {}

    static INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

  private:
    INT_PTR OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void OnCommand(int id, int notification);
    void Open();
    void OnPaint() const;
    void DrawSwatch(HDC context, const RECT& frame) const;
    void ChooseColour();
    void Browse();
    void ResetAll();
    /// Shows the picture whose path is in the text now.
    void ShowLogo();
    RECT Swatch() const;
    /// The main window shows the background colour too.
    void RepaintOwner() const;

    AppState& settings_;
    const FileDialogs& fileDialogs_;
    HWND dialog_ = nullptr;
    LogoPreview logo_;
};

INT_PTR CALLBACK OptionsDialog::Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(dialog, DWLP_USER, lParam);
        reinterpret_cast<OptionsDialog*>(lParam)->dialog_ = dialog;
    }
    auto* const self = reinterpret_cast<OptionsDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
    if (self == nullptr) return FALSE;
    try {
        return self->OnMessage(message, wParam, lParam);
    } catch (const std::exception&) {
        ShowMessage(L"Out of memory", true);
        return TRUE;
    }
}

INT_PTR OptionsDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            Open();
            return TRUE;
        case WM_PAINT:
            OnPaint();
            return TRUE;
        case WM_DRAWITEM: {
            const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
            if (item.CtlID == IDC_LOGO_PREVIEW) logo_.Draw(item.hDC, item.rcItem);
            return TRUE;
        }
        case WM_LBUTTONDOWN: {
            const RECT swatch = Swatch();
            const LONG x = static_cast<short>(LOWORD(lParam)), y = static_cast<short>(HIWORD(lParam));
            const bool inside = x > swatch.left && x < swatch.right && y > swatch.top && y < swatch.bottom;
            if (inside) ChooseColour();
            return inside;
        }
        case WM_TIMER:
            if (wParam == kLogoTimer) ShowLogo();
            return TRUE;
        case WM_COMMAND:
            OnCommand(LOWORD(wParam), HIWORD(wParam));
            return TRUE;
        default:
            return FALSE;
    }
}

void OptionsDialog::OnCommand(int id, int notification) {
    switch (id) {
        case IDOK:
            ReadFromControls(dialog_, settings_);
            EndDialog(dialog_, IDOK);
            break;
        case IDCANCEL:
            EndDialog(dialog_, IDCANCEL);
            break;
        case IDC_CHANGE_COLOUR:
            ChooseColour();
            break;
        case IDC_LOGO_BROWSE:
            Browse();
            break;
        case IDC_LOGO_PATH:
            if (notification == EN_CHANGE) SetTimer(dialog_, kLogoTimer, kTypingPause, nullptr);
            break;
        case IDC_RESET_ALL:
            ResetAll();
            break;
        default:
            break;
    }
}

/// Shown while the mouse rests on the control; the dialog owns the window.
void AddToolTip(HWND dialog, int control, const wchar_t* text) {
    const HWND tip = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP, 0, 0,
                                     0, 0, dialog, nullptr, nullptr, nullptr);
    TOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = dialog;
    tool.uId = reinterpret_cast<UINT_PTR>(GetDlgItem(dialog, control));
    tool.lpszText = const_cast<wchar_t*>(text);  // is only read
    SendMessageW(tip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    constexpr LPARAM kWidest = 320;  // pixels; without a limit the text has one line
    SendMessageW(tip, TTM_SETMAXTIPWIDTH, 0, kWidest);
}

void OptionsDialog::Open() {
    SetWindowTextW(dialog_, (std::wstring(kProgramName) + L" - Options").c_str());
    SetUpOptionsControls(dialog_);
    ShowInControls(dialog_, settings_);
    AddToolTip(
        dialog_, IDC_EXPORT_ALPHA,
        L"Empty places become transparent where the photo itself has an alpha channel. A photo without one "
        L"keeps its format, and empty places have the background colour.");
    ShowLogo();
    CentreOverOwner(dialog_);
}

RECT OptionsDialog::Swatch() const {
    // Two corners turned into the dialog's own coordinates.
    const auto placeOf = [&](int id) {
        RECT rect{};
        GetWindowRect(GetDlgItem(dialog_, id), &rect);
        MapWindowPoints(nullptr, dialog_, reinterpret_cast<POINT*>(&rect), 2);
        return rect;
    };
    const LONG right = placeOf(IDC_EXPORT_ALPHA).right;
    const RECT beside = placeOf(IDC_EQUIRECTANGULAR_RESOLUTION);
    const LONG middle = (beside.top + beside.bottom) / 2;
    return {right - kSwatchSize, middle - kSwatchSize / 2, right, middle + kSwatchSize / 2};
}

void OptionsDialog::OnPaint() const {
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(dialog_, &paint);
    // A thin line around it: the colour may be the dialog's own.
    RECT frame = Swatch(), wanted{};
    InflateRect(&frame, 1, 1);
    if (IntersectRect(&wanted, &frame, &paint.rcPaint)) {
        // The swatch lies over a group box, and making its canvas may take a while: the controls go first.
        RedrawWindow(dialog_, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        DrawSwatch(context, frame);
    }
    EndPaint(dialog_, &paint);
}

void OptionsDialog::DrawSwatch(HDC context, const RECT& frame) const {
    const COLORREF line = GetSysColor(COLOR_BTNSHADOW);
    Color8 colour = settings_.backgroundColour;
    colour.alpha = 255;
    const float middle = static_cast<float>(frame.top + frame.bottom) / 2.0f;
    DrawCanvas canvas(context, frame);
    canvas.BeginDraw();
    canvas.Clear({GetRValue(line), GetGValue(line), GetBValue(line), 255});
    // A line as wide as the swatch is high fills it.
    canvas.DrawLine({static_cast<float>(frame.left + 1), middle},
                    {static_cast<float>(frame.right - 1), middle}, static_cast<float>(kSwatchSize), colour,
                    true);
    canvas.EndDraw();
}

void OptionsDialog::ChooseColour() {
    // The user's own colours stay for the next time. White to begin with.
    static std::array<COLORREF, 16> ownColours = [] {
        std::array<COLORREF, 16> colours{};
        colours.fill(RGB(255, 255, 255));
        return colours;
    }();
    CHOOSECOLORW choice{};
    choice.lStructSize = sizeof choice;
    choice.hwndOwner = dialog_;
    choice.rgbResult = SystemColour(settings_.backgroundColour);
    choice.lpCustColors = ownColours.data();
    choice.Flags = CC_RGBINIT | CC_FULLOPEN;
    static decltype(&ChooseColorW) show = nullptr;
    if (!FindSystemFunction(show, L"comdlg32.dll", "ChooseColorW") || !show(&choice)) return;
    // The flag as it is stored, not the check box: that counts only after OK.
    const auto alpha = static_cast<std::uint8_t>(settings_.transparency ? 0 : 255);
    settings_.backgroundColour = {GetRValue(choice.rgbResult), GetGValue(choice.rgbResult),
                                  GetBValue(choice.rgbResult), alpha};
    const RECT swatch = Swatch();
    InvalidateRect(dialog_, &swatch, FALSE);
    RepaintOwner();
}

void OptionsDialog::Browse() {
    const std::wstring current = TextOfControl(dialog_, IDC_LOGO_PATH);
    // Without a full stop the path would be taken for a folder.
    const bool hasFullStop = current.find(L'.') != std::wstring::npos;
    const std::wstring start = hasFullStop ? current : std::wstring(FolderPart(current));
    const std::wstring path =
        fileDialogs_.Ask(dialog_, start, FileDialogKind::OpenPicture, L"Select logo", settings_);
    if (path.empty()) return;
    SetDlgItemTextW(dialog_, IDC_LOGO_PATH, path.c_str());
    ShowLogo();
}

void OptionsDialog::ResetAll() {
    // That the file was read is no setting: without it the file would not be written any more.
    const bool settingsLoaded = settings_.settingsLoaded;
    settings_ = DefaultSettingsOfScreen();
    settings_.settingsLoaded = settingsLoaded;
    ShowInControls(dialog_, settings_);
    ShowLogo();
    InvalidateRect(dialog_, nullptr, TRUE);
    RepaintOwner();
}

void OptionsDialog::RepaintOwner() const {
    // Without a window every window would be repainted.
    const HWND owner = GetWindow(dialog_, GW_OWNER);
    if (owner != nullptr) InvalidateRect(owner, nullptr, FALSE);
}

void OptionsDialog::ShowLogo() {
    KillTimer(dialog_, kLogoTimer);
    if (logo_.SetPath(TextOfControl(dialog_, IDC_LOGO_PATH)))
        InvalidateRect(GetDlgItem(dialog_, IDC_LOGO_PREVIEW), nullptr, FALSE);
}

}  // namespace

INT_PTR ShowOptionsDialog(HINSTANCE instance, HWND owner, AppState& settings,
                          const FileDialogs& fileDialogs) {
    OptionsDialog dialog(settings, fileDialogs);
    const INT_PTR result = DialogBoxParamW(instance, MAKEINTRESOURCEW(IDD_OPTIONS), owner,
                                           OptionsDialog::Procedure, reinterpret_cast<LPARAM>(&dialog));
    return result == IDOK ? IDOK : IDCANCEL;
}

}  // namespace skyvault
