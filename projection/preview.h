// The perspective preview: what a camera in the middle of the panorama sees.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// A file has the size of "Resolution3", a view is that fitted into its room. The focal length is picture
/// width × "PreviewFOV".
Outcome RenderPreview(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                      Image& result);

}  // namespace skyvault
