#include "session/import_panorama.h"

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

}  // namespace

void ImportPanorama(Panorama& panorama, const std::vector<std::wstring>& paths, PanoramaFormat format) {
    ResetModifications(panorama.modifications);
    panorama.path = paths.empty() ? std::wstring() : paths.front();
    const LayoutRow* layout = FindLayout(CorrectedFormat(panorama, panorama.path, format));
    if (layout != nullptr && layout->importFrom != nullptr) layout->importFrom(panorama, paths);
}

}  // namespace skyvault
