#include "projection/single_files.h"

#include <algorithm>
#include <limits>

#include "image/picture_files.h"
#include "platform/path_text.h"
#include "projection/build_faces.h"
#include "projection/export_size.h"
#include "projection/labelled_faces.h"

namespace skyvault {

namespace {

/// The other affixes go before the name.
bool GoesBehind(std::wstring_view affix) {
    return affix.size() == 1 || affix.starts_with(L"_");
}

bool WriteFaces(Panorama& panorama, const std::wstring& path, std::wstring& infoLog) {
    constexpr std::uint32_t kLargestFace = std::numeric_limits<std::int32_t>::max();
    const std::int32_t faceSize = static_cast<std::int32_t>(std::min(panorama.faceSize, kLargestFace));
    const std::int32_t size = ChooseExportSize(panorama, SizeKind::CubeMap, faceSize, false, true);
    const PixelFormat format = ExportPixelFormat(panorama, false);
    if (format == PixelFormat::None) return false;
    Image face;
    for (int f = 0; f < kFaceCount; ++f) {
        const CubeFace which = static_cast<CubeFace>(f);
        if (!BuildFace(panorama, face, which, static_cast<std::uint32_t>(size), format)) return false;
        const std::wstring file = SingleFilePath(path, NamingSystemOf(panorama.settings), which);
        if (!SavePicture(face, file, PixelFormat::None, &infoLog, true)) return false;
    }
    return true;
}

}  // namespace

int NamingSystemOf(const AppState& settings) {
    const int system = settings.fileNamingSystem;
    // Without affixes the six files would be one, written over five times.
    return *FaceAffix(system, 0) != L'\0' ? system : 0;
}

std::wstring SingleFilePath(const std::wstring& path, int namingSystem, CubeFace face) {
    const std::wstring name(FileNamePart(path));
    const std::wstring folder = path.substr(0, path.size() - name.size());
    const std::wstring stem = WithoutExtension(name);
    const std::wstring extension = stem.size() < name.size() ? name.substr(stem.size() + 1) : L"";
    const std::wstring affix = FaceAffix(namingSystem, static_cast<int>(face));
    return folder + (GoesBehind(affix) ? stem + affix : affix + stem) + L"." + extension;
}

bool NamesFace(std::wstring_view name, int namingSystem, CubeFace face) {
    const std::wstring_view affix = FaceAffix(namingSystem, static_cast<int>(face));
    return !affix.empty() && (GoesBehind(affix) ? name.ends_with(affix) : name.starts_with(affix));
}

bool ImportSingleFiles(Panorama& panorama, const std::vector<std::wstring>& paths) {
    bool any = false;
    for (std::size_t f = 0; f < panorama.faces.size(); ++f) {
        Image& face = panorama.faces[f];
        face.Clear();
        if (f < paths.size() && !paths[f].empty()) face = LoadPicture(paths[f]);
        if (!face.IsValid()) continue;
        panorama.faceSize = face.width;
        any = true;
    }
    return any;
}

bool ExportSingleFiles(Panorama& panorama, const std::wstring& path, std::wstring& infoLog) {
    if (panorama.IsEmpty()) return false;
    if (path.empty()) return BuildLabelledFaces(panorama) && ShowResult(panorama);
    const bool written = WriteFaces(panorama, path, infoLog);
    // There is no one picture of what was written for the window to show.
    if (panorama.viewTarget) BuildLabelledFaces(panorama);
    return written;
}

}  // namespace skyvault
