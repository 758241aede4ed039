// What the window and its dialogs share: messages, texts of controls, places on the screen, waiting input.
#pragma once

#include <windows.h>

#include <string>

#include "settings/app_state.h"

namespace skyvault {

/// The caption of every message box and the main window's title before a panorama is there.
inline constexpr const wchar_t* kProgramName = L"Skyvault";

/// Waits until the user has closed the box; does nothing while boxes are switched off.
/// The box has no owner, but takes the input away from the thread's other windows while it is there.
void ShowMessage(const std::wstring& text, bool isError);

/// While one lives, no message box appears: a batch goes on whatever happens to single files.
class MessageBoxesOff {
  public:
    MessageBoxesOff();
    ~MessageBoxesOff();
    MessageBoxesOff(const MessageBoxesOff&) = delete;
    MessageBoxesOff& operator=(const MessageBoxesOff&) = delete;
};

/// The control's whole text.
std::wstring TextOfControl(HWND dialog, int id);

/// Moves a progress bar at once. Themed bars glide upwards by a timer, which cannot run in a long command,
/// but jump downwards.
void JumpTo(HWND bar, int position);

/// Forgets the keys and clicks that wait in the thread's queue, clicks on frames and menus included. They
/// came while the program stood still and were not meant for what is shown next: they would close its message
/// unread, or choose from a menu that was not there.
void ForgetWaitingInput();

/// The rectangle around all monitors.
ScreenRect VirtualScreen();

/// DefaultAppState with the default window of the primary screen.
AppState DefaultSettingsOfScreen();

/// Pixels per 96th of an inch of the window's monitor: 1.0, 1.25, 1.5 …
float ScaleOf(HWND window);

/// Moves the window to the middle of its owner, inside the owner's monitor.
void CentreOverOwner(HWND window);

/// Finds a function of a system library unless it is known already; false when the system does not have it.
/// For what is not needed before the first paint: a library named when linking is loaded, with those it needs
/// itself, before the program's first line; these come with their first use, and stay.
template <typename Function>
bool FindSystemFunction(Function& function, const wchar_t* library, const char* name) {
    if (function != nullptr) return true;
    const HMODULE module = LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module != nullptr)
        function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    return function != nullptr;
}

}  // namespace skyvault
