// The program's only top-level window: its class, its messages, its keys.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "app/preview_mouse.h"
#include "app/window_host.h"
#include "session/session.h"

namespace skyvault {

/// The window class "Skyvault", registered while this lives.
class MainWindowClass {
  public:
    explicit MainWindowClass(HINSTANCE instance);
    ~MainWindowClass();
    MainWindowClass(const MainWindowClass&) = delete;
    MainWindowClass& operator=(const MainWindowClass&) = delete;

    static constexpr const wchar_t* kName = L"Skyvault";

  private:
    HINSTANCE instance_;
    HICON smallIcon_;
};

class MainWindow {
  public:
    /// The references are kept.
    MainWindow(HINSTANCE instance, Session& session, WindowHost& host)
        : instance_(instance), session_(session), host_(host), mouse_(session) {}
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    /// Creates the window at the place the settings name, not yet visible; its class must be registered.
    /// The host shows pictures in it from then on.
    bool Create();
    HWND Handle() const { return window_; }

    /// Opens them as if they had been dropped on the window.
    void OpenFiles(const std::vector<std::wstring>& paths);

    /// The window procedure of the class.
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

  private:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void OnCommand(std::uint16_t command);
    void OnDrop(WPARAM drop);
    void OnSize();
    void OnPaint();
    void StoreRect();
    /// The whole monitor, without frame and menu, or the window as it was.
    void SetFullScreen(bool full);
    /// Runs what may take long or ask the user, unless something of the kind runs already.
    template <typename Operation>
    void Run(Operation operation);
    /// Draws the view anew, now or when the running command is done.
    void RefreshView();
    /// Whether painting covers the whole client area, so that nothing needs to be erased before.
    bool PaintsEverything() const;

    HINSTANCE instance_;
    Session& session_;
    WindowHost& host_;
    PreviewMouse mouse_;
    HWND window_ = nullptr;
    bool fullScreen_ = false;
    HMENU menu_ = nullptr;           ///< the menu bar, while it is full screen
    WINDOWPLACEMENT placeBefore_{};  ///< and the window's place
    /// A command is running. Its message boxes let other messages in, but no second command: that could
    /// take away the panorama the first one works on.
    bool busy_ = false;
    bool refreshWhenDone_ = false;
};

}  // namespace skyvault
