// The modeless box through which long operations report.
//
// No messages are pumped while an operation runs: the box paints itself at once whenever what it shows
// changes, and the rest of the user interface stands still.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace skyvault {

class ProgressBox {
  public:
    ProgressBox() = default;
    ~ProgressBox() { End(); }
    ProgressBox(const ProgressBox&) = delete;
    ProgressBox& operator=(const ProgressBox&) = delete;

    /// Where the dialog template comes from and what it is shown over.
    void SetUp(HINSTANCE instance, HWND owner);

    /// Opens the box at 0 % without text; nothing when it is open.
    void Begin();
    /// fraction: 0..1, shown as whole percent. Only what differs from the last call is touched.
    void Set(float fraction, std::wstring_view text);
    /// Back to 0 % without text.
    void Reset();
    /// Closes the box; what was typed and clicked while it was open is forgotten.
    void End();
    bool IsOpen() const { return box_ != nullptr; }

  private:
    static INT_PTR CALLBACK Procedure(HWND box, UINT message, WPARAM wParam, LPARAM lParam);

    HINSTANCE instance_ = nullptr;
    HWND owner_ = nullptr;
    HWND box_ = nullptr;
    int lastPercent_ = -1;
    std::wstring lastText_;
};

}  // namespace skyvault
