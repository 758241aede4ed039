#include "projection/import_panorama.h"

#include "image/dds_cube_map.h"
#include "platform/path_text.h"
#include "projection/dds.h"
#include "projection/equirectangular.h"
#include "projection/heart.h"
#include "projection/interior_square.h"
#include "projection/mirror_ball.h"
#include "projection/sphere_map.h"

namespace skyvault {

namespace {

/// A DDS file says itself whether it is a cube map, whatever it was picked as. Other files are taken as
/// asked.
PanoramaFormat CorrectedFormat(Panorama& panorama, const std::wstring& path, PanoramaFormat format) {
    if (UpperExtension(path) != L"DDS") return format;
    const bool asCubeMap = format == PanoramaFormat::DirectXDds;
    const DdsKind kind = GetDdsKind(path);
    const std::wstring name = L"\"" + std::wstring(FileNamePart(path));
    if (!asCubeMap && kind == DdsKind::CubeMap) {
        panorama.feedback.Information(name + L"\" is a cubemap.\n\nNow switching to cubemap.");
        return PanoramaFormat::DirectXDds;
    }
    if (asCubeMap && kind == DdsKind::Picture) {
        panorama.feedback.Information(name + L"\" is not a cubemap.\n\nNow switching to equirectangular.");
        return PanoramaFormat::Equirectangular;
    }
    return format;
}

}  // namespace

void ImportPanorama(Panorama& panorama, const std::vector<std::wstring>& paths, PanoramaFormat format) {
    ResetModifications(panorama.modifications);
    const std::wstring first = paths.empty() ? std::wstring() : paths.front();
    switch (CorrectedFormat(panorama, first, format)) {
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
        case PanoramaFormat::DirectXDds:
            ImportCubeMapDds(panorama, first);
            return;
        default:
            return;
    }
}

}  // namespace skyvault
