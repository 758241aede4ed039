// The mouse in the Preview view: the left button takes the picture along, the wheel zooms.
#pragma once

#include <windows.h>

#include "session/preview_drag.h"

namespace skyvault {

class PreviewMouse {
  public:
    /// The session is kept.
    explicit PreviewMouse(Session& session) : session_(session) {}

    /// Takes WM_LBUTTONDOWN, WM_MOUSEMOVE, WM_LBUTTONUP, WM_CAPTURECHANGED and WM_MOUSEWHEEL. True when the
    /// view has changed and is to be drawn now; of many moves that wait in the queue only the last asks for
    /// it. Nothing changes where no preview is shown.
    bool OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  private:
    void ButtonDown(HWND window, POINT at);
    void Move(POINT at);
    void BeginDrag(POINT at);
    bool IsDrawnLater(HWND window, UINT message) const;
    float FocalLength() const;

    Session& session_;
    WheelNotches notches_;
    bool dragging_ = false;
    bool changed_ = false;  ///< and not drawn yet
    // Where the drag began, and what it has made of the camera since.
    POINT start_{}, last_{};
    Camera startCamera_, camera_;
    float focalLength_ = 0;
};

}  // namespace skyvault
