#include "projection/import_panorama.h"

#include "projection/equirectangular.h"
#include "projection/heart.h"
#include "projection/interior_square.h"
#include "projection/mirror_ball.h"
#include "projection/sphere_map.h"

namespace skyvault {

void ImportPanorama(Panorama& panorama, const std::vector<std::wstring>& paths, PanoramaFormat format) {
    ResetModifications(panorama.modifications);
    const std::wstring first = paths.empty() ? std::wstring() : paths.front();
    switch (format) {
        case PanoramaFormat::Equirectangular:
            ImportEquirectangular(panorama, first);
            return;
        case PanoramaFormat::SphereMap:
            ImportSphereMap(panorama, first);
            return;
        case PanoramaFormat::MirrorBall:
            ImportMirrorBall(panorama, first);
            return;
        case PanoramaFormat::Heart:
            ImportHeart(panorama, first);
            return;
        case PanoramaFormat::InteriorSquare:
            ImportInteriorSquare(panorama, first);
            return;
        default:
            return;
    }
}

}  // namespace skyvault
