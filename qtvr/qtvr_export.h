// Cubic QuickTime VR movies (".mov"), written: a fixed header (movie_template.h) and six JPEG files.
#pragma once

#include <cstdint>
#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Writes the panorama as a cubic movie at the size the options choose ("Resolution0", never more than
/// faceSize; the user is told). There is no view of this layout: false for an empty path.
bool ExportQuickTimeVr(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

/// The same with the faces' edge in pixels and their format given. infoLog: when given, receives five lines.
/// False when faceEdge ≤ 0, the panorama is empty, or the file cannot be written; an older file of that name
/// then stays as it was. A face that cannot be built or saved does not fail the export: it is missing in the
/// movie, its size there is 0.
bool WriteQuickTimeVr(Panorama& panorama, const std::wstring& path, std::int32_t faceEdge, PixelFormat format,
                      std::wstring* infoLog);

}  // namespace skyvault
