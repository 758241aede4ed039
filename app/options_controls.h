// The controls of the options dialog: which edits which setting, and the small picture beside the logo's
// path.
#pragma once

#include <windows.h>

#include <string>

#include "image/image.h"
#include "settings/app_state.h"

namespace skyvault {

/// Fills the lists and limits the texts; once per dialog.
void SetUpOptionsControls(HWND dialog);

/// Shows the settings in the controls. A list shows nothing when its setting is none of its items.
void ShowInControls(HWND dialog, const AppState& settings);

/// Reads every control back. Numbers are not checked, and what is no number is 0; a list without a choice
/// leaves its setting as it is.
void ReadFromControls(HWND dialog, AppState& settings);

/// The picture of the logo's path.
class LogoPreview {
  public:
    /// Reads the picture of the path, unless it is the last one's; true when it did and what is shown
    /// changes.
    bool SetPath(const std::wstring& path);

    /// Fills the rectangle: the picture in its middle, nothing where the path names no picture.
    void Draw(HDC context, const RECT& rect) const;

  private:
    std::wstring path_;
    Image picture_;
};

}  // namespace skyvault
