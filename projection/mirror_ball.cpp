#include "projection/mirror_ball.h"

#include "projection/disc_shape.h"

namespace skyvault {

bool ImportMirrorBall(Panorama& panorama, const std::wstring& path) {
    return ImportDisc(panorama, path, DiscPasses().mirrorBallPixels);
}

bool ExportMirrorBall(Panorama& panorama, const std::wstring& path, std::wstring& infoLog) {
    return ExportDisc(panorama, path, DiscPasses().mirrorBallDirections, infoLog);
}

}  // namespace skyvault
