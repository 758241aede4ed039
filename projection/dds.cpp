#include "projection/dds.h"

#include <algorithm>

#include "codecs/dds_cube_map.h"
#include "codecs/picture_trouble.h"
#include "projection/build_faces.h"
#include "projection/export_size.h"

namespace skyvault {

namespace {

/// An equirectangular picture, or all six faces with a square one in front.
bool IsComplete(const Panorama& panorama) {
    if (panorama.equirectSource.IsValid()) return true;
    const Image& front = panorama.faces[0];
    return front.width == front.height && std::all_of(panorama.faces.begin(), panorama.faces.end(),
                                                      [](const Image& face) { return face.IsValid(); });
}

}  // namespace

Outcome ImportCubeMapDds(const ImportRequest& request, Feedback&, Panorama& panorama) {
    if (request.Path().empty()) return Failure(Reason::CannotOpen);
    Outcome loaded = LoadDdsCubeMap(request.Path(), panorama.faces, request.settings.transparency);
    if (loaded.IsDone() && panorama.IsEmpty()) loaded = Failure(Reason::CannotOpen, request.Path());
    if (!loaded.IsDone()) return WithCause(std::move(loaded));
    panorama.faceSize = panorama.faces[0].width;
    return {};
}

Outcome ExportCubeMapDDS(const Panorama& panorama, const ExportRequest& request, Feedback& feedback, Image&) {
    PixelFormat format = PixelFormat::None;
    Outcome asked = FormatOfExport(panorama, request, format);
    if (!asked.IsDone()) return asked;
    if (!IsComplete(panorama)) return Failure(Reason::CannotWrite);
    const std::int32_t size =
        ChooseExportSize(request, SizeKind::CubeMap, SourceFaceSize(panorama), feedback, true);
    const Color8 emptyColour = EmptyColour(request.settings);
    const auto build = [&](std::size_t f, Image& face) {
        return BuildFace(panorama, face, static_cast<CubeFace>(f), static_cast<std::uint32_t>(size), format,
                         emptyColour);
    };
    return SaveDdsCubeMap(request.path, build, request.settings.transparency, request.settings.compressDds);
}

}  // namespace skyvault
