// The perspective preview: what a camera in the middle of the panorama sees.
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Radians.
struct Camera {
    float heading = 0, pitch = 0, roll = 0;
};

/// Writes the preview at the size of "Resolution3" to `path`, or with an empty path builds it fitted to the
/// view target and shows it. The focal length is picture width × "PreviewFOV". Always opaque behind.
bool ExportPreview(Panorama& panorama, const std::wstring& path, const Camera& camera, std::wstring& infoLog);

}  // namespace skyvault
