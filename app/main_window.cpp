#include "app/main_window.h"

#include <shellapi.h>

#include <algorithm>
#include <new>

#include "app/menu_commands.h"
#include "app/window_helpers.h"
#include "platform/files.h"
#include "resources/resource_ids.h"
#include "session/commands.h"
#include "session/drop_files.h"
#include "settings/settings_file.h"

namespace skyvault {
namespace {

bool IsRepeat(LPARAM keyData) {
    return (keyData & LPARAM{1} << 30) != 0;
}

/// A held key's repetition that has waited in the queue until after the key was let go: large pictures take
/// longer to draw than keys to repeat, and turning on after the hand has stopped is no use.
bool IsLateRepeat(WPARAM key, LPARAM keyData) {
    return IsRepeat(keyData) && (GetAsyncKeyState(static_cast<int>(key)) & 0x8000) == 0;
}

/// Before a menu opens: its items that can do nothing now are greyed.
void GreyUnavailable(const Session& session, HMENU menu) {
    constexpr UINT kNone = 0xffffffff;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        const UINT command = GetMenuItemID(menu, i);
        if (command == 0 || command == kNone) continue;
        const bool available = IsAvailable(session, static_cast<std::uint16_t>(command));
        EnableMenuItem(menu, command, static_cast<UINT>(MF_BYCOMMAND | (available ? MF_ENABLED : MF_GRAYED)));
    }
}

/// What WM_DROPFILES carries. Its memory is the system's: given back also when ours runs out.
struct Drop {
    HDROP handle;
    explicit Drop(HDROP h) : handle(h) {}
    ~Drop() { DragFinish(handle); }
    Drop(const Drop&) = delete;
    Drop& operator=(const Drop&) = delete;
};

/// The paths of the files; the drop is finished, whatever becomes of them.
std::vector<std::wstring> TakeDroppedFiles(WPARAM dropped) {
    const Drop drop(reinterpret_cast<HDROP>(dropped));
    constexpr UINT kCount = 0xffffffff;
    std::vector<std::wstring> paths(DragQueryFileW(drop.handle, kCount, nullptr, 0));
    for (UINT i = 0; i < paths.size(); ++i) {
        std::wstring& path = paths[i];
        path.resize(std::size_t{DragQueryFileW(drop.handle, i, nullptr, 0)} + 1);
        path.resize(DragQueryFileW(drop.handle, i, path.data(), static_cast<UINT>(path.size())));
    }
    return paths;
}

}  // namespace

MainWindowClass::MainWindowClass(HINSTANCE instance)
    : instance_(instance),
      smallIcon_(static_cast<HICON>(LoadImageW(instance, MAKEINTRESOURCEW(IDI_SKYVAULT), IMAGE_ICON,
                                               GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON),
                                               LR_DEFAULTCOLOR))) {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = MainWindow::Procedure;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(IDI_SKYVAULT));
    windowClass.hIconSm = smallIcon_;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_WINDOW + 1));
    windowClass.lpszMenuName = MAKEINTRESOURCEW(IDR_MENU);
    windowClass.lpszClassName = kName;
    RegisterClassExW(&windowClass);
}

MainWindowClass::~MainWindowClass() {
    UnregisterClassW(kName, instance_);
    if (smallIcon_ != nullptr) DestroyIcon(smallIcon_);
}

MainWindow::~MainWindow() {
    // A menu that is no window's is not destroyed with one.
    if (fullScreen_) DestroyMenu(menu_);
    if (window_ != nullptr) DestroyWindow(window_);
}

bool MainWindow::Create() {
    const ScreenRect rect = session_.settings.windowRect;
    CreateWindowExW(0, MainWindowClass::kName, kProgramName, WS_OVERLAPPEDWINDOW, rect.left, rect.top,
                    rect.right - rect.left, rect.bottom - rect.top, nullptr, nullptr, instance_, this);
    return window_ != nullptr;
}

LRESULT CALLBACK MainWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        auto* const self = static_cast<MainWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        self->window_ = window;
        self->host_.SetWindow(window);
        DragAcceptFiles(window, TRUE);
    }
    auto* const self = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr) return DefWindowProcW(window, message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->window_ = nullptr;
        self->host_.SetWindow(nullptr);
        return DefWindowProcW(window, message, wParam, lParam);
    }
    try {
        return self->OnMessage(message, wParam, lParam);
    } catch (const std::exception&) {
        // Out of memory in all likelihood: texts and lists are small, but it may be full of pictures.
        ShowMessage(L"Out of memory", true);
        return 0;
    }
}

LRESULT MainWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        case WM_CLOSE:
            if (busy_) return 0;
            break;
        case WM_ENDSESSION:
            // The process may be ended as soon as this returns. There is nobody left to tell of a failure.
            if (wParam != 0)
                static_cast<void>(SaveSettings(session_.settings, SettingsPath(ProgramFolder())));
            return 0;
        case WM_MOVE:
            StoreRect();
            return 0;
        case WM_SIZE:
            OnSize();
            return 0;
        case WM_GETMINMAXINFO: {
            auto& limits = *reinterpret_cast<MINMAXINFO*>(lParam);
            limits.ptMinTrackSize.x = std::max<LONG>(limits.ptMinTrackSize.x, kLeastWindowWidth);
            limits.ptMinTrackSize.y = std::max<LONG>(limits.ptMinTrackSize.y, kLeastWindowHeight);
            return 0;
        }
        case WM_DPICHANGED: {
            const RECT& place = *reinterpret_cast<const RECT*>(lParam);
            SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left,
                         place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
            return 0;
        }
        case WM_ERASEBKGND:
            if (PaintsEverything()) return 1;
            break;
        case WM_PAINT:
            OnPaint();
            return 0;
        case WM_KEYDOWN:
            if (wParam == VK_ESCAPE && fullScreen_) {
                SetFullScreen(false);
                return 0;
            }
            if (const std::uint16_t command = CommandOfKey(wParam, GetKeyState(VK_CONTROL) < 0);
                command != 0) {
                // A held key is one step of Undo.
                if (!IsRepeat(lParam)) EndStep(session_.history);
                if (command == IDM_FULL_SCREEN && IsRepeat(lParam)) return 0;
                if (!IsLateRepeat(wParam, lParam)) OnCommand(command);
                return 0;
            }
            break;
        case WM_CHAR:
            if (const std::uint16_t command = CommandOfCharacter(wParam); command != 0) OnCommand(command);
            return 0;
        case WM_COMMAND:
            EndStep(session_.history);
            OnCommand(LOWORD(wParam));
            return 0;
        case WM_INITMENUPOPUP:
            GreyUnavailable(session_, reinterpret_cast<HMENU>(wParam));
            return 0;
        case WM_DROPFILES:
            OnDrop(wParam);
            return 0;
        case WM_LBUTTONDOWN:
        case WM_MOUSEMOVE:
        case WM_LBUTTONUP:
        case WM_CAPTURECHANGED:
        case WM_MOUSEWHEEL:
            // A drag ends whatever else is going on; it does not begin then.
            if (busy_ && message != WM_CAPTURECHANGED) return 0;
            if (mouse_.OnMessage(window_, message, wParam, lParam)) RefreshView();
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window_, message, wParam, lParam);
}

template <typename Operation>
void MainWindow::Run(Operation operation) {
    if (busy_) return;
    struct Busy {
        bool& flag;
        explicit Busy(bool& f) : flag(f) { flag = true; }
        ~Busy() { flag = false; }
    };
    const Busy busy(busy_);
    operation();
    while (refreshWhenDone_) {
        refreshWhenDone_ = false;
        Refresh(session_);
    }
}

void MainWindow::OnCommand(std::uint16_t command) {
    if (command == IDM_FULL_SCREEN) return SetFullScreen(!fullScreen_);
    Run([&] { RunMenuCommand(window_, instance_, session_, host_.Dialogs(), command); });
}

void MainWindow::OpenFiles(const std::vector<std::wstring>& paths) {
    Run([&] { OpenDroppedFiles(session_, paths); });
}

void MainWindow::OnDrop(WPARAM drop) {
    const std::vector<std::wstring> paths = TakeDroppedFiles(drop);
    // The window dropped on is not always the one in front.
    if (!busy_) SetForegroundWindow(window_);
    OpenFiles(paths);
}

void MainWindow::RefreshView() {
    refreshWhenDone_ = true;
    Run([] {});
}

void MainWindow::OnSize() {
    // A minimised window has a place far off the screen and no client area: neither is worth keeping.
    if (IsIconic(window_)) return;
    StoreRect();
    host_.ReleaseCanvas();
    if (session_.panorama == nullptr) return;
    RefreshView();
}

void MainWindow::OnPaint() {
    // Ended also when memory runs out in between.
    struct Painting {
        HWND window;
        PAINTSTRUCT paint;
        explicit Painting(HWND w) : window(w) { BeginPaint(window, &paint); }
        ~Painting() { EndPaint(window, &paint); }
    };
    const Painting painting(window_);
    if (session_.panorama != nullptr) host_.Show(session_.panorama->resultPicture);
}

void MainWindow::SetFullScreen(bool full) {
    if (full == fullScreen_ || busy_) return;
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    placeBefore_.length = sizeof placeBefore_;
    if (full && (!GetWindowPlacement(window_, &placeBefore_) ||
                 !GetMonitorInfoW(MonitorFromWindow(window_, MONITOR_DEFAULTTONEAREST), &monitor))) {
        return;
    }
    // Its place is not the one to come back to.
    fullScreen_ = true;
    const LONG_PTR style = GetWindowLongPtrW(window_, GWL_STYLE);
    constexpr LONG_PTR kFrame = WS_OVERLAPPEDWINDOW;
    SetWindowLongPtrW(window_, GWL_STYLE, full ? style & ~kFrame : style | kFrame);
    if (full) {
        menu_ = GetMenu(window_);
        SetMenu(window_, nullptr);
        const RECT& all = monitor.rcMonitor;
        SetWindowPos(window_, HWND_TOP, all.left, all.top, all.right - all.left, all.bottom - all.top,
                     SWP_FRAMECHANGED);
    } else {
        SetMenu(window_, menu_);
        session_.host.UpdateMenuChecks();
        SetWindowPlacement(window_, &placeBefore_);
        SetWindowPos(window_, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_FRAMECHANGED);
    }
    fullScreen_ = full;
    StoreRect();
}

void MainWindow::StoreRect() {
    RECT rect{};
    if (fullScreen_ || IsIconic(window_) || !GetWindowRect(window_, &rect)) return;
    session_.settings.windowRect = {rect.left, rect.top, rect.right, rect.bottom};
}

bool MainWindow::PaintsEverything() const {
    return session_.panorama != nullptr && session_.panorama->resultPicture.IsValid() && host_.CanShow();
}

}  // namespace skyvault
