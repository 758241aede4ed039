// The window's view of single files: six faces, each with its name and what its file will be called.
#pragma once

#include "projection/panorama.h"

namespace skyvault {

/// Builds resultPicture at the size of the view target's client area. The faces stand in the rows and columns
/// that make them largest; labels are left out where they would not be readable. False without a view target,
/// in a window too small for faces, and without memory, which is reported.
bool BuildLabelledFaces(Panorama& panorama);

}  // namespace skyvault
