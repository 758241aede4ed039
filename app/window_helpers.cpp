#include "app/window_helpers.h"

// After windows.h:
#include <commctrl.h>

#include <algorithm>

namespace skyvault {
namespace {

// Only the user-interface thread shows messages and runs batches.
int switchedOff = 0;

}  // namespace

void ShowMessage(const std::wstring& text, bool isError) {
    if (switchedOff > 0) return;
    MessageBoxW(nullptr, text.c_str(), kProgramName,
                MB_OK | MB_TASKMODAL | (isError ? MB_ICONERROR : MB_ICONINFORMATION));
}

MessageBoxesOff::MessageBoxesOff() {
    ++switchedOff;
}

MessageBoxesOff::~MessageBoxesOff() {
    --switchedOff;
}

std::wstring TextOfControl(HWND dialog, int id) {
    const HWND control = GetDlgItem(dialog, id);
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    text.resize(
        static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
    return text;
}

void JumpTo(HWND bar, int position) {
    SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(position + 1), 0);
    SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(position), 0);
}

void ForgetWaitingInput() {
    struct Range {
        UINT first, last;
    };
    constexpr Range kInput[] = {
        {WM_KEYFIRST, WM_KEYLAST}, {WM_MOUSEFIRST, WM_MOUSELAST}, {WM_NCMOUSEMOVE, WM_NCXBUTTONDBLCLK}};
    for (const Range& range : kInput) {
        MSG message;
        while (PeekMessageW(&message, nullptr, range.first, range.last, PM_REMOVE)) {
        }
    }
}

ScreenRect VirtualScreen() {
    const int left = GetSystemMetrics(SM_XVIRTUALSCREEN);
    const int top = GetSystemMetrics(SM_YVIRTUALSCREEN);
    return {left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN),
            top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
}

AppState DefaultSettingsOfScreen() {
    AppState settings = DefaultAppState();
    settings.windowRect =
        DefaultWindowRect(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN), VirtualScreen());
    return settings;
}

float ScaleOf(HWND window) {
    const UINT dpi = GetDpiForWindow(window);
    return dpi == 0 ? 1.0f : static_cast<float>(dpi) / 96.0f;
}

void CentreOverOwner(HWND window) {
    const HWND owner = GetWindow(window, GW_OWNER);
    RECT own{}, around{};
    if (owner == nullptr || IsIconic(owner) || !GetWindowRect(owner, &around) ||
        !GetWindowRect(window, &own)) {
        return;
    }
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    if (!GetMonitorInfoW(MonitorFromWindow(owner, MONITOR_DEFAULTTONEAREST), &monitor)) return;
    const LONG width = own.right - own.left, height = own.bottom - own.top;
    const RECT& area = monitor.rcWork;
    const LONG left = (around.left + around.right - width) / 2,
               top = (around.top + around.bottom - height) / 2;
    SetWindowPos(window, nullptr, std::max(area.left, std::min(left, area.right - width)),
                 std::max(area.top, std::min(top, area.bottom - height)), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace skyvault
