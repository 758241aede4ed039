#include "session/commands.h"

namespace skyvault {
namespace {

/// In the Preview view the turning commands move the camera, and faster than they turn the panorama.
constexpr float kCameraSpeed = 10.0f;

}  // namespace

void RotateStep(Session& session, float heading, float pitch, float roll) {
    if (session.panorama == nullptr) return;
    const float step = TurnStep(session.host.ModifierKeys());
    const float yawTurn = heading * step;
    const float pitchTurn = pitch * step;
    const float rollTurn = roll * step;
    if (session.settings.view == static_cast<std::int32_t>(PanoramaFormat::Preview)) {
        session.previewCamera.heading += yawTurn * kCameraSpeed;
        session.previewCamera.pitch += pitchTurn * kCameraSpeed;
        session.previewCamera.roll += rollTurn * kCameraSpeed;
    } else {
        RotatePanorama(session.panorama->modifications, yawTurn, pitchTurn, rollTurn);
    }
    Refresh(session);
}

void HorizonCommand(Session& session, int sign) {
    if (session.panorama == nullptr) return;
    const float step = HorizonStep(session.host.ModifierKeys());
    ChangeHorizon(session.panorama->modifications, step * static_cast<float>(sign));
    Refresh(session);
}

void LogoCommand(Session& session, int sign) {
    if (session.panorama == nullptr) return;
    const float step = LogoStep(session.host.ModifierKeys());
    ChangeLogoSize(session.panorama->modifications, step * static_cast<float>(sign));
    Refresh(session);
}

void ToggleModification(Session& session, bool Modifications::*flag) {
    if (session.panorama == nullptr) return;
    bool& value = session.panorama->modifications.*flag;
    value = !value;
    session.host.UpdateMenuChecks();
    Refresh(session);
}

void ResetAllModifications(Session& session) {
    if (session.panorama == nullptr) return;
    ResetModifications(session.panorama->modifications);
    session.host.UpdateMenuChecks();
    Refresh(session);
}

}  // namespace skyvault
