#include "session/preview_drag.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "session/commands.h"

namespace skyvault {
namespace {

constexpr float kHalfTurn = std::numbers::pi_v<float>;
/// Near the poles a small drag is a large turn; no larger than this share allows.
constexpr float kLeastShare = 0.2f;

}  // namespace

bool PreviewIsShown(const Session& session) {
    return session.panorama != nullptr &&
           session.settings.view == static_cast<std::int32_t>(PanoramaFormat::Preview);
}

float PreviewFocalLength(const AppState& settings, float drawnWidth) {
    return drawnWidth * settings.previewFov;
}

Camera DragCamera(const Camera& start, float right, float down, float focalLength) {
    // The setting may hold anything; below a pixel the picture is a point.
    const float focal = std::abs(focalLength) >= 1.0f ? focalLength : 1.0f;
    // Along the horizon and up from it, whatever the roll.
    const float cosRoll = std::cos(start.roll), sinRoll = std::sin(start.roll);
    const float across = right * cosRoll + down * sinRoll;
    const float up = right * sinRoll - down * cosRoll;
    // Beyond the poles the camera stands on its head: there the horizon runs the other way.
    const float share = std::cos(start.pitch);
    const float heading = across / (focal * std::copysign(std::max(std::abs(share), kLeastShare), share));

    // Up to the poles; a camera on its head may also come back over them.
    const float level = std::nearbyint(start.pitch / kHalfTurn);
    const float reach = std::fmod(level, 2.0f) == 0.0f ? kHalfTurn / 2.0f : kHalfTurn * 1.5f;

    Camera camera = start;
    camera.heading -= heading;
    camera.pitch = std::clamp(start.pitch + up / focal, level * kHalfTurn - reach, level * kHalfTurn + reach);
    return camera;
}

void ZoomPreview(Session& session, int steps) {
    const float factor = steps > 0 ? kSmallerFov : kBiggerFov;
    for (int i = std::abs(steps); i > 0; --i) session.settings.previewFov *= factor;
}

int WheelNotches::Turn(int turn) {
    if ((turn < 0) != (rest_ < 0)) rest_ = 0;
    rest_ += turn;
    const int notches = rest_ / kNotch;
    rest_ %= kNotch;
    return notches;
}

}  // namespace skyvault
