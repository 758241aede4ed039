// Spreading visible colours into fully transparent neighbours, so that viewers which filter or scale
// without looking at alpha show no dark fringes.
#pragma once

#include "image/image.h"

namespace skyvault {

/// Fills the colour (never the alpha) of fully transparent pixels from visible neighbours, one pixel
/// outward per pass, for at most max(32, max(width, height) / 64) + 1 passes. Does nothing for pictures
/// without transparency, and quietly without memory for its mask.
void BleedAlpha(Image& image);

}  // namespace skyvault
