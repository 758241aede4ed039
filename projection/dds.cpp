#include "projection/dds.h"

#include <algorithm>

#include "codecs/dds_cube_map.h"
#include "codecs/picture_trouble.h"
#include "projection/build_faces.h"
#include "projection/cube_mips.h"
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

DdsFormat FormatOfEncoding(DdsEncoding encoding) {
    switch (encoding) {
        case DdsEncoding::BySetting:
            break;
        case DdsEncoding::Bc1:
            return DdsFormat::Bc1;
        case DdsEncoding::Bc3:
            return DdsFormat::Bc3;
        case DdsEncoding::Bc7:
            return DdsFormat::Bc7;
        case DdsEncoding::Bc6h:
            return DdsFormat::Bc6h;
        case DdsEncoding::Rgba8:
            return DdsFormat::Rgba8Unorm;
        case DdsEncoding::Rgba16:
            return DdsFormat::Rgba16Unorm;
        case DdsEncoding::Half:
            return DdsFormat::Rgba16Float;
    }
    return DdsFormat::Unknown;
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
    const ExportSettings& settings = request.settings;
    CubeMips mips;
    const auto build = [&](std::uint32_t level, std::size_t f, Image& face) {
        const auto which = static_cast<CubeFace>(f);
        if (level > 0) {
            face = mips.Take(which, level);
            return Outcome{};
        }
        Outcome built =
            BuildFace(panorama, face, which, static_cast<std::uint32_t>(size), format, emptyColour);
        if (built.IsDone() && settings.ddsMips && !mips.Add(which, face, settings.transparency))
            return Failure(Reason::NoMemory);
        return built;
    };
    return SaveDdsCubeMap(request.path, build,
                          {.keepAlpha = settings.transparency,
                           .compress = settings.compressDds,
                           .encoding = FormatOfEncoding(settings.ddsEncoding),
                           .mips = settings.ddsMips});
}

}  // namespace skyvault
