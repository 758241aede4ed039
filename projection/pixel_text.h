// A small font of square dots, for labels inside pictures that are built without a system's fonts.
#pragma once

#include <cstdint>
#include <string_view>

#include "image/image.h"

namespace skyvault {

/// Every letter, with the space to the next and the descender below, in dots.
inline constexpr std::int32_t kPixelLetterWidth = 6, kPixelLetterHeight = 9;

/// Width in pixels of the drawn text; dot: edge of a dot in pixels.
std::int32_t PixelTextWidth(std::wstring_view text, std::int32_t dot);

/// Draws the text with its upper left corner at (left, top). It is cut off at the picture's edges; letters
/// the font lacks stay empty.
void DrawPixelText(Image& picture, std::int32_t left, std::int32_t top, std::int32_t dot,
                   std::wstring_view text, const Color8& colour);

}  // namespace skyvault
