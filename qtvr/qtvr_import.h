// Cubic QuickTime VR movies (".mov"), read: any with JPEG tiles, up to 6 × 6 on a face.
//
// Every JPEG picture in the file is looked at, and those of the largest square size are the tiles. Their
// places come from the movie's tables, or, without usable tables, from how their edges fit together.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Fills the faces (Rgba8, opaque) and faceSize; the panorama stays as it was when the movie cannot be read
/// or holds no JPEG picture, has a number of tiles that makes no cube (NotACubicMovie), or there is not
/// enough memory. Progress: "Extracting JPG files...", "Parsing CUFA...", "Parsing STCO...", "Stitching
/// tiles...", "Creating cube faces...".
Outcome ImportQuickTimeVr(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

}  // namespace skyvault
