// Drives the real program on the screen: its window, keys, menus and dialogs, and the pixels it shows.
//
// The program runs on a thread of its own (or as its own process), the test waits and looks from outside.
// Whatever is waited for comes within kPatience or the test fails.
#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include "image/image.h"
#include "settings/app_state.h"

namespace skyvault::test {

inline constexpr DWORD kPatience = 30000;

/// Waits until the condition holds; false when it never did.
bool Eventually(const std::function<bool()>& condition);

/// Settings of a test: plain folders, no antialiasing, a small export, a background colour that no test
/// picture holds, and a window whose client area is 1000 × 700.
AppState TestSettings(const std::wstring& folder);
inline constexpr Color8 kBackground{12, 200, 34, 255};
inline constexpr int kClientWidth = 1000, kClientHeight = 700;

/// Makes these the settings file, or with null no settings file at all.
void PutSettings(const AppState* settings);
/// What the settings file holds now, over the defaults.
AppState ReadSettings();

/// What a pixel of a window's client area shows.
Color8 PixelAt(HWND window, int x, int y);

/// Real key input to the window with the focus: presses the keys in order, and releases them in reverse when
/// this goes. A held modifier counts at the moment the program comes to the key: wait for the effect first.
class HeldKeys {
  public:
    explicit HeldKeys(std::initializer_list<WORD> keys);
    ~HeldKeys();
    HeldKeys(const HeldKeys&) = delete;
    HeldKeys& operator=(const HeldKeys&) = delete;

  private:
    std::vector<WORD> keys_;
};

void Press(WORD key);

/// Gives the window the keyboard; false when it did not get it.
bool Activate(HWND window);
/// Focus, capture and menus of the window's thread, whichever process that is in.
GUITHREADINFO ThreadOf(HWND window);
/// The control with the keyboard focus in the window's thread.
HWND FocusOf(HWND window);
/// The visible top-level windows of the process, topmost first. Null: of any class.
std::vector<HWND> WindowsOf(DWORD process, const wchar_t* windowClass);

/// A visible top-level window of the program with this class, a dialog with this title; waits for it, and
/// fails the test when none comes.
HWND WaitForWindow(const wchar_t* windowClass, DWORD process = GetCurrentProcessId());
HWND WaitForDialog(const std::wstring& title, DWORD process = GetCurrentProcessId());
/// A message box with the program's caption (the progress box has the same), and its text.
HWND WaitForMessage();
std::wstring MessageText(HWND box);
bool WaitUntilClosed(HWND dialog);

std::wstring TextOf(HWND window);
std::wstring TextOf(HWND dialog, int control);
/// Presses the dialog's button and waits until the dialog is gone.
bool PressButton(HWND dialog, int id);
/// Waits for a message, closes it and returns its text.
std::wstring AnswerMessage();
/// Sets the name in a file dialog or folder picker and presses its button.
bool AnswerFileDialog(HWND dialog, const std::wstring& path, int button = IDOK);
/// Chooses from a save dialog's list of file types, 1-based, as the mouse would.
void ChooseFilter(HWND dialog, int index);

/// Does something that waits for the user, on a user-interface thread of its own.
[[nodiscard]] std::jthread InBackground(std::function<void()> what);

/// The program in this process, closed again when this goes.
class RunningProgram {
  public:
    /// Starts it with the settings file that is there, and with files to open.
    explicit RunningProgram(int show = SW_SHOWNORMAL, std::vector<std::wstring> files = {});
    ~RunningProgram();

    /// Null when it did not come up.
    HWND Window() const { return window_; }

    /// Runs a command that asks nothing and returns when it is done.
    void Command(UINT id) const;
    /// Starts a command that opens a dialog; returns the dialog.
    HWND Open(UINT id, const std::wstring& dialogTitle) const;
    /// Whether the command's menu item has its check mark.
    bool IsChecked(UINT command) const;

    /// Closes the window through its menu and returns the program's result. A program that does not end
    /// ends the tests.
    int Close();

  private:
    std::thread thread_;
    std::atomic<bool> ended_ = false;
    HWND window_ = nullptr;
    int result_ = -1;
};

}  // namespace skyvault::test
