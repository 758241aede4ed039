// DirectX DDS cube maps: six faces in one file.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Reads the six faces; composited over black unless "Transparency" is on. faceSize becomes the front face's
/// width.
Outcome ImportCubeMapDds(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// Builds the six faces in a power of two and writes them, by the settings "Transparency" (keep alpha) and
/// "CompressDDS", or with the encoding and the mip levels that the settings ask for beside them. There is no
/// view of it; `result` stays as it is.
Outcome ExportCubeMapDDS(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                         Image& result);

}  // namespace skyvault
