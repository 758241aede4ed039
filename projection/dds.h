// DirectX DDS cube maps: six faces in one file.
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Reads the six faces; composited over black unless "Transparency" is on. faceSize becomes the front face's
/// width. Reports a file that cannot be opened and returns false; the panorama then stays empty.
bool ImportCubeMapDds(Panorama& panorama, const std::wstring& path);

/// Builds the six faces in a power of two and writes them to `path`, by the settings "Transparency" (keep
/// alpha) and "CompressDDS". False for an empty path: there is no view of it. infoLog receives the
/// description of the written file.
bool ExportCubeMapDDS(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

}  // namespace skyvault
