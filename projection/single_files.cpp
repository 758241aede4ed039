#include "projection/single_files.h"

#include <algorithm>

#include "codecs/picture_files.h"
#include "platform/path_text.h"
#include "projection/build_faces.h"
#include "projection/export_size.h"

namespace skyvault {

namespace {

/// The other affixes go before the name.
bool GoesBehind(std::wstring_view affix) {
    return affix.size() == 1 || affix.starts_with(L"_");
}

}  // namespace

const wchar_t* FaceAffix(int namingSystem, int face) {
    static const wchar_t* const kAffixes[6][kFaceCount] = {
        {L"_front", L"_right", L"_back", L"_left", L"_top", L"_bottom"},
        {L"_front", L"_right", L"_back", L"_left", L"_up", L"_down"},
        {L"_f", L"_r", L"_b", L"_l", L"_u", L"_d"},
        {L"_ft", L"_rt", L"_bk", L"_lf", L"_up", L"_dn"},
        {L"f_", L"r_", L"b_", L"l_", L"u_", L"d_"},
        {L"0", L"1", L"2", L"3", L"4", L"5"},
    };
    if (namingSystem < 0 || namingSystem > 5 || face < 0 || face >= kFaceCount) return L"";
    return kAffixes[namingSystem][face];
}

int NamingSystemOf(const ExportSettings& settings) {
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

std::vector<std::wstring> SingleFilePaths(const std::wstring& path, const ExportSettings& settings) {
    std::vector<std::wstring> paths;
    paths.reserve(kFaceCount);
    for (int f = 0; f < kFaceCount; ++f) {
        paths.push_back(SingleFilePath(path, NamingSystemOf(settings), static_cast<CubeFace>(f)));
    }
    return paths;
}

bool NamesFace(std::wstring_view name, int namingSystem, CubeFace face) {
    const std::wstring_view affix = FaceAffix(namingSystem, static_cast<int>(face));
    return !affix.empty() && (GoesBehind(affix) ? name.ends_with(affix) : name.starts_with(affix));
}

Outcome ImportSingleFiles(const ImportRequest& request, Feedback&, Panorama& panorama) {
    bool any = false;
    for (std::size_t f = 0; f < panorama.faces.size() && f < request.paths.size(); ++f) {
        Image& face = panorama.faces[f];
        if (request.paths[f].empty()) continue;
        Outcome loaded = LoadPicture(request.paths[f], face);
        if (loaded.IsDone()) {
            panorama.faceSize = face.width;
            any = true;
        } else {
            panorama.faceFailures.push_back(std::move(loaded));
        }
    }
    if (any) return {};
    return panorama.faceFailures.empty() ? Failure(Reason::CannotOpen) : panorama.faceFailures.front();
}

Outcome ExportSingleFiles(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                          Image&) {
    if (panorama.IsEmpty()) return Failure(Reason::NothingToShow);
    const std::int32_t size =
        ChooseExportSize(request, SizeKind::CubeMap, SourceFaceSize(panorama), feedback);
    PixelFormat format = PixelFormat::None;
    Outcome outcome = FormatOfExport(panorama, request, format);
    const int system = NamingSystemOf(request.settings);
    std::wstring infoLog;
    Image face;
    for (int f = 0; f < kFaceCount && outcome.IsDone(); ++f) {
        const CubeFace which = static_cast<CubeFace>(f);
        outcome = BuildFace(panorama, face, which, static_cast<std::uint32_t>(size), format,
                            EmptyColour(request.settings));
        if (!outcome.IsDone()) break;
        outcome = SavePicture(face, SingleFilePath(request.path, system, which), {.bleed = true});
        infoLog += outcome.infoLog;
    }
    if (outcome.IsDone()) outcome.infoLog = std::move(infoLog);
    return outcome;
}

}  // namespace skyvault
