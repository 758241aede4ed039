// What the commands ask of the program they run in: the window, the console's silence, or a test.
#pragma once

#include <functional>
#include <string>

#include "image/image.h"
#include "platform/feedback.h"
#include "projection/layout_requests.h"
#include "projection/modifications.h"

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

using AcceptPath = std::function<bool(const std::wstring& path)>;

class Host : public Feedback {
  public:
    /// A message box for what failed.
    virtual void Error(const std::wstring& text) = 0;

    /// The chosen path, or empty when cancelled. startPath may name a file or a folder. A save kind gives
    /// the path its extension; SavePicture also updates settings.filterIndex. A path that is not accepted is
    /// asked for again, the dialog still open; without `accept` all are.
    virtual std::wstring AskForFile(FileDialogKind kind, const std::wstring& startPath,
                                    const std::wstring& title, const AcceptPath& accept = {}) = 0;

    /// A question whose answers are yes and no; true for yes.
    virtual bool Confirm(const std::wstring& question) = 0;

    /// The modifier keys at this moment (StepSizeOfKeys).
    virtual StepSize ModifierKeys() const = 0;

    /// Called only when the title changes.
    virtual void SetTitle(const std::wstring& title) = 0;

    /// Shows the check marks anew (MenuChecks of session/commands.h).
    virtual void UpdateMenuChecks() = 0;

    /// The window's client area in pixels.
    virtual ClientSize Size() const = 0;
    /// A window exists and its client area is not empty.
    virtual bool CanShow() const = 0;
    /// Presents the picture, fitted and centred; an invalid one leaves nothing on show. False when it cannot
    /// be drawn.
    virtual bool Show(const Image& picture) = 0;
};

}  // namespace skyvault
