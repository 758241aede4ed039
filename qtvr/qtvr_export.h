// Cubic QuickTime VR movies (".mov"), written: a fixed header (movie_template.h) and six JPEG files.
#pragma once

#include <cstdint>
#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Writes the panorama as a cubic movie at the size the options choose ("Resolution0", never more than
/// faceSize; the user is told). There is no view of this layout: false for an empty path. Nobody wants a
/// movie without one of its faces: false also when one could not be built or saved.
bool ExportQuickTimeVr(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

/// What becomes of a movie one of whose faces could not be built or saved: its size there is 0, or no movie
/// is written.
enum class MissingFaces { LeaveOut, Refuse };

/// The same with the faces' edge in pixels and their format given. infoLog: when given, receives five lines.
/// False when faceEdge ≤ 0, the panorama is empty, or the file cannot be written; an older file of that name
/// then stays as it was.
bool WriteQuickTimeVr(Panorama& panorama, const std::wstring& path, std::int32_t faceEdge, PixelFormat format,
                      std::wstring* infoLog, MissingFaces missing = MissingFaces::LeaveOut);

}  // namespace skyvault
