#include "projection/import_panorama.h"

#include "projection/cube_layouts.h"
#include "projection/equirectangular.h"
#include "projection/interior_square.h"
#include "projection/single_files.h"

namespace skyvault {

void ImportPanorama(Panorama& panorama, const std::vector<std::wstring>& paths, PanoramaFormat format) {
    ResetModifications(panorama.modifications);
    const std::wstring first = paths.empty() ? std::wstring() : paths.front();
    switch (format) {
        case PanoramaFormat::Equirectangular:
            ImportEquirectangular(panorama, first);
            return;
        case PanoramaFormat::HorizontalCross:
        case PanoramaFormat::VerticalCross:
        case PanoramaFormat::Strip:
        case PanoramaFormat::StripXyz:
            ImportFaceLayout(panorama, first, format);
            return;
        case PanoramaFormat::SingleFiles:
            ImportSingleFiles(panorama, paths);
            return;
        case PanoramaFormat::InteriorStrip:
            ImportInteriorStrip(panorama, first);
            return;
        case PanoramaFormat::InteriorSquare:
            ImportInteriorSquare(panorama, first);
            return;
        default:
            return;
    }
}

}  // namespace skyvault
