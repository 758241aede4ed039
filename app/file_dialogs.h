// The open and save dialogs of the three kinds of file, and the folder picker.
#pragma once

#include <windows.h>

#include <string>

#include "session/host.h"
#include "settings/app_state.h"

namespace skyvault {

class FileDialogs {
  public:
    /// Builds the list of pictures that can be opened, from the codecs of this machine; COM must be
    /// initialised. False when that is not possible: no dialog may be asked for then.
    bool BuildFilters();

    /// As Host::AskForFile.
    std::wstring Ask(HWND owner, const std::wstring& startPath, FileDialogKind kind,
                     const std::wstring& title, AppState& settings) const;

  private:
    std::wstring pictureOpenFilter_;
};

/// The chosen folder, or empty when cancelled. COM must be initialised.
std::wstring AskForFolder(HWND owner, const std::wstring& title, const std::wstring& startFolder);

}  // namespace skyvault
