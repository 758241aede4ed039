// Flat coloured rectangles floating around the viewer, all at the same distance, each turned at random.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Replaces the six faces. "BlobsForceFields" rectangles of sizes around "BlobsPower", each coloured like a
/// random pixel of the palette picture (opaque black when it cannot be read); earlier ones cover later
/// ones. Between them shows the background colour, transparent with "Transparency". CannotOpen,
/// and nothing changed, without a path.
Outcome GenerateRectangles(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

}  // namespace skyvault
