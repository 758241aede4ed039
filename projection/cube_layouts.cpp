#include "projection/cube_layouts.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "codecs/picture_files.h"
#include "projection/export_size.h"
#include "projection/face_import.h"
#include "projection/placed_faces.h"

namespace skyvault {

namespace {

/// What decides the size of the imported faces.
enum class SizeRule { WidthOverColumns, Height };

struct CubeLayout {
    PanoramaFormat format;
    std::uint32_t columns, rows;  ///< of cells, each a face's size
    /// Where the faces lie, in cells.
    PlacedFace cells[kFaceCount];
    EdgeSpread spread;  ///< of the exports; files of the two kinds have always differed in it
    SizeRule importSize;
};

constexpr CubeFace kFront = CubeFace::Front, kRight = CubeFace::Right, kBack = CubeFace::Back,
                   kLeft = CubeFace::Left, kTop = CubeFace::Top, kBottom = CubeFace::Bottom;

constexpr CubeLayout kCubeLayouts[] = {
    {PanoramaFormat::HorizontalCross,
     4,
     3,
     {{kFront, 1, 1}, {kRight, 2, 1}, {kBack, 3, 1}, {kLeft, 0, 1}, {kTop, 1, 0}, {kBottom, 1, 2}},
     EdgeSpread::Repeat,
     SizeRule::WidthOverColumns},
    {PanoramaFormat::VerticalCross,
     3,
     4,
     {{kFront, 1, 1},
      {kRight, 2, 1},
      {kBack, 1, 3, FaceTurn::HalfTurn},
      {kLeft, 0, 1},
      {kTop, 1, 0},
      {kBottom, 1, 2}},
     EdgeSpread::Repeat,
     SizeRule::WidthOverColumns},
    {PanoramaFormat::Strip,
     6,
     1,
     {{kFront, 0, 0}, {kRight, 1, 0}, {kBack, 2, 0}, {kLeft, 3, 0}, {kTop, 4, 0}, {kBottom, 5, 0}},
     EdgeSpread::EndToEnd,
     SizeRule::WidthOverColumns},
    {PanoramaFormat::StripXyz,
     6,
     1,
     {{kFront, 4, 0}, {kRight, 0, 0}, {kBack, 5, 0}, {kLeft, 1, 0}, {kTop, 2, 0}, {kBottom, 3, 0}},
     EdgeSpread::EndToEnd,
     SizeRule::WidthOverColumns},
    {PanoramaFormat::InteriorStrip,
     6,
     1,
     {{kFront, 2, 0},
      {kRight, 1, 0},
      {kBack, 0, 0, FaceTurn::MirroredLeftToRight},
      {kLeft, 3, 0},
      {kTop, 4, 0},
      {kBottom, 5, 0}},
     EdgeSpread::EndToEnd,
     SizeRule::Height},
};

const CubeLayout& LayoutOf(PanoramaFormat format) {
    const CubeLayout* const row = std::find_if(std::begin(kCubeLayouts), std::end(kCubeLayouts),
                                               [&](const CubeLayout& l) { return l.format == format; });
    assert(row != std::end(kCubeLayouts));
    return *row;
}

std::uint32_t ImportedFaceSize(const CubeLayout& layout, const Image& picture) {
    return layout.importSize == SizeRule::Height ? picture.height : picture.width / layout.columns;
}

/// Copies the square whose corner is at (left, top) of the picture into the face, and zeros where the
/// picture ends.
void CopySquare(const Image& picture, std::uint64_t left, std::uint64_t top, Image& face) {
    const std::uint64_t pixelBytes = BytesPerPixel(picture.format);
    const std::uint64_t columns =
        left < picture.width ? std::min<std::uint64_t>(face.width, picture.width - left) : 0;
    for (std::uint32_t row = 0; row < face.height; ++row) {
        const std::size_t copied =
            top + row < picture.height ? static_cast<std::size_t>(columns * pixelBytes) : 0;
        std::byte* const target = face.Row(row);
        if (copied > 0) {
            std::memcpy(target,
                        picture.Row(static_cast<std::uint32_t>(top + row)) +
                            static_cast<std::size_t>(left * pixelBytes),
                        copied);
        }
        std::memset(target + copied, 0, face.stride - copied);
    }
}

}  // namespace

Outcome ImportFaceLayout(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    const CubeLayout& layout = LayoutOf(request.format);
    Image picture;
    Outcome loaded = LoadAndTell(request, feedback, picture);
    if (!loaded.IsDone()) return loaded;
    const std::uint32_t size = ImportedFaceSize(layout, picture);
    if (size == 0) return Failure(Reason::CannotOpen);
    for (const PlacedFace& cell : layout.cells) {
        Image& face = panorama.faces[static_cast<std::size_t>(cell.face)];
        face.Clear();
        face = Image(size, size, picture.format);
        if (!face.IsValid()) {
            face.Clear();
            return Failure(Reason::NoMemory);
        }
        CopySquare(picture, std::uint64_t{cell.left} * size, std::uint64_t{cell.top} * size, face);
        if (cell.turn == FaceTurn::HalfTurn) face.Rotate180();
    }
    panorama.faceSize = size;
    return {};
}

Outcome ImportInteriorStrip(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    const CubeLayout& layout = LayoutOf(request.format);
    Image picture;
    Outcome loaded = LoadLayoutPicture(request, feedback, picture);
    if (!loaded.IsDone()) return loaded;
    const std::uint32_t size = ImportedFaceSize(layout, picture);
    return CreateFaces(panorama, size, picture.format, feedback, [&](CubeFace which, Image& face) {
        const PlacedFace& cell = layout.cells[static_cast<std::size_t>(which)];
        const bool mirrored = cell.turn == FaceTurn::MirroredLeftToRight;
        const std::int32_t left = static_cast<std::int32_t>(cell.left * size);
        const std::int32_t start = mirrored ? left + static_cast<std::int32_t>(size) - 1 : left;
        const std::int32_t step = mirrored ? -1 : 1;
        FillFace(face, picture,
                 [=](std::uint32_t row, std::uint32_t first, int count, std::int32_t* columns,
                     std::int32_t* rows) {
                     const std::int32_t column = start + step * static_cast<std::int32_t>(first);
                     for (int i = 0; i < count; ++i) {
                         columns[i] = column + step * i;
                         rows[i] = static_cast<std::int32_t>(row);
                     }
                 });
    });
}

Outcome RenderFaceLayout(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                         Image& result) {
    const CubeLayout& layout = LayoutOf(request.format);
    RenderOptions options;
    Outcome asked = FormatOfExport(panorama, request, options.format);
    if (!asked.IsDone()) return asked;
    std::int32_t edge = ChooseExportSize(request, SizeKind::CubeMap, SourceFaceSize(panorama), feedback);
    if (request.IsView()) {
        edge = std::min(request.client->width / static_cast<std::int32_t>(layout.columns),
                        request.client->height / static_cast<std::int32_t>(layout.rows));
    }
    if (edge < 1) return Failure(Reason::NothingToShow);

    const std::uint32_t size = static_cast<std::uint32_t>(edge);
    PlacedFaces faces;
    if (!faces.Compute(panorama.faceSize, size, layout.spread)) return Failure(Reason::NoMemory);
    for (std::size_t f = 0; f < faces.places.size(); ++f) {
        const PlacedFace& cell = layout.cells[f];
        faces.places[f] = {cell.face, cell.left * size, cell.top * size, cell.turn};
    }
    options.emptyColour = EmptyColour(request.settings);
    return RenderLayout(panorama, faces.Grid(layout.columns * size, layout.rows * size), options, result);
}

}  // namespace skyvault
