// The equirectangular picture, the form most panoramas come in.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Reads the picture as the panorama's equirectangular source.
Outcome ImportEquirectangular(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// A file has the width of "Resolution1", at most four times the faces', and is averaged from twice that with
/// "Antialiasing"; progress: "Exporting equirectangular...". A view is as large as fits, with the magnifying
/// glass when it is on.
Outcome RenderEquirectangular(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                              Image& result);

}  // namespace skyvault
