#include "session/layouts.h"

#include <algorithm>
#include <array>

#include "generators/blobs.h"
#include "generators/dots_of_light.h"
#include "generators/fractal_planet.h"
#include "generators/polyhedra.h"
#include "generators/rectangles.h"
#include "generators/voronoi.h"
#include "platform/path_text.h"
#include "platform/text_case.h"
#include "projection/cube_layouts.h"
#include "projection/dds.h"
#include "projection/equirectangular.h"
#include "projection/heart.h"
#include "projection/interior_square.h"
#include "projection/mirror_ball.h"
#include "projection/single_files.h"
#include "projection/sphere_map.h"
#include "qtvr/qtvr_export.h"
#include "qtvr/qtvr_import.h"
#include "webexport/web_page.h"

namespace skyvault {
namespace {

const std::wstring& FirstOf(const std::vector<std::wstring>& paths) {
    static const std::wstring kNone;
    return paths.empty() ? kNone : paths.front();
}

template <bool (*importPicture)(Panorama&, const std::wstring&)>
bool FromOneFile(Panorama& panorama, const std::vector<std::wstring>& paths) {
    return importPicture(panorama, FirstOf(paths));
}

template <PanoramaFormat format>
bool ImportCubeLayout(Panorama& panorama, const std::vector<std::wstring>& paths) {
    return ImportFaceLayout(panorama, FirstOf(paths), format);
}

template <bool (*exportPicture)(Panorama&, const std::wstring&, std::wstring&)>
bool WithoutCamera(Panorama& panorama, const std::wstring& path, const Camera&, std::wstring& infoLog) {
    return exportPicture(panorama, path, infoLog);
}

template <PanoramaFormat format>
bool ExportStripAs(Panorama& panorama, const std::wstring& path, const Camera&, std::wstring& infoLog) {
    return ExportStrip(panorama, path, format, infoLog);
}

bool GenerateBlobsFrom(Panorama& panorama, const std::vector<std::wstring>& paths) {
    return GenerateBlobs(panorama, FirstOf(paths));
}

template <PanoramaFormat solid>
bool Solid(Panorama& panorama, const std::vector<std::wstring>& paths) {
    return GeneratePolyhedron(panorama, FirstOf(paths), solid);
}

/// Tells the picture and the files that go with it.
bool ExportPage(Panorama& panorama, const std::wstring& path, const Camera&, std::wstring& infoLog) {
    infoLog.clear();
    if (!ExportWebPage(panorama, path)) return false;
    const WebPageFiles files = CompanionFiles(path);
    infoLog = path + L"\n\nThe following files have also been generated:\n" + files.page + L"\n" +
              files.styleSheet + L"\n" + files.script;
    return true;
}

constexpr const wchar_t* kSelectPalette = L"Select palette picture";
constexpr const wchar_t* kSelectTexture = L"Select texture";

constexpr std::array kLayouts = {
    LayoutRow{.format = PanoramaFormat::Equirectangular,
              .name = L"Equirectangular",
              .consoleName = "equirectangular",
              .importCommand = 32868,
              .exportCommand = 32869,
              .viewCommand = 32867,
              .importTitle = L"Select equirectangular",
              .importFrom = FromOneFile<ImportEquirectangular>,
              .exportTo = WithoutCamera<ExportEquirectangular>},
    LayoutRow{.format = PanoramaFormat::DirectXDds,
              .name = L"DirectX DDS",
              .consoleName = "dds",
              .importCommand = 32779,
              .exportCommand = 32786,
              .importTitle = L"Select DirectX DDS",
              .openDialog = FileDialogKind::OpenDds,
              .saveDialog = FileDialogKind::SaveDds,
              .exportPrefix = L"Cubemap_",
              .importFrom = FromOneFile<ImportCubeMapDds>,
              .exportTo = WithoutCamera<ExportCubeMapDDS>},
    LayoutRow{.format = PanoramaFormat::QuickTimeVr,
              .name = L"QuickTime VR",
              .consoleName = "qtvr",
              .importCommand = 32780,
              .exportCommand = 32785,
              .importTitle = L"Select Quicktime VR",
              .openDialog = FileDialogKind::OpenMovie,
              .saveDialog = FileDialogKind::SaveMovie,
              .importFrom = FromOneFile<ImportQuickTimeVr>,
              .exportTo = WithoutCamera<ExportQuickTimeVr>},
    LayoutRow{.format = PanoramaFormat::HorizontalCross,
              .name = L"Horizontal cross",
              .consoleName = "horizontal-cross",
              .importCommand = 32782,
              .exportCommand = 32789,
              .viewCommand = 32775,
              .importTitle = L"Select horizontal cross",
              .importFrom = ImportCubeLayout<PanoramaFormat::HorizontalCross>,
              .exportTo = WithoutCamera<ExportHorizontalCross>},
    LayoutRow{.format = PanoramaFormat::VerticalCross,
              .name = L"Vertical cross",
              .consoleName = "vertical-cross",
              .importCommand = 32783,
              .exportCommand = 32790,
              .viewCommand = 32774,
              .importTitle = L"Select vertical cross",
              .importFrom = ImportCubeLayout<PanoramaFormat::VerticalCross>,
              .exportTo = WithoutCamera<ExportVerticalCross>},
    LayoutRow{.format = PanoramaFormat::Strip,
              .name = L"Strip",
              .consoleName = "strip",
              .importCommand = 32784,
              .exportCommand = 32791,
              .viewCommand = 32776,
              .importTitle = L"Select strip",
              .importFrom = ImportCubeLayout<PanoramaFormat::Strip>,
              .exportTo = ExportStripAs<PanoramaFormat::Strip>},
    LayoutRow{.format = PanoramaFormat::StripXyz,
              .name = L"Strip XYZ",
              .consoleName = "strip-xyz",
              .importCommand = 32813,
              .exportCommand = 32814,
              .viewCommand = 32812,
              .importTitle = L"Select strip XYZ",
              .importFrom = ImportCubeLayout<PanoramaFormat::StripXyz>,
              .exportTo = ExportStripAs<PanoramaFormat::StripXyz>},
    LayoutRow{.format = PanoramaFormat::SingleFiles,
              .name = L"Single files",
              .consoleName = "single-files",
              .importCommand = 32803,
              .exportCommand = 32805,
              .viewCommand = 32802,
              .importFrom = ImportSingleFiles,
              .exportTo = WithoutCamera<ExportSingleFiles>},
    LayoutRow{.format = PanoramaFormat::SphereMap,
              .name = L"Sphere map",
              .consoleName = "sphere-map",
              .importCommand = 32773,
              .exportCommand = 32788,
              .viewCommand = 32778,
              .importTitle = L"Select spheremap",
              .exportPrefix = L"Spheremap_",
              .importFrom = FromOneFile<ImportSphereMap>,
              .exportTo = WithoutCamera<ExportSphereMap>},
    LayoutRow{.format = PanoramaFormat::MirrorBall,
              .name = L"Mirror ball",
              .consoleName = "mirror-ball",
              .importCommand = 32807,
              .exportCommand = 32808,
              .viewCommand = 32806,
              .importTitle = L"Select mirror ball",
              .importFrom = FromOneFile<ImportMirrorBall>,
              .exportTo = WithoutCamera<ExportMirrorBall>},
    LayoutRow{.format = PanoramaFormat::Heart,
              .name = L"Heart",
              .consoleName = "heart",
              .importCommand = 32811,
              .exportCommand = 32810,
              .viewCommand = 32809,
              .importTitle = L"Select heart",
              .importFrom = FromOneFile<ImportHeart>,
              .exportTo = WithoutCamera<ExportHeart>},
    LayoutRow{.format = PanoramaFormat::InteriorStrip,
              .name = L"Interior strip",
              .consoleName = "interior-strip",
              .importCommand = 32920,
              .exportCommand = 32921,
              .viewCommand = 32913,
              .importTitle = L"Select interior strip",
              .importFrom = FromOneFile<ImportInteriorStrip>,
              .exportTo = WithoutCamera<ExportInteriorStrip>},
    LayoutRow{.format = PanoramaFormat::InteriorSquare,
              .name = L"Interior square",
              .consoleName = "interior-square",
              .importCommand = 32914,
              .exportCommand = 32918,
              .viewCommand = 32911,
              .importTitle = L"Select interior square",
              .importFrom = FromOneFile<ImportInteriorSquare>,
              .exportTo = WithoutCamera<ExportInteriorSquare>},
    LayoutRow{.format = PanoramaFormat::Preview,
              .name = L"Preview",
              .consoleName = "preview",
              .exportCommand = 32899,
              .viewCommand = 32859,
              .exportTo = ExportPreview},
    LayoutRow{.format = PanoramaFormat::Html,
              .name = L"HTML",
              .consoleName = "html",
              .exportCommand = 32900,
              .exportTo = ExportPage},

    LayoutRow{.format = PanoramaFormat::Voronoi,
              .name = L"Voronoi",
              .consoleName = "voronoi",
              .importCommand = 32826,
              .importTitle = kSelectPalette,
              .importFrom = FromOneFile<GenerateVoronoi>},
    LayoutRow{.format = PanoramaFormat::FractalPlanet,
              .name = L"Fractal planet",
              .consoleName = "fractal-planet",
              .importCommand = 32828,
              .importTitle = kSelectPalette,
              .importFrom = FromOneFile<GenerateFractalPlanet>},
    LayoutRow{.format = PanoramaFormat::DotsOfLight,
              .name = L"Dots of light",
              .consoleName = "dots-of-light",
              .importCommand = 32829,
              .importTitle = kSelectPalette,
              .importFrom = FromOneFile<GenerateLights>},
    LayoutRow{.format = PanoramaFormat::Blobs,
              .name = L"Blobs",
              .consoleName = "blobs",
              .importCommand = 32831,
              .importTitle = kSelectPalette,
              .importFrom = GenerateBlobsFrom},
    LayoutRow{.format = PanoramaFormat::Rectangles,
              .name = L"Rectangles",
              .consoleName = "rectangles",
              .importCommand = 32844,
              .importTitle = kSelectPalette,
              .importFrom = FromOneFile<GenerateRectangles>},

    LayoutRow{.format = PanoramaFormat::Tetrahedron,
              .name = L"Tetrahedron",
              .consoleName = "tetrahedron",
              .importCommand = 32838,
              .importTitle = kSelectTexture,
              .importFrom = Solid<PanoramaFormat::Tetrahedron>},
    LayoutRow{.format = PanoramaFormat::Hexahedron,
              .name = L"Hexahedron (cube)",
              .consoleName = "hexahedron",
              .importCommand = 32839,
              .importTitle = kSelectTexture,
              .importFrom = Solid<PanoramaFormat::Hexahedron>},
    LayoutRow{.format = PanoramaFormat::Octahedron,
              .name = L"Octahedron",
              .consoleName = "octahedron",
              .importCommand = 32840,
              .importTitle = kSelectTexture,
              .importFrom = Solid<PanoramaFormat::Octahedron>},
    LayoutRow{.format = PanoramaFormat::Dodecahedron,
              .name = L"Dodecahedron",
              .consoleName = "dodecahedron",
              .importCommand = 32841,
              .importTitle = kSelectTexture,
              .importFrom = Solid<PanoramaFormat::Dodecahedron>},
    LayoutRow{.format = PanoramaFormat::Icosahedron,
              .name = L"Icosahedron",
              .consoleName = "icosahedron",
              .importCommand = 32842,
              .importTitle = kSelectTexture,
              .importFrom = Solid<PanoramaFormat::Icosahedron>},
    LayoutRow{.format = PanoramaFormat::Football,
              .name = L"Football",
              .consoleName = "football",
              .importCommand = 32843,
              .importTitle = kSelectTexture,
              .importFrom = Solid<PanoramaFormat::Football>},
};

template <typename Condition>
const LayoutRow* FindRow(Condition condition) {
    const auto row = std::find_if(kLayouts.begin(), kLayouts.end(), condition);
    return row != kLayouts.end() ? &*row : nullptr;
}

/// 0 is no command: rows without one hold it.
const LayoutRow* FindCommand(std::uint16_t LayoutRow::*command, std::uint16_t id) {
    return id == 0 ? nullptr : FindRow([&](const LayoutRow& row) { return row.*command == id; });
}

}  // namespace

std::span<const LayoutRow> Layouts() {
    return kLayouts;
}

const LayoutRow* FindLayout(PanoramaFormat format) {
    return FindRow([&](const LayoutRow& row) { return row.format == format; });
}

const LayoutRow* LayoutOfImportCommand(std::uint16_t id) {
    return FindCommand(&LayoutRow::importCommand, id);
}

const LayoutRow* LayoutOfExportCommand(std::uint16_t id) {
    return FindCommand(&LayoutRow::exportCommand, id);
}

const LayoutRow* LayoutOfViewCommand(std::uint16_t id) {
    return FindCommand(&LayoutRow::viewCommand, id);
}

const LayoutRow* LayoutOfConsoleName(std::string_view name) {
    return FindRow([&](const LayoutRow& row) { return row.consoleName == name; });
}

std::wstring WithExportPrefix(const LayoutRow& layout, const std::wstring& path) {
    if (layout.exportPrefix == nullptr) return path;
    if (LowerCase(path).find(LowerCase(layout.exportPrefix)) != std::wstring::npos) return path;
    std::wstring prefixed = path;
    return prefixed.insert(path.size() - FileNamePart(path).size(), layout.exportPrefix);
}

}  // namespace skyvault
