// The heart: an equal-area map of the whole sphere, the Bonne projection with a standard parallel of 100°.
// The front is on the axis, the north pole in the notch, the south pole at the tip.
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Makes the six faces, twice as large as the picture is wide. False, with nothing reported, when the
/// picture cannot be read; a face without memory is reported and stays empty.
bool ImportHeart(Panorama& panorama, const std::wstring& path);

/// Writes the panorama to `path`, or with an empty path builds it for the view target and shows it there.
/// Resolution2 chooses the size. False without a picture to show, without memory, or when writing failed.
bool ExportHeart(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

}  // namespace skyvault
