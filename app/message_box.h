// The program's message boxes and the switch that silences them all.
#pragma once

#include <string>

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

}  // namespace skyvault
