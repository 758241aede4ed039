// How a panorama is looked at, without touching its pixels: turn, horizon, nadir logo, flips and mirrors.
#pragma once

#include "projection/matrix4.h"

namespace skyvault {

struct Modifications {
    Matrix4 orientation;             ///< applied to an output direction to find the source direction
    Matrix4 inverseOrientation;      ///< its inverse
    float horizonPower = 1.0f;       ///< exponent of the horizon curve; no curve at 1 and at or below 0
    float logoSize = 0.0f;           ///< radius of the nadir disc in the tangent plane, 0..1; 0 is no logo
    bool flipHorizontal = false;     ///< exchange x and z of every output direction
    bool mirrorTopToBottom = false;  ///< y := |y|
    bool mirrorFrontToBack = false;  ///< z := |z|
    friend bool operator==(const Modifications&, const Modifications&) = default;
};

/// The size of one step; Ctrl goes before Shift.
enum class StepSize { Plain, Fine, Coarse };

/// 1°, 0.1° and 15° in radians.
float TurnStep(StepSize size);
/// 0.01, 0.005 and 0.02.
float HorizonStep(StepSize size);
/// 0.01, 0.001 and 0.03.
float LogoStep(StepSize size);

/// Turns in the frame of the current output; radians. Turning accumulates without limit.
void RotatePanorama(Modifications& modifications, float yaw, float pitch, float roll);

/// horizonPower += change; not clamped.
void ChangeHorizon(Modifications& modifications, float change);

/// logoSize += change, clamped to 0..1.
void ChangeLogoSize(Modifications& modifications, float change);

void ResetModifications(Modifications& modifications);

}  // namespace skyvault
