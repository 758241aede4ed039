// The view of single files: six faces, each with its name and what its file will be called.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Fills a view's whole room. The faces stand in the rows and columns that make them largest; labels are left
/// out where they would not be readable. NothingToShow where there is no room for faces, and for files.
Outcome RenderLabelledFaces(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                            Image& result);

}  // namespace skyvault
