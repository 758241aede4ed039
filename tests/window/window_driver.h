// Drives the real program on the screen: its window, keys, menus and dialogs, and the pixels it shows.
//
// The program runs on a thread of its own (or as its own process), the test waits and looks from outside.
// Whatever is waited for comes within kPatience or the test fails.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include "image/image.h"
#include "settings/app_state.h"

namespace skyvault::test {

inline constexpr DWORD kPatience = 20000;

/// Waits until the condition holds; false when it never did.
bool Eventually(const std::function<bool()>& condition, DWORD milliseconds = kPatience);

/// Settings of a test: plain folders, no antialiasing, a small export, a background colour that no test
/// picture holds, and a window whose client area is 1000 × 700.
AppState TestSettings(const std::wstring& folder);
inline constexpr Color8 kBackground{12, 200, 34, 255};
inline constexpr std::int32_t kClientWidth = 1000, kClientHeight = 700;

/// Makes these the settings file, or with null no settings file at all.
void PutSettings(const AppState* settings);
/// What the settings file holds now, over the defaults.
AppState ReadSettings();

/// What a window shows, read from the screen.
Image WindowPixels(HWND window, bool withFrame);
/// Saves the window as `name`.png in the folder that the environment variable SKYVAULT_SHOTS names, if any.
void Shot(HWND window, const char* name);
/// The same for the whole screen.
void ScreenShot(const char* name);

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

/// Presses and releases one key.
void Press(WORD key);
/// Types a text.
void Type(const std::wstring& text);

/// A visible top-level window of the process with this class and title; waits for it. Null when none came.
HWND WaitForWindow(const wchar_t* windowClass, const std::wstring& title, DWORD process);
/// A dialog of the process with this title; waits for it. Null when none came.
HWND WaitForDialog(const std::wstring& title, DWORD process = GetCurrentProcessId());
/// Whether such a dialog is there now.
bool DialogIsOpen(const std::wstring& title);
/// Waits until the dialog is gone.
bool WaitUntilClosed(HWND dialog);

std::wstring TextOf(HWND window);
/// A message box of the process with the program's caption (the progress box has the same); waits for it.
HWND WaitForMessage(DWORD process = GetCurrentProcessId());
/// The message box's text.
std::wstring MessageText(HWND box);
/// Presses the dialog's button and waits until the dialog is gone.
bool PressButton(HWND dialog, int id);
/// Sets the name in a file dialog and presses its button.
bool AnswerFileDialog(HWND dialog, const std::wstring& path);
/// The same for the folder picker; button: IDOK or IDCANCEL.
bool AnswerFolderPicker(HWND dialog, const std::wstring& path, int button = IDOK);
/// Chooses from a save dialog's list of file types, 1-based, as the mouse would.
void ChooseFilter(HWND dialog, int index);
int ChosenFilter(HWND dialog);

bool IsChecked(HWND window, UINT command);

/// The program in this process, closed again when this goes.
class RunningProgram {
  public:
    /// Starts it with the settings file that is there.
    explicit RunningProgram(int show = SW_SHOWNORMAL);
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// Null when it did not come up.
    HWND Window() const { return window_; }
    std::wstring Title() const { return TextOf(window_); }

    /// Runs a command that asks nothing and returns when it is done.
    void Command(UINT id) const;
    /// Starts a command that opens a dialog.
    void StartCommand(UINT id) const;

    /// Imports a picture through menu and open dialog; false when that did not lead to the title.
    bool Import(UINT command, const std::wstring& dialogTitle, const std::wstring& path,
                const std::wstring& newTitle) const;

    /// Takes the keyboard focus, for Press.
    bool Focus() const;

    Color8 PixelAt(int x, int y) const;

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
