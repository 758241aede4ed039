// The sphere map: every direction, as a reflecting ball photographed from the front shows it. The front is in
// the centre, the back all along the rim.
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Makes the six faces, twice as large as the picture is wide. False, with nothing reported, when the
/// picture cannot be read; a face without memory is reported and stays empty.
bool ImportSphereMap(Panorama& panorama, const std::wstring& path);

/// Writes the panorama to `path`, or with an empty path builds it for the view target and shows it there.
/// Resolution2 chooses the size. False without a picture to show, without memory, or when writing failed.
bool ExportSphereMap(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

}  // namespace skyvault
