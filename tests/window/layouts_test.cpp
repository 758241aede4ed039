// Every view of the menu in the real window: its layout, its size and its place.

#include <tuple>

#include "tests/window/program_fixture.h"

namespace skyvault::test {
namespace {

class LayoutWindow : public ProgramTest {};

TEST_F(LayoutWindow, EveryViewFillsTheWindowWithItsLayout) {
    ASSERT_TRUE(StartWithPlace());
    // The picture's size in a client area of 1000 × 700, and the front's middle in parts of it.
    for (const auto& [view, width, height, frontX, frontY] :
         {std::tuple{IDM_VIEW_HORIZONTAL_CROSS, 932, 699, 1.5 / 4, 1.5 / 3},
          {IDM_VIEW_VERTICAL_CROSS, 525, 700, 1.5 / 3, 1.5 / 4},
          {IDM_VIEW_STRIP, 996, 166, 0.5 / 6, 0.5},
          {IDM_VIEW_STRIP_XYZ, 996, 166, 4.5 / 6, 0.5},
          {IDM_VIEW_INTERIOR_STRIP, 996, 166, 2.5 / 6, 0.5},
          {IDM_VIEW_SINGLE_FILES, 1000, 700, 0.177, 0.243},
          {IDM_VIEW_SPHERE_MAP, 700, 700, 0.5, 0.5},
          {IDM_VIEW_MIRROR_BALL, 700, 700, 0.5, 0.5},
          {IDM_VIEW_HEART, 700, 700, 0.5, 0.6121},
          {IDM_VIEW_INTERIOR_SQUARE, 700, 700, 0.5, 0.5}}) {
        Command(static_cast<UINT>(view));
        EXPECT_TRUE(BecomesChecked(static_cast<UINT>(view)));
        const POINT at{(kClientWidth - width) / 2 + static_cast<int>(frontX * width),
                       (kClientHeight - height) / 2 + static_cast<int>(frontY * height)};
        EXPECT_TRUE(Eventually([&] {
            const Color8 shown = PixelAt(Window(), at.x, at.y);
            // Scaled on the screen: only what changes slowly, sixteen columns a step and rows one by one.
            return std::abs(shown.red - kFrontPlace.Colour().red) <= 2 &&
                   std::abs(shown.blue - kFrontPlace.Colour().blue) <= 20;
        })) << view;
        EXPECT_EQ(PixelAt(Window(), kClientWidth - 1, kClientHeight - 1), kBackground) << view;
    }
}

}  // namespace
}  // namespace skyvault::test
