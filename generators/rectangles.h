// Flat coloured rectangles floating around the viewer, all at the same distance, each turned at random.
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Replaces the six faces. "BlobsForceFields" rectangles of sizes around "BlobsPower", each coloured like a
/// random pixel of the palette picture (opaque black when it cannot be read); earlier ones cover later
/// ones. Between them shows the background colour, transparent with "Transparency". False, and nothing
/// changed, without a path or without memory for the rectangles.
bool GenerateRectangles(Panorama& panorama, const std::wstring& palettePicturePath);

}  // namespace skyvault
