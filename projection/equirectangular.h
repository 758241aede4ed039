// Equirectangular pictures: the kept source of a panorama, and the export.
//
// Column 0 looks exactly to the back, column width/2 to the front, the bottom row exactly to the nadir and
// the top row one row step short of the zenith. The grid has no half-pixel offsets.
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Loads the picture into equirectSource and sets faceSize to a quarter of its width; composited over the
/// background colour unless "Transparency" is on. Reports a picture that cannot be opened and returns
/// false; the panorama then stays empty.
bool ImportEquirectangular(Panorama& panorama, const std::wstring& path);

/// Writes the panorama to `path`, or with an empty path builds it for the view target and shows it there.
/// infoLog receives the description of the written file. Progress: "Exporting equirectangular...".
bool ExportEquirectangular(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

}  // namespace skyvault
