#include "projection/modifications.h"

#include <gtest/gtest.h>

namespace skyvault {
namespace {

/// What an output pixel looks at that lies along the direction.
Direction Turned(const Modifications& m, const Direction& d) {
    return Transform(d, m.orientation);
}

TEST(Modifications, TurnsGoRightDownAndClockwiseInTheFrameOfTheOutput) {
    Modifications turned, pitched, rolled;
    RotatePanorama(turned, kPi / 2, 0, 0);
    EXPECT_NEAR(Turned(turned, {0, 0, 1}).x, 1, 1e-6) << "what was to the right";
    RotatePanorama(pitched, 0, -kPi / 2, 0);
    EXPECT_NEAR(Turned(pitched, {0, 0, 1}).y, 1, 1e-6) << "a negative pitch looks up";
    RotatePanorama(rolled, 0, 0, kPi / 2);
    EXPECT_NEAR(Turned(rolled, {1, 0, 0}).y, 1, 1e-6);
    RotatePanorama(turned, 0, -kPi / 2, 0);
    const Direction up = Turned(turned, {0, 0, 1});
    EXPECT_NEAR(up.y, 1, 1e-6) << "after heading right, pitching up still looks up";
    EXPECT_NEAR(Transform(up, turned.inverseOrientation).z, 1, 1e-6);
}

TEST(Modifications, AFullTurnComesBackAndUpAndDownIsTheIdentity) {
    for (const auto& [size, steps] :
         {std::pair{StepSize::Plain, 360}, {StepSize::Coarse, 24}, {StepSize::Fine, 3600}}) {
        Modifications m;
        for (int i = 0; i < steps; ++i) RotatePanorama(m, TurnStep(size), 0, 0);
        EXPECT_NEAR(Turned(m, {0.3f, 0.4f, 0.5f}).x, 0.3f, 2e-4) << steps;
    }
    Modifications m;
    RotatePanorama(m, 0, -TurnStep(StepSize::Plain), 0);
    EXPECT_FALSE(m.orientation.isIdentity);
    RotatePanorama(m, 0, TurnStep(StepSize::Plain), 0);
    EXPECT_TRUE(m.orientation.isIdentity && m.inverseOrientation.isIdentity);
}

TEST(Modifications, LogoStaysWithinItsRangeAndHorizonDoesNot) {
    Modifications m;
    ChangeLogoSize(m, -LogoStep(StepSize::Plain));
    EXPECT_EQ(m.logoSize, 0.0f);
    for (int i = 0; i < 40; ++i) ChangeLogoSize(m, LogoStep(StepSize::Coarse));
    EXPECT_EQ(m.logoSize, 1.0f);
    for (int i = 0; i < 200; ++i) ChangeHorizon(m, -HorizonStep(StepSize::Coarse));
    EXPECT_NEAR(m.horizonPower, -3.0f, 1e-3f);
    m.flipHorizontal = m.mirrorFrontToBack = m.mirrorTopToBottom = true;
    ResetModifications(m);
    EXPECT_TRUE(m.horizonPower == 1 && m.logoSize == 0);
    EXPECT_FALSE(m.flipHorizontal || m.mirrorFrontToBack || m.mirrorTopToBottom);
}

}  // namespace
}  // namespace skyvault
