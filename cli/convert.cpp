#include "cli/convert.h"

#include <algorithm>

#include "cli/console_feedback.h"
#include "cli/help.h"
#include "cli/terminal.h"
#include "cli/work_settings.h"
#include "codecs/dds_cube_map.h"
#include "codecs/picture_codec.h"
#include "codecs/picture_files.h"
#include "generators/random.h"
#include "platform/feedback.h"
#include "platform/files.h"
#include "platform/parallel_rows.h"
#include "platform/path_text.h"
#include "projection/single_files.h"
#include "session/conversion.h"
#include "session/messages.h"

namespace skyvault {

namespace {

ExitStatus Fail(const std::wstring& reason) {
    WriteMessage(reason);
    return kFailed;
}

/// Why nothing can be written there, found out before the work; empty when nothing speaks against it.
std::wstring FileObstacle(const std::wstring& path, const ConvertOptions& options) {
    const std::wstring start = L"Could not write " + Quoted(path) + L": ";
    if (FolderExists(path)) return start + L"it is a folder";
    const std::wstring folder(FolderPart(path));
    if (!folder.empty() && !FolderExists(folder)) return start + L"there is no folder " + Quoted(folder);
    const std::wstring extension = UpperExtension(FileNamePart(path));
    const bool dds = extension == L"DDS";
    if (options.to->format == PanoramaFormat::DirectXDds && !dds) return start + L"its extension is not dds";
    const bool picture = options.to->ownExtension == nullptr;
    if (picture && !dds && ContainerOfExtension(extension) == PictureContainer::None) {
        return start + L"its extension is none of bmp dds gif heic jpg png tif";
    }
    return {};
}

/// A picture's description with what a panorama made of it would have; empty when it cannot be read.
std::wstring DescribePicture(const std::wstring& path) {
    Image picture;
    if (!LoadPicture(path, picture).IsDone()) return {};
    const std::wstring faceSize = std::to_wstring(picture.width / 4);
    return PictureInfo(path, picture.width, picture.height, picture.format) + L"Frames\t\t" +
           std::to_wstring(picture.frameCount) + L"\nPanorama\tfaces " + faceSize + L" x " + faceSize + L"\n";
}

std::wstring DescribeCubeMap(const std::wstring& path) {
    CubeFaces faces;
    if (!LoadDdsCubeMap(path, faces, true).IsDone()) return {};
    const auto face =
        std::find_if(faces.begin(), faces.end(), [](const Image& image) { return image.IsValid(); });
    return face != faces.end() ? CubeMapInfo(path, face->width, face->format) : std::wstring();
}

std::wstring DescribeFile(const std::wstring& path) {
    const bool cubeMap = UpperExtension(path) == L"DDS" && GetDdsKind(path) == DdsKind::CubeMap;
    return cubeMap ? DescribeCubeMap(path) : DescribePicture(path);
}

std::wstring OutputObstacle(const ConvertOptions& options, const AppState& settings) {
    if (options.to->sources == 1 || FolderExists(options.output)) {
        return FileObstacle(options.output, options);
    }
    const int system = settings.fileNamingSystem;
    if (NamingSystemOf(settings) != system) {
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

}  // namespace

void TellOfMissingFaces(const ConversionResult& result, const std::vector<std::wstring>& inputs) {
    constexpr const wchar_t* kNames[kFaceCount] = {L"front", L"right", L"back", L"left", L"top", L"bottom"};
    for (const CubeFace face : result.missingFaces) {
        const std::size_t f = static_cast<std::size_t>(face);
        WriteMessage(L"Could not open " + Quoted(inputs[f]) + L"; there is no " + kNames[f] + L" face");
    }
}

ExitStatus RunConvert(const ConvertOptions& options) {
    AppState settings;
    if (!LoadWorkSettings(options, settings)) return Fail(L"Could not open " + Quoted(options.settingsFile));
    const std::wstring obstacle = OutputObstacle(options, settings);
    if (!obstacle.empty()) return Fail(obstacle);
    if (IsGenerator(*options.from) && ReadPictureSize(options.inputs.front()) == PictureSize{}) {
        return Fail(L"Could not open " + Quoted(options.inputs.front()));
    }
    if (options.seed) SetFixedSeed(*options.seed);
    SetThreadCount(options.threads);

    ConsoleFeedback feedback(options.quiet);
    ConversionResult result;
    {
        const ProgressScope progress(feedback);
        const HeadingPitchRoll& camera = options.camera;
        result = ConvertPanorama(
            {options.from, options.inputs, options.to, options.output, ModificationsOf(options),
             Camera{Radians(camera.heading), Radians(camera.pitch), Radians(camera.roll)}},
            settings, feedback);
    }
    TellOfMissingFaces(result, options.inputs);
    if (!result.outcome.IsDone()) return Fail(LineOf(result.outcome));
    if (!options.quiet) {
        const std::wstring& infoLog = result.outcome.infoLog;
        const bool ended = infoLog.empty() || infoLog.back() == L'\n';
        WriteText(OutputStream::Standard, infoLog + (ended ? L"" : L"\n"));
    }
    return kDone;
}

ExitStatus RunInfo(const InfoOptions& options) {
    const std::wstring description = DescribeFile(options.path);
    if (description.empty()) return Fail(L"Could not open " + Quoted(options.path));
    WriteText(OutputStream::Standard, description);
    return kDone;
}

}  // namespace skyvault
