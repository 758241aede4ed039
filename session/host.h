// What the commands ask of the program they run in: the window, the console's silence, or a test.
#pragma once

#include <string>

#include "platform/feedback.h"
#include "projection/modifications.h"
#include "projection/view_target.h"

namespace skyvault {

/// The six file dialogs.
enum class FileDialogKind {
    OpenMovie = 0,
    SaveMovie = 1,
    OpenDds = 2,
    SaveDds = 3,
    OpenPicture = 4,
    SavePicture = 5,
};

/// The step size that held keys ask for: Ctrl goes before Shift.
constexpr StepSize StepSizeOfKeys(bool controlHeld, bool shiftHeld) {
    return controlHeld ? StepSize::Fine : shiftHeld ? StepSize::Coarse : StepSize::Plain;
}

class Host : public Feedback, public ViewTarget {
  public:
    /// The chosen path, or empty when cancelled. startPath may name a file or a folder. A save kind gives
    /// the path its extension; SavePicture also updates settings.filterIndex.
    virtual std::wstring AskForFile(FileDialogKind kind, const std::wstring& startPath,
                                    const std::wstring& title) = 0;

    /// The modifier keys at this moment (StepSizeOfKeys).
    virtual StepSize ModifierKeys() const = 0;

    /// Called only when the title changes.
    virtual void SetTitle(const std::wstring& title) = 0;

    /// Shows the check marks anew (MenuChecks of session/commands.h).
    virtual void UpdateMenuChecks() = 0;

    /// A window exists and its client area is not empty.
    virtual bool CanShow() const = 0;
};

}  // namespace skyvault
