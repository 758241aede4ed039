#include "projection/sphere_map.h"

#include "projection/disc_shape.h"

namespace skyvault {

bool ImportSphereMap(Panorama& panorama, const std::wstring& path) {
    return ImportDisc(panorama, path, DiscPasses().sphereMapPixels);
}

bool ExportSphereMap(Panorama& panorama, const std::wstring& path, std::wstring& infoLog) {
    return ExportDisc(panorama, path, DiscPasses().sphereMapDirections, infoLog);
}

}  // namespace skyvault
