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
#include "platform/system_text.h"
#include "projection/cube_layouts.h"
#include "projection/dds.h"
#include "projection/disc_layouts.h"
#include "projection/equirectangular.h"
#include "projection/interior_square.h"
#include "projection/labelled_faces.h"
#include "projection/preview.h"
#include "projection/single_files.h"
#include "qtvr/qtvr_export.h"
#include "qtvr/qtvr_import.h"
#include "resources/resource_ids.h"
#include "webexport/web_page.h"

namespace skyvault {
namespace {

constexpr const wchar_t* kSelectPalette = L"Select palette picture";
constexpr const wchar_t* kSelectTexture = L"Select texture";

constexpr std::array kLayouts = {
    LayoutRow{.format = PanoramaFormat::Equirectangular,
              .name = L"Equirectangular",
              .consoleName = "equirectangular",
              .importCommand = IDM_IMPORT_EQUIRECTANGULAR,
              .exportCommand = IDM_EXPORT_EQUIRECTANGULAR,
              .viewCommand = IDM_VIEW_EQUIRECTANGULAR,
              .functionKey = 1,
              .importTitle = L"Select equirectangular",
              .import = ImportEquirectangular,
              .render = RenderEquirectangular},
    LayoutRow{.format = PanoramaFormat::DirectXDds,
              .name = L"DirectX DDS",
              .consoleName = "dds",
              .importCommand = IDM_IMPORT_DDS,
              .exportCommand = IDM_EXPORT_DDS,
              .importTitle = L"Select DirectX DDS",
              .openDialog = FileDialogKind::OpenDds,
              .saveDialog = FileDialogKind::SaveDds,
              .ownExtension = L"dds",
              .exportPrefix = L"Cubemap_",
              .import = ImportCubeMapDds,
              .write = ExportCubeMapDDS},
    LayoutRow{.format = PanoramaFormat::QuickTimeVr,
              .name = L"QuickTime VR",
              .consoleName = "qtvr",
              .importCommand = IDM_IMPORT_QUICKTIME_VR,
              .exportCommand = IDM_EXPORT_QUICKTIME_VR,
              .importTitle = L"Select Quicktime VR",
              .openDialog = FileDialogKind::OpenMovie,
              .saveDialog = FileDialogKind::SaveMovie,
              .ownExtension = L"mov",
              .import = ImportQuickTimeVr,
              .write = ExportQuickTimeVr},
    LayoutRow{.format = PanoramaFormat::HorizontalCross,
              .name = L"Horizontal cross",
              .consoleName = "horizontal-cross",
              .importCommand = IDM_IMPORT_HORIZONTAL_CROSS,
              .exportCommand = IDM_EXPORT_HORIZONTAL_CROSS,
              .viewCommand = IDM_VIEW_HORIZONTAL_CROSS,
              .functionKey = 2,
              .importTitle = L"Select horizontal cross",
              .import = ImportFaceLayout,
              .render = RenderFaceLayout},
    LayoutRow{.format = PanoramaFormat::VerticalCross,
              .name = L"Vertical cross",
              .consoleName = "vertical-cross",
              .importCommand = IDM_IMPORT_VERTICAL_CROSS,
              .exportCommand = IDM_EXPORT_VERTICAL_CROSS,
              .viewCommand = IDM_VIEW_VERTICAL_CROSS,
              .functionKey = 3,
              .importTitle = L"Select vertical cross",
              .import = ImportFaceLayout,
              .render = RenderFaceLayout},
    LayoutRow{.format = PanoramaFormat::Strip,
              .name = L"Strip",
              .consoleName = "strip",
              .importCommand = IDM_IMPORT_STRIP,
              .exportCommand = IDM_EXPORT_STRIP,
              .viewCommand = IDM_VIEW_STRIP,
              .functionKey = 4,
              .importTitle = L"Select strip",
              .import = ImportFaceLayout,
              .render = RenderFaceLayout},
    LayoutRow{.format = PanoramaFormat::StripXyz,
              .name = L"Strip XYZ",
              .consoleName = "strip-xyz",
              .importCommand = IDM_IMPORT_STRIP_XYZ,
              .exportCommand = IDM_EXPORT_STRIP_XYZ,
              .viewCommand = IDM_VIEW_STRIP_XYZ,
              .functionKey = 5,
              .importTitle = L"Select strip XYZ",
              .import = ImportFaceLayout,
              .render = RenderFaceLayout},
    LayoutRow{.format = PanoramaFormat::SingleFiles,
              .name = L"Single files",
              .consoleName = "single-files",
              .importCommand = IDM_IMPORT_SINGLE_FILES,
              .exportCommand = IDM_EXPORT_SINGLE_FILES,
              .viewCommand = IDM_VIEW_SINGLE_FILES,
              .functionKey = 6,
              .sources = kFaceCount,
              .import = ImportSingleFiles,
              .render = RenderLabelledFaces,
              .write = ExportSingleFiles,
              .files = SingleFilePaths},
    LayoutRow{.format = PanoramaFormat::SphereMap,
              .name = L"Sphere map",
              .consoleName = "sphere-map",
              .importCommand = IDM_IMPORT_SPHERE_MAP,
              .exportCommand = IDM_EXPORT_SPHERE_MAP,
              .viewCommand = IDM_VIEW_SPHERE_MAP,
              .functionKey = 7,
              .importTitle = L"Select spheremap",
              .exportPrefix = L"Spheremap_",
              .import = ImportDisc,
              .render = RenderDisc},
    LayoutRow{.format = PanoramaFormat::MirrorBall,
              .name = L"Mirror ball",
              .consoleName = "mirror-ball",
              .importCommand = IDM_IMPORT_MIRROR_BALL,
              .exportCommand = IDM_EXPORT_MIRROR_BALL,
              .viewCommand = IDM_VIEW_MIRROR_BALL,
              .functionKey = 8,
              .importTitle = L"Select mirror ball",
              .import = ImportDisc,
              .render = RenderDisc},
    LayoutRow{.format = PanoramaFormat::Heart,
              .name = L"Heart",
              .consoleName = "heart",
              .importCommand = IDM_IMPORT_HEART,
              .exportCommand = IDM_EXPORT_HEART,
              .viewCommand = IDM_VIEW_HEART,
              .functionKey = 9,
              .importTitle = L"Select heart",
              .import = ImportDisc,
              .render = RenderDisc},
    LayoutRow{.format = PanoramaFormat::InteriorStrip,
              .name = L"Interior strip",
              .consoleName = "interior-strip",
              .importCommand = IDM_IMPORT_INTERIOR_STRIP,
              .exportCommand = IDM_EXPORT_INTERIOR_STRIP,
              .viewCommand = IDM_VIEW_INTERIOR_STRIP,
              .importTitle = L"Select interior strip",
              .import = ImportInteriorStrip,
              .render = RenderFaceLayout},
    LayoutRow{.format = PanoramaFormat::InteriorSquare,
              .name = L"Interior square",
              .consoleName = "interior-square",
              .importCommand = IDM_IMPORT_INTERIOR_SQUARE,
              .exportCommand = IDM_EXPORT_INTERIOR_SQUARE,
              .viewCommand = IDM_VIEW_INTERIOR_SQUARE,
              .importTitle = L"Select interior square",
              .import = ImportInteriorSquare,
              .render = RenderInteriorSquare},
    LayoutRow{.format = PanoramaFormat::Preview,
              .kind = LayoutKind::View,
              .name = L"Preview",
              .consoleName = "preview",
              .exportCommand = IDM_EXPORT_PREVIEW,
              .viewCommand = IDM_VIEW_PREVIEW,
              .functionKey = 11,
              .render = RenderPreview},
    LayoutRow{.format = PanoramaFormat::Html,
              .kind = LayoutKind::Page,
              .name = L"HTML",
              .consoleName = "html",
              .exportCommand = IDM_EXPORT_HTML,
              .write = ExportWebPage,
              .files = WebPagePaths},

    LayoutRow{.format = PanoramaFormat::Voronoi,
              .kind = LayoutKind::Generator,
              .name = L"Voronoi",
              .consoleName = "voronoi",
              .importCommand = IDM_GENERATE_VORONOI,
              .importTitle = kSelectPalette,
              .import = GenerateVoronoi},
    LayoutRow{.format = PanoramaFormat::FractalPlanet,
              .kind = LayoutKind::Generator,
              .name = L"Fractal planet",
              .consoleName = "fractal-planet",
              .importCommand = IDM_GENERATE_FRACTAL_PLANET,
              .importTitle = kSelectPalette,
              .import = GenerateFractalPlanet},
    LayoutRow{.format = PanoramaFormat::DotsOfLight,
              .kind = LayoutKind::Generator,
              .name = L"Dots of light",
              .consoleName = "dots-of-light",
              .importCommand = IDM_GENERATE_DOTS_OF_LIGHT,
              .importTitle = kSelectPalette,
              .import = GenerateLights},
    LayoutRow{.format = PanoramaFormat::Blobs,
              .kind = LayoutKind::Generator,
              .name = L"Blobs",
              .consoleName = "blobs",
              .importCommand = IDM_GENERATE_BLOBS,
              .importTitle = kSelectPalette,
              .import = GenerateBlobs},
    LayoutRow{.format = PanoramaFormat::Rectangles,
              .kind = LayoutKind::Generator,
              .name = L"Rectangles",
              .consoleName = "rectangles",
              .importCommand = IDM_GENERATE_RECTANGLES,
              .importTitle = kSelectPalette,
              .import = GenerateRectangles},
    LayoutRow{.format = PanoramaFormat::Tetrahedron,
              .kind = LayoutKind::Generator,
              .name = L"Tetrahedron",
              .consoleName = "tetrahedron",
              .importCommand = IDM_GENERATE_TETRAHEDRON,
              .importTitle = kSelectTexture,
              .import = GeneratePolyhedron},
    LayoutRow{.format = PanoramaFormat::Hexahedron,
              .kind = LayoutKind::Generator,
              .name = L"Hexahedron (cube)",
              .consoleName = "hexahedron",
              .importCommand = IDM_GENERATE_HEXAHEDRON,
              .importTitle = kSelectTexture,
              .import = GeneratePolyhedron},
    LayoutRow{.format = PanoramaFormat::Octahedron,
              .kind = LayoutKind::Generator,
              .name = L"Octahedron",
              .consoleName = "octahedron",
              .importCommand = IDM_GENERATE_OCTAHEDRON,
              .importTitle = kSelectTexture,
              .import = GeneratePolyhedron},
    LayoutRow{.format = PanoramaFormat::Dodecahedron,
              .kind = LayoutKind::Generator,
              .name = L"Dodecahedron",
              .consoleName = "dodecahedron",
              .importCommand = IDM_GENERATE_DODECAHEDRON,
              .importTitle = kSelectTexture,
              .import = GeneratePolyhedron},
    LayoutRow{.format = PanoramaFormat::Icosahedron,
              .kind = LayoutKind::Generator,
              .name = L"Icosahedron",
              .consoleName = "icosahedron",
              .importCommand = IDM_GENERATE_ICOSAHEDRON,
              .importTitle = kSelectTexture,
              .import = GeneratePolyhedron},
    LayoutRow{.format = PanoramaFormat::Football,
              .kind = LayoutKind::Generator,
              .name = L"Football",
              .consoleName = "football",
              .importCommand = IDM_GENERATE_FOOTBALL,
              .importTitle = kSelectTexture,
              .import = GeneratePolyhedron},
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

const LayoutRow* LayoutOfFunctionKey(int key) {
    return key == 0 ? nullptr : FindRow([&](const LayoutRow& row) { return row.functionKey == key; });
}

const LayoutRow* LayoutOfConsoleName(std::string_view name) {
    return FindRow([&](const LayoutRow& row) { return row.consoleName == name; });
}

std::vector<std::wstring> FilesOfExport(const LayoutRow& layout, const std::wstring& path,
                                        const ExportSettings& settings) {
    return layout.files != nullptr ? layout.files(path, settings) : std::vector{path};
}

std::wstring WithExportPrefix(const LayoutRow& layout, const std::wstring& path) {
    if (layout.exportPrefix == nullptr) return path;
    if (LowerCase(path).find(LowerCase(layout.exportPrefix)) != std::wstring::npos) return path;
    std::wstring prefixed = path;
    return prefixed.insert(path.size() - FileNamePart(path).size(), layout.exportPrefix);
}

}  // namespace skyvault
