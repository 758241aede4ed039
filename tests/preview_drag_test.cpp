#include "session/preview_drag.h"

#include <gtest/gtest.h>

#include <cmath>

#include "projection/matrix4.h"
#include "resources/resource_ids.h"
#include "session/commands.h"
#include "tests/recording_host.h"

namespace skyvault::test {
namespace {

constexpr float kPi = 3.14159265f;
constexpr float kFocal = 200.0f;

TEST(PreviewDrag, WhatLayInTheMiddleStaysUnderTheMouse) {
    const Camera starts[] = {
        {0, 0, 0},   {2.5f, 0.4f, 0},  {-1, 1.0f, 0},      {0, -1.2f, 0},    {0.3f, 0, kPi / 2},
        {0, 0, kPi}, {1, 0.5f, -0.7f}, {0, kPi - 0.3f, 0}, {1, -2.5f, 0.6f}, {-70, 6.9f, 40},
    };
    for (const Camera& start : starts) {
        for (const auto& [right, down] : {std::pair(5.0f, 0.0f), {0, 5}, {-4, 3}, {3, -4}}) {
            SCOPED_TRACE(testing::Message() << start.heading << ' ' << start.pitch << ' ' << start.roll);
            const Camera camera = DragCamera(start, right, down, kFocal);
            const Direction middle =
                Transform({0, 0, kFocal}, YawPitchRollMatrix(start.heading, start.pitch, start.roll));
            const Direction seen = Transform(
                middle, InverseOfRotation(YawPitchRollMatrix(camera.heading, camera.pitch, camera.roll)));
            EXPECT_NEAR(seen.x / seen.z * kFocal, right, 0.3f);
            EXPECT_NEAR(-seen.y / seen.z * kFocal, down, 0.3f);
        }
    }
}

TEST(PreviewDrag, PolesStopADragWithoutAJump) {
    constexpr float kRows[][3] = {// pitch before, pixels down, pitch after
                                  {0, 10000, -kPi / 2},
                                  {0, -10000, kPi / 2},
                                  {2 * kPi + 1, -10000, 2.5f * kPi},
                                  {2 * kPi + 1, 10000, 1.5f * kPi},
                                  {2, -50, 2.25f},
                                  {2, 0, 2},
                                  {2, 10000, -kPi / 2},
                                  {2, -10000, 2.5f * kPi}};
    for (const auto& [start, down, pitch] : kRows) {
        const Camera camera = DragCamera({1, start, 0}, 0, down, kFocal);
        EXPECT_NEAR(camera.pitch, pitch, 1e-5f) << start << ' ' << down;
        EXPECT_EQ(camera.heading, 1) << start << ' ' << down;
    }
    // Any setting and any camera come to finite angles.
    for (const float focal : {0.0f, 1e-30f, -0.5f, std::nanf("")}) {
        const Camera camera = DragCamera({0, kPi / 2, 0}, 100, 100, focal);
        EXPECT_TRUE(std::isfinite(camera.heading) && std::isfinite(camera.pitch)) << focal;
    }
}

TEST(PreviewDrag, SmallTurnsOfTheWheelAddUpToNotches) {
    constexpr int kTurns[][2] = {{120, 1}, {360, 3}, {-240, -2}, {30, 0},    {30, 0},   {30, 0},
                                 {30, 1},  {100, 0}, {-100, 0},  {-100, -1}, {-40, -1}, {150, 1}};
    WheelNotches wheel;
    for (const auto& [turn, notches] : kTurns) EXPECT_EQ(wheel.Turn(turn), notches) << turn;
}

TEST(PreviewDrag, ANotchZoomsAsOneStepOfTheMenu) {
    AppState settings;
    RecordingHost host;
    Session session{settings, host};
    const float before = settings.previewFov;
    ZoomPreview(session, 2);
    RunCommand(session, IDM_BIGGER_FOV);
    RunCommand(session, IDM_BIGGER_FOV);
    ZoomPreview(session, -1);
    RunCommand(session, IDM_SMALLER_FOV);
    EXPECT_NEAR(settings.previewFov, before * 1.05f * 1.05f * 1.05f * 0.95f * 0.95f * 0.95f, 1e-6f);
    EXPECT_FALSE(PreviewIsShown(session));
    settings.view = static_cast<std::int32_t>(PanoramaFormat::Preview);
    EXPECT_FALSE(PreviewIsShown(session)) << "without a panorama";
}

}  // namespace
}  // namespace skyvault::test
