#include "session/drop_files.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "codecs/dds_cube_map.h"
#include "codecs/picture_files.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/system_text.h"
#include "projection/cube_face.h"
#include "projection/single_files.h"
#include "session/commands.h"

namespace skyvault {
namespace {

constexpr const wchar_t* kHint = L"One panorama can be dropped here, or six pictures of cube faces.";
constexpr const wchar_t* kFacesHint =
    L"The faces cannot be told apart by their names. They have to end in _front, _right, _back, _left, _top "
    L"and _bottom, or be named by another of the naming systems in the options.";

/// width : height is across : down, as near as whole pixels allow.
bool HasProportions(const PictureSize& size, std::uint64_t across, std::uint64_t down) {
    const std::uint64_t width = size.width, height = size.height;
    return width == (height * across + down / 2) / down || height == (width * down + across / 2) / across;
}

/// The view when it is one of the layouts, else the first of them.
template <std::size_t count>
PanoramaFormat ViewAmong(const std::array<PanoramaFormat, count>& layouts, PanoramaFormat view) {
    return std::find(layouts.begin(), layouts.end(), view) != layouts.end() ? view : layouts.front();
}

PanoramaFormat LayoutOfFile(const std::wstring& path, PanoramaFormat view) {
    const std::wstring extension = UpperExtension(path);
    if (extension == L"DDS" && GetDdsKind(path) != DdsKind::Picture) return PanoramaFormat::DirectXDds;
    if (extension == L"MOV") return PanoramaFormat::QuickTimeVr;
    return LayoutOfPicture(ReadPictureSize(path), view);
}

/// The path of each face by one naming system; empty when one of the paths is no face's, or a face has none.
std::vector<std::wstring> OrderBySystem(const std::vector<std::wstring>& paths, int system) {
    std::vector<std::wstring> faces(kFaceCount);
    for (const std::wstring& path : paths) {
        const std::wstring name = LowerCase(WithoutExtension(FileNamePart(path)));
        int face = 0;
        while (face < kFaceCount && !NamesFace(name, system, static_cast<CubeFace>(face))) ++face;
        if (face == kFaceCount) return {};
        faces[static_cast<std::size_t>(face)] = path;
    }
    const bool complete =
        std::none_of(faces.begin(), faces.end(), [](const std::wstring& path) { return path.empty(); });
    return complete ? faces : std::vector<std::wstring>();
}

}  // namespace

PanoramaFormat LayoutOfPicture(const PictureSize& size, PanoramaFormat view) {
    using enum PanoramaFormat;
    if (size.width == 0 || size.height == 0) return Equirectangular;
    if (size.width == size.height) {
        return ViewAmong(std::array{SphereMap, MirrorBall, Heart, InteriorSquare}, view);
    }
    if (HasProportions(size, 2, 1)) return Equirectangular;
    if (HasProportions(size, 4, 3)) return HorizontalCross;
    if (HasProportions(size, 3, 4)) return VerticalCross;
    if (HasProportions(size, 6, 1)) return ViewAmong(std::array{Strip, StripXyz, InteriorStrip}, view);
    return Equirectangular;
}

std::vector<std::wstring> OrderFaces(const std::vector<std::wstring>& paths) {
    if (paths.size() != kFaceCount) return {};
    for (int system = 0; *FaceAffix(system, 0) != L'\0'; ++system) {
        std::vector<std::wstring> faces = OrderBySystem(paths, system);
        if (!faces.empty()) return faces;
    }
    return {};
}

void OpenDroppedFiles(Session& session, const std::vector<std::wstring>& paths) {
    const auto folder = std::find_if(paths.begin(), paths.end(), FolderExists);
    if (folder != paths.end()) {
        session.host.Error(L"\"" + *folder + L"\" is a folder.\n\n" + kHint);
    } else if (paths.size() == 1) {
        const auto view = static_cast<PanoramaFormat>(session.settings.view);
        ImportFiles(session, paths, *FindLayout(LayoutOfFile(paths.front(), view)));
    } else if (paths.size() != kFaceCount) {
        session.host.Error(std::to_wstring(paths.size()) + L" files were dropped.\n\n" + kHint);
    } else if (const std::vector<std::wstring> faces = OrderFaces(paths); faces.empty()) {
        session.host.Error(kFacesHint);
    } else {
        ImportFiles(session, faces, *FindLayout(PanoramaFormat::SingleFiles));
    }
}

}  // namespace skyvault
