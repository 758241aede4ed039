// A panorama as six picture files, one for each face.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "projection/panorama.h"

namespace skyvault {

/// The file of one face: the face's part of a naming system (FaceAffix) joined to the chosen path's file
/// name. "C:\out\room.jpg" gives "C:\out\room_front.jpg", "C:\out\f_room.jpg" or "C:\out\room0.jpg".
std::wstring SingleFilePath(const std::wstring& path, int namingSystem, CubeFace face);

/// The naming system files are written by: the chosen one, or 0 for an index that names none.
int NamingSystemOf(const AppState& settings);

/// Whether the file name (without extension, in lower case) is that of the face's file by the naming system.
bool NamesFace(std::wstring_view name, int namingSystem, CubeFace face);

/// Loads the faces in the order of CubeFace. What cannot be read or is not named stays empty, and nothing is
/// reported; the last face that can be read sets faceSize. False when there is none.
bool ImportSingleFiles(Panorama& panorama, const std::vector<std::wstring>& paths);

/// Writes the six files "FileNamingSystem" makes of `path`; the first that fails ends the export. Resolution0
/// chooses the size, at most the panorama's faces. infoLog receives the descriptions of all six. The picture
/// left behind, and with an empty path shown in the view target, is BuildLabelledFaces'.
bool ExportSingleFiles(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

}  // namespace skyvault
