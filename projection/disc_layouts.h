// The sphere map, the mirror ball and the heart: round shapes on a square picture.
//
// Sphere map: every direction, as a reflecting ball photographed from the front shows it; the front is in the
// centre, the back all along the rim. Mirror ball: the front half of the panorama as a ball seen from the
// front; its import fills the back half with the front half's mirror image. Heart: an equal-area map of the
// whole sphere, the Bonne projection with a standard parallel of 100°; the front is on the axis, the north
// pole in the notch, the south pole at the tip.
//
// Resolution2 chooses the size of files, at most twice the faces'. Pixels outside the shape are of the
// background colour, or transparent with "Transparency".
#pragma once

#include "projection/layout_requests.h"
#include "projection/render_layout.h"

namespace skyvault {

/// The layout's request.format says which of the three. Makes the six faces, twice as large as the picture is
/// wide; without memory for one (NoMemory) it stays empty.
Outcome ImportDisc(const ImportRequest& request, Feedback& feedback, Panorama& panorama);
Outcome RenderDisc(const Panorama& panorama, const ExportRequest& request, Feedback& feedback, Image& result);

/// The shape's directions on a grid of size × size pixels.
LayoutGrid DiscGrid(PanoramaFormat shape, std::uint32_t size);

}  // namespace skyvault
