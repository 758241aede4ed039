// Cubic QuickTime VR movies (".mov"), written: a fixed header (movie_template.h) and six JPEG files.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Writes the panorama as a cubic movie at the size the options choose ("Resolution0", never more than
/// faceSize; the user is told). Nobody wants a movie without one of its faces: fails also when one could not
/// be built or saved. There is no view of this layout; `result` stays as it is.
Outcome ExportQuickTimeVr(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                          Image& result);

/// The same with the faces' edge given, 1 or more.
Outcome WriteQuickTimeVr(const Panorama& panorama, const ExportRequest& request, std::uint32_t faceEdge);

}  // namespace skyvault
