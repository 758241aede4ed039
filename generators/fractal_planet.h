// The fractal planet: random land coloured by height, deep sea to snow.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Replaces the panorama's faces. The palette is the picture's diagonal: the lowest places take its top left
/// colour, the highest its bottom right one, and the mean height is in its middle; so half of a planet is
/// below the middle. "FractalRoughness" and "FractalContrast" count from 0 to 1.
///
/// roughness: the share of the small hills, from smooth (0) to rugged (1). contrast: how far the heights are
/// stretched from the middle, from hardly ever reaching the ends of the palette (0) to often being beyond
/// them (1), where the palette's ends are all there is.
///
/// CannotOpen, and nothing is changed, for an empty path; NoMemory also for the heights. A palette picture
/// that cannot be read gives opaque red, as for the blobs.
Outcome GenerateFractalPlanet(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

}  // namespace skyvault
