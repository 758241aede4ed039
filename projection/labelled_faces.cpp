#include "projection/labelled_faces.h"

#include <algorithm>
#include <string>

#include "projection/pixel_text.h"
#include "projection/placed_faces.h"
#include "projection/single_files.h"

namespace skyvault {

namespace {

constexpr const wchar_t* kFaceNames[kFaceCount] = {L"Front", L"Right", L"Back", L"Left", L"Top", L"Bottom"};

/// The longest label: "Bottom", a gap of two letters, "*_bottom".
constexpr std::int32_t kLongestLabel = 16;

/// Dots between a face and its label.
constexpr std::int32_t kSpaceAbove = 2;

/// Where everything goes, in pixels.
struct Arrangement {
    std::int32_t columns = 0, rows = 0;
    std::int32_t edge = 0;    ///< of a face; < 1 when nothing fits
    std::int32_t gap = 0;     ///< between the faces and around them
    std::int32_t label = 0;   ///< height of the label under a face
    std::int32_t letter = 0;  ///< edge of a dot of the letters; 0: no labels
    std::int32_t left = 0, top = 0;

    std::int32_t CellLeft(std::int32_t index) const { return left + index % columns * (edge + gap); }
    std::int32_t CellTop(std::int32_t index) const { return top + index / columns * (edge + label + gap); }
};

/// The arrangement with the largest faces for letters of that size.
Arrangement Arrange(const ClientSize& client, std::int32_t letter) {
    Arrangement best;
    const std::int32_t gap = std::min(client.width, client.height) / 40;
    const std::int32_t label = letter > 0 ? letter * (kPixelLetterHeight + kSpaceAbove) : 0;
    for (const std::int32_t columns : {3, 2, 6, 1}) {
        const std::int32_t rows = kFaceCount / columns;
        const std::int32_t across = (client.width - (columns + 1) * gap) / columns;
        const std::int32_t down = (client.height - (rows + 1) * gap) / rows - label;
        const std::int32_t edge = std::min(across, down);
        if (edge <= best.edge) continue;
        const std::int32_t width = columns * (edge + gap) - gap;
        const std::int32_t height = rows * (edge + label + gap) - gap;
        best = {columns,
                rows,
                edge,
                gap,
                label,
                letter,
                (client.width - width) / 2,
                (client.height - height) / 2};
    }
    return best;
}

Arrangement Arrange(const ClientSize& client) {
    constexpr std::int32_t kEdgePerLetter = 120, kSmallestLabelled = 6 * kPixelLetterWidth;
    const Arrangement bare = Arrange(client, 0);
    for (std::int32_t letter = std::max(bare.edge / kEdgePerLetter, 1); letter > 0; --letter) {
        const Arrangement labelled = Arrange(client, letter);
        const std::int32_t needed = letter > 1 ? letter * kEdgePerLetter : kSmallestLabelled;
        if (labelled.edge >= needed) return labelled;
    }
    return bare;
}

/// Black or white, whichever stands out.
Color8 TextColour(const Color8& background) {
    const int brightness = 299 * background.red + 587 * background.green + 114 * background.blue;
    return brightness >= 128'000 ? Color8(0, 0, 0, 255) : Color8(255, 255, 255, 255);
}

/// "*_front", "f_*", "*0": the file's name with a star for what the user will choose.
std::wstring FilePattern(int namingSystem, int face) {
    const std::wstring affix = FaceAffix(namingSystem, face);
    if (affix.empty()) return {};
    return affix.back() == L'_' ? affix + L"*" : L"*" + affix;
}

void DrawLabels(const Arrangement& plan, const ExportSettings& settings, Image& picture) {
    const Color8 colour = TextColour(settings.backgroundColour);
    const bool roomForPattern = plan.edge >= kLongestLabel * kPixelLetterWidth * plan.letter;
    for (std::int32_t f = 0; f < kFaceCount; ++f) {
        const std::int32_t y = plan.CellTop(f) + plan.edge + plan.letter * kSpaceAbove;
        DrawPixelText(picture, plan.CellLeft(f), y, plan.letter, kFaceNames[f], colour);
        if (!roomForPattern) continue;
        const std::wstring pattern = FilePattern(settings.fileNamingSystem, f);
        const std::int32_t width = PixelTextWidth(pattern, plan.letter);
        DrawPixelText(picture, plan.CellLeft(f) + plan.edge - width, y, plan.letter, pattern, colour);
    }
}

}  // namespace

Outcome RenderLabelledFaces(const Panorama& panorama, const ExportRequest& request, Feedback&,
                            Image& result) {
    RenderOptions options;
    Outcome asked = FormatOfExport(panorama, request, options.format);
    if (!asked.IsDone()) return asked;
    if (!request.IsView()) return Failure(Reason::NothingToShow);
    const ClientSize client = *request.client;
    const Arrangement plan = Arrange(client);
    if (plan.edge < 1) return Failure(Reason::NothingToShow);

    PlacedFaces faces;
    if (!faces.Compute(panorama.faceSize, static_cast<std::uint32_t>(plan.edge), EdgeSpread::Repeat)) {
        return Failure(Reason::NoMemory);
    }
    for (std::int32_t f = 0; f < kFaceCount; ++f) {
        faces.places[static_cast<std::size_t>(f)] = {static_cast<CubeFace>(f),
                                                     static_cast<std::uint32_t>(plan.CellLeft(f)),
                                                     static_cast<std::uint32_t>(plan.CellTop(f))};
    }
    options.emptyColour = EmptyColour(request.settings);
    const LayoutGrid grid =
        faces.Grid(static_cast<std::uint32_t>(client.width), static_cast<std::uint32_t>(client.height));
    Outcome rendered = RenderLayout(panorama, grid, options, result);
    if (rendered.IsDone() && plan.letter > 0) DrawLabels(plan, request.settings, result);
    return rendered;
}

}  // namespace skyvault
