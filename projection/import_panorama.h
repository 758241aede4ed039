// How a panorama comes into being: which reader fills it.
#pragma once

#include <string>
#include <vector>

#include "projection/panorama.h"

namespace skyvault {

/// Fills an empty panorama from its files by the format's reader. paths: one; six for single files. A DDS
/// file that is, or is not, a cube map changes the format, and the user is told. Failures are reported by the
/// readers and leave the panorama empty; a format without a reader leaves it so too.
void ImportPanorama(Panorama& panorama, const std::vector<std::wstring>& paths, PanoramaFormat format);

}  // namespace skyvault
