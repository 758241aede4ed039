#include "projection/dds.h"

#include <algorithm>
#include <limits>

#include "image/dds_cube_map.h"
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

bool ImportCubeMapDds(Panorama& panorama, const std::wstring& path) {
    if (path.empty()) return false;
    const bool loaded = LoadDdsCubeMap(path, panorama.faces, panorama.settings.transparency);
    if (!loaded || panorama.IsEmpty()) {
        panorama.feedback.Error(L"Could not open \"" + path + L"\"");
        return false;
    }
    panorama.faceSize = panorama.faces[0].width;
    return true;
}

bool ExportCubeMapDDS(Panorama& panorama, const std::wstring& path, std::wstring& infoLog) {
    if (path.empty() || !IsComplete(panorama)) return false;
    constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
    const std::int32_t sourceSize = static_cast<std::int32_t>(std::min(panorama.faceSize, kLargest));
    const std::int32_t size = ChooseExportSize(panorama, SizeKind::CubeMap, sourceSize, true, true);
    const PixelFormat format = ExportPixelFormat(panorama, false);
    if (format == PixelFormat::None) return false;

    const auto build = [&](std::size_t f, Image& face) {
        return BuildFace(panorama, face, static_cast<CubeFace>(f), static_cast<std::uint32_t>(size), format);
    };
    return SaveDdsCubeMap(path, build, panorama.settings.transparency, panorama.settings.compressDds,
                          &infoLog);
}

}  // namespace skyvault
