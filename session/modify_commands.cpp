#include "session/commands.h"

namespace skyvault {
namespace {

/// In the Preview view the turning commands move the camera, and faster than they turn the panorama.
constexpr float kCameraSpeed = 10.0f;

/// Changes the modifications so that Undo can take it back, and shows them. Does nothing without a panorama.
template <typename Change>
void ChangeModifications(Session& session, Change change) {
    if (session.panorama == nullptr) return;
    Modifications& modifications = session.panorama->modifications;
    const Modifications before = modifications;
    change(modifications);
    Remember(session.history, before, modifications);
    Refresh(session);
}

void ShowStep(Session& session, bool gone) {
    if (!gone) return;
    session.host.UpdateMenuChecks();
    Refresh(session);
}

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
        Refresh(session);
    } else {
        ChangeModifications(
            session, [&](Modifications& turned) { RotatePanorama(turned, yawTurn, pitchTurn, rollTurn); });
    }
}

void HorizonCommand(Session& session, int sign) {
    const float step = HorizonStep(session.host.ModifierKeys());
    ChangeModifications(session,
                        [&](Modifications& bent) { ChangeHorizon(bent, step * static_cast<float>(sign)); });
}

void LogoCommand(Session& session, int sign) {
    const float step = LogoStep(session.host.ModifierKeys());
    ChangeModifications(
        session, [&](Modifications& stamped) { ChangeLogoSize(stamped, step * static_cast<float>(sign)); });
}

void ToggleModification(Session& session, bool Modifications::*flag) {
    ChangeModifications(session, [&](Modifications& mirrored) {
        mirrored.*flag = !(mirrored.*flag);
        session.host.UpdateMenuChecks();
    });
}

void ResetAllModifications(Session& session) {
    ChangeModifications(session, [&](Modifications& reset) {
        ResetModifications(reset);
        session.host.UpdateMenuChecks();
    });
}

void UndoCommand(Session& session) {
    ShowStep(session, session.panorama && Undo(session.history, session.panorama->modifications));
}

void RedoCommand(Session& session) {
    ShowStep(session, session.panorama && Redo(session.history, session.panorama->modifications));
}

}  // namespace skyvault
