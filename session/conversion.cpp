#include "session/conversion.h"

#include "codecs/dds_cube_map.h"
#include "codecs/picture_files.h"
#include "platform/path_text.h"
#include "session/messages.h"
#include "session/sphere_tags.h"

namespace skyvault {
namespace {

/// The layout a file is read as: a DDS file says itself whether it is a cube map, others are taken as asked.
const LayoutRow& CorrectedLayout(const LayoutRow& layout, const std::wstring& path, Feedback& feedback) {
    if (UpperExtension(path) != L"DDS") return layout;
    const bool asCubeMap = layout.format == PanoramaFormat::DirectXDds;
    const DdsKind kind = GetDdsKind(path);
    const std::wstring name = L"\"" + std::wstring(FileNamePart(path));
    if (!asCubeMap && kind == DdsKind::CubeMap) {
        feedback.Information(name + L"\" is a cubemap.\n\nNow switching to cubemap.");
        return *FindLayout(PanoramaFormat::DirectXDds);
    }
    if (asCubeMap && kind == DdsKind::Picture) {
        feedback.Information(name + L"\" is not a cubemap.\n\nNow switching to equirectangular.");
        return *FindLayout(PanoramaFormat::Equirectangular);
    }
    return layout;
}

/// The outcome, about the file unless it names one itself.
Outcome About(const std::wstring& file, Outcome outcome) {
    if (outcome.file.empty()) outcome.file = file;
    return outcome;
}

/// Whether the layout's file is the whole sphere as one equirectangular picture.
bool IsSphere(const LayoutRow& layout) {
    return layout.format == PanoramaFormat::Equirectangular || layout.kind == LayoutKind::Page;
}

}  // namespace

Outcome ImportPanorama(const LayoutRow& layout, const std::vector<std::wstring>& paths,
                       const AppState& settings, Feedback& feedback, Panorama& panorama) {
    ResetModifications(panorama.modifications);
    panorama.path = paths.front();
    const LayoutRow& row = CorrectedLayout(layout, panorama.path, feedback);
    const ImportRequest request{
        .format = row.format, .paths = paths, .settings = settings, .generator = settings};
    // A generator's palette is no photo of the panorama.
    if (row.kind == LayoutKind::Panorama && row.ownExtension == nullptr) {
        panorama.metadata = ReadPhotoMetadata(panorama.path);
    }
    return About(panorama.path, row.import(request, feedback, panorama));
}

std::vector<std::wstring> ImportTroubles(const Panorama& panorama, const LayoutRow& layout,
                                         const std::vector<std::wstring>& paths) {
    std::vector<std::wstring> troubles;
    if (layout.sources > 1) troubles = FaceTroubles(panorama, paths);
    for (std::wstring& line : MetadataTroubles(panorama.path, panorama.metadata.lost)) {
        troubles.push_back(std::move(line));
    }
    std::wstring crop = CropTrouble(panorama.path, ReadSphereTags(panorama.metadata.xmp));
    if (!crop.empty()) troubles.push_back(std::move(crop));
    return troubles;
}

Outcome ExportPanorama(const LayoutRow& layout, const std::wstring& path, const Camera& camera,
                       const ExportSettings& settings, Feedback& feedback, Panorama& panorama) {
    Outcome logo = LoadLogo(panorama, settings);
    if (!logo.IsDone()) return logo;
    SphereTags sphere;
    ExportRequest request{.format = layout.format, .settings = settings, .camera = camera, .path = path};
    if (IsSphere(layout) && panorama.sphereTags) {
        sphere = SphereTagsOfExport(panorama, camera, settings);
        request.sphere = &sphere;
    }
    if (layout.write != nullptr) {
        return About(path, layout.write(panorama, request, feedback, panorama.resultPicture));
    }
    Outcome rendered = layout.render(panorama, request, feedback, panorama.resultPicture);
    if (!rendered.IsDone()) return About(path, std::move(rendered));
    return About(path, SavePicture(panorama.resultPicture, path,
                                   {.bleed = true,
                                    .quality = settings.jpegQuality,
                                    .metadata = &panorama.metadata,
                                    .sphere = request.sphere}));
}

Outcome RenderView(const LayoutRow& layout, const ClientSize& client, const Camera& camera,
                   const ExportSettings& settings, Feedback& feedback, Panorama& panorama) {
    return layout.render(
        panorama,
        {.format = layout.format, .settings = settings, .camera = camera, .path = {}, .client = client},
        feedback, panorama.resultPicture);
}

ConversionResult ConvertPanorama(const Conversion& conversion, const AppState& settings, Feedback& feedback) {
    ConversionResult result;
    Panorama panorama;
    result.outcome = ImportPanorama(*conversion.from, conversion.sources, settings, feedback, panorama);
    if (!result.outcome.IsDone()) return result;
    result.troubles = ImportTroubles(panorama, *conversion.from, conversion.sources);
    if (conversion.stripMetadata) {
        panorama.metadata = {.icc = std::move(panorama.metadata.icc), .exif = {}, .xmp = {}, .lost = {}};
        panorama.sphereTags = false;
    }
    panorama.modifications = conversion.modifications;
    result.outcome =
        ExportPanorama(*conversion.to, conversion.output, conversion.camera, settings, feedback, panorama);
    for (std::wstring& line : MetadataTroubles(panorama.path, result.outcome.lost)) {
        result.troubles.push_back(std::move(line));
    }
    return result;
}

}  // namespace skyvault
