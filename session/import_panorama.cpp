#include "session/import_panorama.h"

#include <algorithm>

#include "image/dds_cube_map.h"
#include "platform/path_text.h"
#include "session/layouts.h"

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

bool IsGenerator(PanoramaFormat format) {
    return format >= PanoramaFormat::Voronoi;
}

/// Six faces, all as large as the panorama says.
bool IsWhole(const Panorama& panorama) {
    return std::all_of(panorama.faces.begin(), panorama.faces.end(),
                       [&](const Image& face) { return face.IsValid() && face.width == panorama.faceSize; });
}

}  // namespace

void ImportPanorama(Panorama& panorama, const std::vector<std::wstring>& paths, PanoramaFormat format) {
    ResetModifications(panorama.modifications);
    panorama.path = paths.empty() ? std::wstring() : paths.front();
    const LayoutRow* layout = FindLayout(CorrectedFormat(panorama, panorama.path, format));
    if (layout == nullptr || layout->importFrom == nullptr) return;
    const bool done = layout->importFrom(panorama, paths);
    // Generators leave out the faces there is no memory for, or leave them at the double size.
    if (done && IsGenerator(format) && !IsWhole(panorama)) panorama.feedback.Error(L"Out of memory");
}

}  // namespace skyvault
