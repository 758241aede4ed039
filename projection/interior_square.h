// The interior square: a room seen from its centre towards the front, in one-point perspective.
//
// The front wall fills the middle third of the picture, the four walls around it are trapezoids:
//
//      +---------------+
//      | \    Top    / |      U and V are a picture position, −1..1 rightwards and downwards; a and b a face
//      |   +-------+   |      position, 0..1 rightwards and downwards. On the right wall, for example,
//      | L | Front | R |      U = 1/(3 − 2a), from 1/3 beside the front wall to 1 at the picture's edge.
//      |   +-------+   |      The back wall is not in the picture.
//      | /  Bottom   \ |
//      +---------------+
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Fills the faces, each as wide as the picture, from an interior square; the back face is of the background
/// colour, transparent with "Transparency" (the faces then have alpha). False when the picture cannot be
/// read.
bool ImportInteriorSquare(Panorama& panorama, const std::wstring& path);

/// Writes the panorama to `path`, or with an empty path builds it for the view target and shows it there
/// (ExportSquare). Every pixel looks at the face pixel the import would put it in.
bool ExportInteriorSquare(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

}  // namespace skyvault
