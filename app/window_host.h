// What the commands ask of the desktop program: messages, progress, file dialogs, and showing pictures in
// the main window.
#pragma once

#include <windows.h>

#include <memory>

#include "app/draw_canvas.h"
#include "app/file_dialogs.h"
#include "app/progress_box.h"
#include "session/host.h"
#include "session/session.h"

namespace skyvault {

class WindowHost final : public Host {
  public:
    explicit WindowHost(AppState& settings) : settings_(settings) {}

    /// The window everything is shown in, from now on; null when it is gone.
    void SetWindow(HWND window) { window_ = window; }
    /// The session whose check marks and picture are shown.
    void SetSession(const Session* session) { session_ = session; }

    void SetUpProgress(HINSTANCE instance) { progress_.SetUp(instance, window_); }
    bool BuildFileFilters() { return dialogs_.BuildFilters(); }

    /// For dialogs that ask for files in their own name.
    const FileDialogs& Dialogs() const { return dialogs_; }

    /// The canvas is made when first needed; it has to be released when the client area changes its size.
    void ReleaseCanvas() { canvas_.reset(); }

    void Information(const std::wstring& text) override;
    void Error(const std::wstring& text) override;
    void BeginProgress() override { progress_.Begin(); }
    void SetProgress(float fraction, std::wstring_view text) override { progress_.Set(fraction, text); }
    void ResetProgress() override;
    void EndProgress() override { progress_.End(); }
    bool ProgressActive() const override { return progress_.IsOpen(); }

    ClientSize Size() const override;
    bool Show(const Image& picture) override;

    std::wstring AskForFile(FileDialogKind kind, const std::wstring& startPath, const std::wstring& title,
                            const AcceptPath& accept) override;
    bool Confirm(const std::wstring& question) override;
    StepSize ModifierKeys() const override;
    void SetTitle(const std::wstring& title) override;
    void UpdateMenuChecks() override;
    bool CanShow() const override;

  private:
    bool EnsureCanvas() const;

    AppState& settings_;
    const Session* session_ = nullptr;
    HWND window_ = nullptr;
    mutable std::unique_ptr<DrawCanvas> canvas_;
    ProgressBox progress_;
    FileDialogs dialogs_;
};

}  // namespace skyvault
