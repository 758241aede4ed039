// How the current picture sits in the main window: fitted, centred, cleared around, with the crosshair.
#pragma once

#include <cstdint>

#include "app/draw_canvas.h"
#include "projection/view_target.h"

namespace skyvault {

/// Pixels of the client area.
struct PicturePlace {
    std::int32_t left = 0, top = 0, width = 0, height = 0;
    friend bool operator==(const PicturePlace&, const PicturePlace&) = default;
};

/// The largest place in the middle of the client area that keeps the picture's proportions; smaller
/// pictures grow, none is cropped. All zero for an empty picture or client area.
PicturePlace FitPicture(const ClientSize& client, std::uint32_t pictureWidth, std::uint32_t pictureHeight);

/// Draws picture and surroundings; Failed for an empty picture or client area too.
DrawResult PresentPicture(DrawCanvas& canvas, const ClientSize& client, const Image& picture,
                          const Color8& backgroundColour, bool crosshair);

}  // namespace skyvault
