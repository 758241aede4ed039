#include "app/window_host.h"

#include "app/window_helpers.h"
#include "session/commands.h"

namespace skyvault {

void WindowHost::Information(const std::wstring& text) {
    ShowMessage(text, false);
}

void WindowHost::Error(const std::wstring& text) {
    ShowMessage(text, true);
}

void WindowHost::ResetProgress() {
    if (progress_.IsOpen()) progress_.Reset();
}

ClientSize WindowHost::Size() const {
    RECT client{};
    if (window_ == nullptr || !GetClientRect(window_, &client)) return {};
    return {client.right, client.bottom};
}

bool WindowHost::EnsureCanvas() const {
    if (window_ == nullptr) return false;
    if (canvas_ == nullptr || !canvas_->IsValid()) {
        // The old target first: two cannot be bound to one window.
        canvas_.reset();
        canvas_ = std::make_unique<DrawCanvas>(window_);
    }
    return canvas_->IsValid();
}

bool WindowHost::CanShow() const {
    const ClientSize size = Size();
    return size.width > 0 && size.height > 0 && EnsureCanvas();
}

bool WindowHost::Show(const Image& picture) {
    if (!picture.IsValid() && window_ != nullptr) InvalidateRect(window_, nullptr, TRUE);
    // A device that is lost again straight away is left alone until the next paint.
    for (int attempt = 0; attempt < 2 && CanShow(); ++attempt) {
        const DrawResult result =
            PresentPicture(*canvas_, Size(), picture, settings_.backgroundColour, settings_.crosshair);
        if (result != DrawResult::DeviceLost) return result == DrawResult::Drawn;
        ReleaseCanvas();
    }
    return false;
}

std::wstring WindowHost::AskForFile(FileDialogKind kind, const std::wstring& startPath,
                                    const std::wstring& title, const AcceptPath& accept) {
    std::wstring path = dialogs_.Ask(window_, startPath, kind, title, settings_, accept);
    // What the dialog covered is painted now: a long command may follow, which lets no messages in.
    if (window_ != nullptr) UpdateWindow(window_);
    return path;
}

bool WindowHost::Confirm(const std::wstring& question) {
    return MessageBoxW(window_, question.c_str(), kProgramName, MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) ==
           IDYES;
}

StepSize WindowHost::ModifierKeys() const {
    const auto isDown = [](int key) { return (GetAsyncKeyState(key) & 0x8000) != 0; };
    return StepSizeOfKeys(isDown(VK_CONTROL), isDown(VK_SHIFT));
}

void WindowHost::SetTitle(const std::wstring& title) {
    if (window_ == nullptr) return;
    SetWindowTextW(window_, title.c_str());
    // Systems without a window manager would show the old caption until the frame is next painted.
    RedrawWindow(window_, nullptr, nullptr, RDW_FRAME | RDW_INVALIDATE);
}

void WindowHost::UpdateMenuChecks() {
    const HMENU menu = window_ == nullptr ? nullptr : GetMenu(window_);
    if (menu == nullptr || session_ == nullptr) return;
    for (const MenuCheck& check : MenuChecks(*session_)) {
        CheckMenuItem(menu, check.command,
                      static_cast<UINT>(MF_BYCOMMAND | (check.checked ? MF_CHECKED : MF_UNCHECKED)));
    }
}

}  // namespace skyvault
