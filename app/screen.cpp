#include "app/screen.h"

#include <algorithm>

namespace skyvault {

ScreenRect VirtualScreen() {
    const int left = GetSystemMetrics(SM_XVIRTUALSCREEN);
    const int top = GetSystemMetrics(SM_YVIRTUALSCREEN);
    return {left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN),
            top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
}

ScreenRect DefaultWindowRectOfScreen() {
    return DefaultWindowRect(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN), VirtualScreen());
}

AppState DefaultSettingsOfScreen() {
    AppState settings = DefaultAppState();
    settings.windowRect = DefaultWindowRectOfScreen();
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
