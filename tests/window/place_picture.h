// A picture whose colours say where in it they are: what a pixel on the screen shows can be read off it.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <ostream>

#include "image/image.h"

namespace skyvault::test {

/// Ten pixels to a degree.
inline constexpr std::int32_t kPlaceWidth = 3600, kPlaceHeight = 1800;

struct Place {
    std::int32_t column = 0, row = 0;
    friend bool operator==(const Place&, const Place&) = default;
};

inline std::ostream& operator<<(std::ostream& out, const Place& place) {
    return out << '(' << place.column << ',' << place.row << ')';
}

/// Twelve bits of column and twelve of row.
inline Color8 ColourOfPlace(const Place& place) {
    return {static_cast<std::uint8_t>(place.column >> 4),
            static_cast<std::uint8_t>((place.column & 15) << 4 | place.row >> 8),
            static_cast<std::uint8_t>(place.row & 255), 255};
}

inline Place PlaceOfColour(const Color8& colour) {
    return {colour.red << 4 | colour.green >> 4, (colour.green & 15) << 8 | colour.blue};
}

inline Image PlacePicture() {
    Image picture(kPlaceWidth, kPlaceHeight, PixelFormat::Rgb8);
    for (std::int32_t row = 0; row < kPlaceHeight; ++row) {
        auto* pixel = reinterpret_cast<std::uint8_t*>(picture.Row(static_cast<std::uint32_t>(row)));
        for (std::int32_t column = 0; column < kPlaceWidth; ++column, pixel += 3) {
            const Color8 colour = ColourOfPlace({column, row});
            pixel[0] = colour.blue;
            pixel[1] = colour.green;
            pixel[2] = colour.red;
        }
    }
    return picture;
}

/// Rounding may choose the neighbour.
inline bool NearPlace(const Place& a, const Place& b) {
    const std::int32_t columns = std::abs(a.column - b.column);
    return (columns <= 1 || columns >= kPlaceWidth - 1) && std::abs(a.row - b.row) <= 1;
}

}  // namespace skyvault::test
