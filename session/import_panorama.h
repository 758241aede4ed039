// How a panorama comes into being: which reader or generator fills it.
#pragma once

#include <string>
#include <vector>

#include "projection/panorama.h"

namespace skyvault {

/// Fills an empty panorama from its files by the layout's import: one path (a generator's palette or texture
/// picture), or six for single files. A DDS file says itself whether it is a cube map, whatever it was picked
/// as; a correction is told. Failures are reported by the imports and leave the panorama empty (IsEmpty) or
/// partly filled; a format that cannot be imported leaves it empty too.
void ImportPanorama(Panorama& panorama, const std::vector<std::wstring>& paths, PanoramaFormat format);

}  // namespace skyvault
