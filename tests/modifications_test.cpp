#include "projection/modifications.h"

#include <gtest/gtest.h>

#include <cmath>

namespace skyvault {
namespace {

Direction Turned(const Modifications& m, const Direction& d) {
    return Transform(d, m.orientation);
}

TEST(Modifications, HeadingRightLooksAtWhatWasToTheRight) {
    Modifications m;
    RotatePanorama(m, kPi / 2, 0, 0);
    const Direction front = Turned(m, {0, 0, 1});
    EXPECT_NEAR(front.x, 1, 1e-6);
    Modifications pitched;
    RotatePanorama(pitched, 0, -kPi / 2, 0);
    EXPECT_NEAR(Turned(pitched, {0, 0, 1}).y, 1, 1e-6) << "a negative pitch looks up";
    Modifications rolled;
    RotatePanorama(rolled, 0, 0, kPi / 2);
    EXPECT_NEAR(Turned(rolled, {1, 0, 0}).y, 1, 1e-6);
}

TEST(Modifications, AFullTurnComesBack) {
    for (const auto& [size, presses] :
         {std::pair{StepSize::Plain, 360}, {StepSize::Coarse, 24}, {StepSize::Fine, 3600}}) {
        Modifications m;
        for (int i = 0; i < presses; ++i) RotatePanorama(m, TurnStep(size), 0, 0);
        const Direction d = Turned(m, {0.3f, 0.4f, 0.5f});
        EXPECT_NEAR(d.x, 0.3f, 2e-4) << presses;
        EXPECT_NEAR(d.z, 0.5f, 2e-4) << presses;
    }
}

TEST(Modifications, TurningActsInTheFrameOfTheOutput) {
    Modifications m;
    RotatePanorama(m, kPi / 2, 0, 0);
    RotatePanorama(m, 0, -kPi / 2, 0);
    const Direction front = Turned(m, {0, 0, 1});
    EXPECT_NEAR(front.y, 1, 1e-6) << "after heading right, pitching up still looks up";
    const Direction back = Transform(front, m.inverseOrientation);
    EXPECT_NEAR(back.z, 1, 1e-6);
}

TEST(Modifications, UpAndDownIsTheIdentityAgain) {
    Modifications m;
    RotatePanorama(m, 0, -TurnStep(StepSize::Plain), 0);
    EXPECT_FALSE(m.orientation.isIdentity);
    RotatePanorama(m, 0, TurnStep(StepSize::Plain), 0);
    EXPECT_TRUE(m.orientation.isIdentity);
    EXPECT_TRUE(m.inverseOrientation.isIdentity);
}

TEST(Modifications, LogoStaysWithinItsRangeAndHorizonDoesNot) {
    Modifications m;
    ChangeLogoSize(m, -LogoStep(StepSize::Plain));
    EXPECT_EQ(m.logoSize, 0.0f);
    m.logoSize = 0.99f;
    ChangeLogoSize(m, LogoStep(StepSize::Coarse));
    EXPECT_EQ(m.logoSize, 1.0f);
    for (int i = 0; i < 5; ++i) ChangeHorizon(m, HorizonStep(StepSize::Fine));
    EXPECT_FLOAT_EQ(m.horizonPower, 1.025f);
    for (int i = 0; i < 200; ++i) ChangeHorizon(m, -HorizonStep(StepSize::Coarse));
    EXPECT_LT(m.horizonPower, -2.0f);
    m.flipHorizontal = m.mirrorFrontToBack = m.mirrorTopToBottom = true;
    ResetModifications(m);
    EXPECT_EQ(m.horizonPower, 1.0f);
    EXPECT_EQ(m.logoSize, 0.0f);
    EXPECT_FALSE(m.flipHorizontal || m.mirrorFrontToBack || m.mirrorTopToBottom);
}

}  // namespace
}  // namespace skyvault
