#include "projection/heart.h"

#include "projection/disc_shape.h"

namespace skyvault {

bool ImportHeart(Panorama& panorama, const std::wstring& path) {
    return ImportDisc(panorama, path, DiscPasses().heartPixels);
}

bool ExportHeart(Panorama& panorama, const std::wstring& path, std::wstring& infoLog) {
    return ExportDisc(panorama, path, DiscPasses().heartDirections, infoLog);
}

}  // namespace skyvault
