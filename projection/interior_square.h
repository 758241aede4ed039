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

#include "projection/layout_requests.h"

namespace skyvault {

/// Fills the faces, each as wide as the picture; the back face is of the background colour, transparent with
/// "Transparency" (the faces then have alpha).
Outcome ImportInteriorSquare(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// Every pixel looks at the face pixel the import would put it in. Sizes as RenderSquare.
Outcome RenderInteriorSquare(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                             Image& result);

}  // namespace skyvault
