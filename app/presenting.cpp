#include "app/presenting.h"

#include <algorithm>

namespace skyvault {

PicturePlace FitPicture(const ClientSize& client, std::uint32_t pictureWidth, std::uint32_t pictureHeight) {
    if (client.width <= 0 || client.height <= 0 || pictureWidth == 0 || pictureHeight == 0) return {};
    const auto width = static_cast<float>(pictureWidth), height = static_cast<float>(pictureHeight);
    const float scale =
        std::min(static_cast<float>(client.width) / width, static_cast<float>(client.height) / height);
    PicturePlace place;
    place.width = static_cast<std::int32_t>(width * scale);
    place.height = static_cast<std::int32_t>(height * scale);
    place.left = (client.width - place.width) / 2;
    place.top = (client.height - place.height) / 2;
    return place;
}

DrawResult PresentPicture(DrawCanvas& canvas, const ClientSize& client, const Image& picture,
                          const Color8& backgroundColour, bool crosshair) {
    if (!picture.IsValid() || client.width <= 0 || client.height <= 0) return DrawResult::Failed;
    Color8 background = backgroundColour;
    background.alpha = 255;

    const PicturePlace place = FitPicture(client, picture.width, picture.height);
    const auto left = static_cast<float>(place.left), top = static_cast<float>(place.top);
    canvas.BeginDraw();
    canvas.Clear(background);
    canvas.DrawPicture(
        picture, {left, top, left + static_cast<float>(place.width), top + static_cast<float>(place.height)},
        true);
    if (crosshair) {
        // Through the middle of the middle row and column, so that the lines are one sharp pixel wide.
        const float x = static_cast<float>(client.width / 2) + 0.5f;
        const float y = static_cast<float>(client.height / 2) + 0.5f;
        canvas.DrawLine({0.0f, y}, {static_cast<float>(client.width), y}, 1.0f, background, true);
        canvas.DrawLine({x, 0.0f}, {x, static_cast<float>(client.height)}, 1.0f, background, true);
    }
    return canvas.EndDraw();
}

}  // namespace skyvault
