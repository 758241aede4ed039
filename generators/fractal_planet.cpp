#include "generators/fractal_planet.h"

#include <array>

#include "generators/cube_heights.h"
#include "generators/paint_faces.h"
#include "generators/palette.h"
#include "generators/random.h"
#include "platform/numeric.h"

namespace skyvault {

namespace {

constexpr wchar_t kProgress[] = L"Generating fractal planet...";
constexpr float kHeightsShare = 0.4f;  // of the progress; what it takes of the time

constexpr std::int32_t kColours = 1000;
using Palette = std::array<Color8, kColours>;

Outcome LoadPalette(const ImportRequest& request, Palette& palette) {
    palette.fill(Color8(255, 0, 0, 255));
    Image picture;
    Outcome read = ReadPalette(request, picture);
    if (DiagonalPalette(picture, Diagonal::EvenShares, palette)) {
        for (Color8& colour : palette) colour.alpha = 255;
    }
    return read;
}

/// A setting in 0..1; NaN, which a settings file may hold, counts as 0.
float Setting01(float value) {
    return value > 0.0f ? Clamp01(value) : 0.0f;
}

/// How many standard deviations above or below the mean the palette ends: 3.5, 1.75 or 1.17 for a contrast of
/// 0, ½ or 1.
float PaletteReach(float contrast) {
    return 3.5f / (1.0f + 2.0f * contrast);
}

}  // namespace

Outcome GenerateFractalPlanet(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    if (request.Path().empty()) return Failure(Reason::CannotOpen);
    SeedRandom();
    const std::uint32_t low = static_cast<std::uint32_t>(RandomInt(32766));
    const std::uint32_t seed = low | static_cast<std::uint32_t>(RandomInt(32766)) << 15;
    Palette palette;
    Outcome paletteRead = LoadPalette(request, palette);

    const FacePainting painting = StartPainting(request, feedback, panorama, kProgress, true);
    const std::uint32_t size = painting.size;
    std::uint32_t cells = 1;
    while (cells < size) cells *= 2;
    CubeHeights heights;
    const auto report = [&feedback](float done) { feedback.SetProgress(done * kHeightsShare, kProgress); };
    if (!heights.Build(cells, Setting01(request.generator.fractalRoughness), seed, report)) {
        return Failure(Reason::NoMemory);
    }

    const CubeHeights::Statistics statistics = heights.Measure();
    const float reach = statistics.deviation * PaletteReach(Setting01(request.generator.fractalContrast));
    // A pixel has the mean height of the four points around it: hence the quarter.
    const float perHeight = reach > 0.0f ? 0.125f * kColours / reach : 0.0f;
    const float middle = 0.5f * kColours - 4.0f * statistics.mean * perHeight;
    // Sizes are powers of two, and then pixels and cells are the same; otherwise some cells are left out.
    const std::uint64_t cellsPerPixel = (std::uint64_t{cells} << 32) / size;
    const auto cellOf = [cellsPerPixel](std::uint64_t pixel) {
        return static_cast<std::uint32_t>(pixel * cellsPerPixel >> 32);
    };
    const auto paint = [&](const FaceRun& run, DirectionBlock&, Color8* colours) {
        const std::uint32_t row = cellOf(run.row);
        const float* const above = heights.Row(run.face, row);
        const float* const below = heights.Row(run.face, row + 1);
        for (int i = 0; i < run.count; ++i) {
            const std::uint32_t column = cellOf(run.first + static_cast<std::uint32_t>(i));
            const float sum = (above[column] + above[column + 1]) + (below[column] + below[column + 1]);
            const float entry = ClampFloat(sum * perHeight + middle, 0.0f, kColours - 1.0f);
            colours[i] = palette[static_cast<std::size_t>(entry)];
        }
    };
    PaintFaces(painting, paint, {kHeightsShare, 1.0f});
    return FirstFailure(FinishFaces(painting), std::move(paletteRead));
}

}  // namespace skyvault
