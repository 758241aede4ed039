#include "app/preview_mouse.h"

#include <windowsx.h>

#include "app/screen_picture.h"

namespace skyvault {
namespace {

bool SameCamera(const Camera& a, const Camera& b) {
    return a.heading == b.heading && a.pitch == b.pitch && a.roll == b.roll;
}

}  // namespace

bool PreviewMouse::OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const POINT at{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    const bool shown = PreviewIsShown(session_);
    switch (message) {
        case WM_LBUTTONDOWN:
            if (shown) ButtonDown(window, at);
            break;
        case WM_MOUSEMOVE:
            if (!dragging_) return false;
            if (shown && (wParam & MK_LBUTTON) != 0) {
                Move(at);
            } else {
                ReleaseCapture();
            }
            break;
        case WM_LBUTTONUP:
            // Tells that the capture is lost, from within.
            if (dragging_) ReleaseCapture();
            return false;
        case WM_CAPTURECHANGED:
            if (dragging_) SetCursor(LoadCursorW(nullptr, IDC_ARROW));
            dragging_ = false;
            break;
        case WM_MOUSEWHEEL: {
            const int notches = shown ? notches_.Turn(GET_WHEEL_DELTA_WPARAM(wParam)) : 0;
            ZoomPreview(session_, notches);
            changed_ = changed_ || notches != 0;
            break;
        }
        default:
            return false;
    }
    if (!changed_ || IsDrawnLater(window, message)) return false;
    changed_ = false;
    return true;
}

void PreviewMouse::ButtonDown(HWND window, POINT at) {
    SetCapture(window);
    SetCursor(LoadCursorW(nullptr, IDC_SIZEALL));
    dragging_ = true;
    BeginDrag(at);
}

void PreviewMouse::Move(POINT at) {
    // Keys and the wheel may have turned or zoomed meanwhile: the drag goes on from there.
    if (!SameCamera(session_.previewCamera, camera_) || FocalLength() != focalLength_) BeginDrag(last_);
    last_ = at;
    camera_ = DragCamera(startCamera_, static_cast<float>(at.x - start_.x),
                         static_cast<float>(at.y - start_.y), focalLength_);
    changed_ = changed_ || !SameCamera(session_.previewCamera, camera_);
    session_.previewCamera = camera_;
}

void PreviewMouse::BeginDrag(POINT at) {
    start_ = last_ = at;
    startCamera_ = camera_ = session_.previewCamera;
    focalLength_ = FocalLength();
}

bool PreviewMouse::IsDrawnLater(HWND window, UINT message) const {
    MSG next;
    return (message == WM_MOUSEMOVE || message == WM_MOUSEWHEEL) &&
           PeekMessageW(&next, window, message, message, PM_NOREMOVE);
}

float PreviewMouse::FocalLength() const {
    const Image& picture = session_.panorama->resultPicture;
    const PicturePlace place = FitPicture(session_.host.Size(), picture.width, picture.height);
    return PreviewFocalLength(session_.settings, static_cast<float>(place.width));
}

}  // namespace skyvault
