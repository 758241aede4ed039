#include "cli/convert.h"

#include <algorithm>

#include "cli/console_feedback.h"
#include "cli/help.h"
#include "cli/terminal.h"
#include "image/dds_cube_map.h"
#include "image/picture_codec.h"
#include "image/picture_files.h"
#include "image/random.h"
#include "platform/files.h"
#include "platform/parallel_rows.h"
#include "platform/path_text.h"
#include "projection/single_files.h"
#include "session/import_panorama.h"
#include "session/progress_scope.h"
#include "settings/settings_file.h"

namespace skyvault {

namespace {

std::wstring Quoted(const std::wstring& path) {
    return L"\"" + path + L"\"";
}

ExitStatus Fail(const std::wstring& reason) {
    WriteMessage(reason);
    return kFailed;
}

/// The failure of an import or export in one line: the engine's own words when it said any, with the file
/// they are about.
ExitStatus FailAbout(const std::wstring& path, const ConsoleFeedback& feedback,
                     const std::wstring& otherwise) {
    const std::wstring& told = feedback.FirstError();
    if (told.empty()) return Fail(otherwise + L" " + Quoted(path));
    return Fail(told.find(path) != std::wstring::npos ? told : told + L": " + Quoted(path));
}

/// The defaults of a console run. Unlike the window's they name no folders of the user, and make none.
AppState DefaultSettings() {
    AppState settings;
    settings.logo = JoinPath(JoinPath(JoinPath(ProgramFolder(), L"Media"), L"Skins"), L"Logo.png");
    return settings;
}

/// Why nothing can be written there, found out before the work; empty when nothing speaks against it.
std::wstring FileObstacle(const std::wstring& path, const ConvertOptions& options) {
    const std::wstring start = L"Could not write " + Quoted(path) + L": ";
    if (FolderExists(path)) return start + L"it is a folder";
    const std::wstring folder(FolderPart(path));
    if (!folder.empty() && !FolderExists(folder)) return start + L"there is no folder " + Quoted(folder);
    const std::wstring extension = UpperExtension(FileNamePart(path));
    const bool dds = extension == L"DDS";
    if (options.to->saveDialog == FileDialogKind::SaveDds && !dds) {
        return start + L"its extension is not dds";
    }
    const bool picture = options.to->saveDialog == FileDialogKind::SavePicture;
    if (picture && !dds && ContainerOfExtension(extension) == PictureContainer::None) {
        return start + L"its extension is none of bmp dds gif heic jpg png tif";
    }
    return {};
}

/// A picture's description with what a panorama made of it would have; empty when it cannot be read.
std::wstring DescribePicture(const std::wstring& path) {
    const Image picture = LoadPicture(path);
    if (!picture.IsValid()) return {};
    const std::wstring faceSize = std::to_wstring(picture.width / 4);
    return PictureInfo(path, picture.width, picture.height, picture.format) + L"Frames\t\t" +
           std::to_wstring(picture.frameCount) + L"\nPanorama\tfaces " + faceSize + L" x " + faceSize + L"\n";
}

std::wstring DescribeCubeMap(const std::wstring& path) {
    CubeFaces faces;
    if (!LoadDdsCubeMap(path, faces, true)) return {};
    const auto face =
        std::find_if(faces.begin(), faces.end(), [](const Image& image) { return image.IsValid(); });
    return face != faces.end() ? CubeMapInfo(path, face->width, face->format) : std::wstring();
}

std::wstring DescribeFile(const std::wstring& path) {
    const bool cubeMap = UpperExtension(path) == L"DDS" && GetDdsKind(path) == DdsKind::CubeMap;
    return cubeMap ? DescribeCubeMap(path) : DescribePicture(path);
}

float Radians(float degrees) {
    return static_cast<float>(static_cast<double>(degrees) * 0.017453292519943295);
}

void Modify(Modifications& modifications, const ConvertOptions& options) {
    for (const HeadingPitchRoll& turn : options.turns) {
        RotatePanorama(modifications, Radians(turn.heading), Radians(turn.pitch), Radians(turn.roll));
    }
    if (options.horizon) modifications.horizonPower = *options.horizon;
    if (options.logoSize) modifications.logoSize = *options.logoSize;
    modifications.flipHorizontal = options.flipHorizontal;
    modifications.mirrorTopToBottom = options.mirrorTopToBottom;
    modifications.mirrorFrontToBack = options.mirrorFrontToBack;
}

std::wstring OutputObstacle(const ConvertOptions& options, const AppState& settings) {
    if (options.to->format != PanoramaFormat::SingleFiles || FolderExists(options.output)) {
        return FileObstacle(options.output, options);
    }
    const int system = settings.fileNamingSystem;
    if (*FaceAffix(system, 0) == L'\0') {
        return L"Could not write " + Quoted(options.output) + L": FileNamingSystem goes from 0 to 5, not " +
               std::to_wstring(system);
    }
    for (int f = 0; f < kFaceCount; ++f) {
        std::wstring obstacle =
            FileObstacle(SingleFilePath(options.output, system, static_cast<CubeFace>(f)), options);
        if (!obstacle.empty()) return obstacle;
    }
    return {};
}

/// Faces that are missing are white; somebody who named their files wants to know.
void TellOfMissingFaces(const Panorama& panorama, const ConvertOptions& options) {
    constexpr const wchar_t* kNames[kFaceCount] = {L"front", L"right", L"back", L"left", L"top", L"bottom"};
    for (std::size_t f = 0; f < options.inputs.size(); ++f) {
        if (panorama.faces[f].IsValid()) continue;
        WriteMessage(L"Could not open " + Quoted(options.inputs[f]) + L"; there is no " + kNames[f] +
                     L" face");
    }
}

}  // namespace

ExitStatus RunConvert(const ConvertOptions& options) {
    if (!options.from->ImportReady()) {
        return Fail(std::wstring(options.from->name) + L" cannot be read by this version: " +
                    Quoted(options.inputs.front()));
    }
    if (!options.to->ExportReady()) {
        return Fail(std::wstring(options.to->name) + L" cannot be written by this version: " +
                    Quoted(options.output));
    }
    AppState settings = DefaultSettings();
    if (!options.settingsFile.empty()) {
        LoadSettings(settings, options.settingsFile, {});
        if (!settings.settingsLoaded) return Fail(L"Could not open " + Quoted(options.settingsFile));
    }
    for (const auto& [setting, value] : options.settings) SetFromText(settings, *setting, value);
    const std::wstring obstacle = OutputObstacle(options, settings);
    if (!obstacle.empty()) return Fail(obstacle);
    if (IsGenerator(*options.from) && !LoadPicture(options.inputs.front()).IsValid()) {
        return Fail(L"Could not open " + Quoted(options.inputs.front()));
    }
    if (options.seed) SetFixedSeed(*options.seed);
    SetThreadCount(options.threads);

    ConsoleFeedback feedback(options.quiet);
    std::wstring infoLog;
    bool imported = false;
    bool exported = false;
    bool hasPixelFormat = false;
    {
        const ProgressScope progress(feedback);
        Panorama panorama(feedback, settings, nullptr);
        ImportPanorama(panorama, options.inputs, options.from->format);
        imported = !panorama.IsEmpty() && feedback.FirstError().empty();
        if (imported) {
            if (options.from->format == PanoramaFormat::SingleFiles) TellOfMissingFaces(panorama, options);
            hasPixelFormat = ExportPixelFormat(panorama, false) != PixelFormat::None;
            Modify(panorama.modifications, options);
            const Camera camera{Radians(options.camera.heading), Radians(options.camera.pitch),
                                Radians(options.camera.roll)};
            exported = options.to->exportTo(panorama, options.output, camera, infoLog);
        }
    }
    if (!imported) return FailAbout(options.inputs.front(), feedback, L"Could not open");
    if (!exported && !hasPixelFormat) {
        return Fail(L"Could not write " + Quoted(options.output) +
                    L": there is no front face, which decides the pixel format");
    }
    if (!exported) return FailAbout(options.output, feedback, L"Could not write");
    if (!options.quiet) WriteText(OutputStream::Standard, infoLog);
    return kDone;
}

ExitStatus RunInfo(const InfoOptions& options) {
    const std::wstring description = DescribeFile(options.path);
    if (description.empty()) return Fail(L"Could not open " + Quoted(options.path));
    WriteText(OutputStream::Standard, description);
    return kDone;
}

}  // namespace skyvault
