// Pictures on their way to the screen: as Direct2D takes them, and where they sit in a window.
#pragma once

#include <cstdint>

#include "image/image.h"
#include "projection/layout_requests.h"

namespace skyvault {

/// Makes `result` the picture in Rgba8 with its colours multiplied by alpha, at most `limit` pixels wide and
/// high (larger ones are averaged down, proportions kept). A result of that size already keeps its memory:
/// fresh memory costs more than the conversion. False for an invalid picture and without memory.
bool ToScreenPicture(const Image& picture, std::uint32_t limit, Image& result);

/// The picture made smaller by averaging so that it fits a rectangle of width × height; both positive.
/// Empty when it fits already, and without memory.
Image ReducedToFit(const Image& picture, float width, float height);

/// Pixels of the client area.
struct PicturePlace {
    std::int32_t left = 0, top = 0, width = 0, height = 0;
    friend bool operator==(const PicturePlace&, const PicturePlace&) = default;
};

/// The largest place in the middle of the client area that keeps the picture's proportions; smaller
/// pictures grow, none is cropped. All zero for an empty picture or client area.
PicturePlace FitPicture(const ClientSize& client, std::uint32_t pictureWidth, std::uint32_t pictureHeight);

}  // namespace skyvault
