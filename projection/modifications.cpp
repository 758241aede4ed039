#include "projection/modifications.h"

#include "platform/numeric.h"

namespace skyvault {

namespace {

float BySize(StepSize size, float plain, float fine, float coarse) {
    return size == StepSize::Fine ? fine : size == StepSize::Coarse ? coarse : plain;
}

}  // namespace

float TurnStep(StepSize size) {
    return BySize(size, 0.017453292f, 0.0017453292f, 0.2617994f);
}
float HorizonStep(StepSize size) {
    return BySize(size, 0.01f, 0.005f, 0.02f);
}
float LogoStep(StepSize size) {
    return BySize(size, 0.01f, 0.001f, 0.03f);
}

void RotatePanorama(Modifications& modifications, float yaw, float pitch, float roll) {
    // The new turn on the left: it acts in the frame of the current output.
    modifications.orientation = YawPitchRollMatrix(yaw, pitch, roll) * modifications.orientation;
    UpdateIdentityFlag(modifications.orientation);
    modifications.inverseOrientation = InverseOfRotation(modifications.orientation);
}

void ChangeHorizon(Modifications& modifications, float change) {
    modifications.horizonPower += change;
}

void ChangeLogoSize(Modifications& modifications, float change) {
    modifications.logoSize = Clamp01(modifications.logoSize + change);
}

void ResetModifications(Modifications& modifications) {
    modifications = Modifications();
}

}  // namespace skyvault
