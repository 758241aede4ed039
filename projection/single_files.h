// A panorama as six picture files, one for each face, and the systems that name them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "projection/layout_requests.h"

namespace skyvault {

/// What six-file names carry for a face, by naming system 0..5; empty outside of both ranges.
const wchar_t* FaceAffix(int namingSystem, int face);

/// The naming system files are written and found by: the chosen one, or 0 for an index that names none.
int NamingSystemOf(const ExportSettings& settings);

/// The file of one face: the face's affix joined to the chosen path's file name. "C:\out\room.jpg" gives
/// "C:\out\room_front.jpg", "C:\out\f_room.jpg" or "C:\out\room0.jpg".
std::wstring SingleFilePath(const std::wstring& path, int namingSystem, CubeFace face);

/// SingleFilePath of all six, by the chosen naming system.
std::vector<std::wstring> SingleFilePaths(const std::wstring& path, const ExportSettings& settings);

/// Whether the file name (without extension, in lower case) is that of the face's file by the naming system.
bool NamesFace(std::wstring_view name, int namingSystem, CubeFace face);

/// Loads the faces in the order of CubeFace. What cannot be read or is not named stays empty; the last face
/// that can be read sets faceSize. CannotOpen when there is none.
Outcome ImportSingleFiles(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// Writes the six files "FileNamingSystem" makes of the path; the first that fails ends the export.
/// Resolution0 chooses the size, at most the panorama's faces. The outcome describes all six. `result` stays
/// as it is: there is no one picture of what was written.
Outcome ExportSingleFiles(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                          Image& result);

}  // namespace skyvault
