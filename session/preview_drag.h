// Dragging the picture of the Preview view, and zooming it with the wheel.
#pragma once

#include "session/session.h"

namespace skyvault {

/// The window shows the preview of a panorama.
bool PreviewIsShown(const Session& session);

/// Pixels from the preview's middle to where 45° are, in a picture drawn this wide.
float PreviewFocalLength(const AppState& settings, float drawnWidth);

/// The camera after the picture was dragged from where `start` showed it, in pixels to the right and down.
/// What lay in the middle stays under the pointer as long as the drag is short; the poles stop it.
Camera DragCamera(const Camera& start, float right, float down, float focalLength);

/// Each step is one "Smaller FOV" (longer lens), or for negative ones one "Bigger FOV". Shows nothing yet.
void ZoomPreview(Session& session, int steps);

/// Whole notches out of the small turns that fine wheels report.
class WheelNotches {
  public:
    static constexpr int kNotch = 120;

    /// turn: what a wheel message reports. The notches completed by it, forward positive.
    int Turn(int turn);

  private:
    int rest_ = 0;
};

}  // namespace skyvault
