#include "generators/voronoi.h"

#include "generators/paint_faces.h"
#include "generators/paint_tiles.h"
#include "generators/palette.h"
#include "generators/voronoi_cells.h"
#include "image/numeric.h"
#include "image/random.h"

namespace skyvault {

namespace {

constexpr wchar_t kProgressText[] = L"Generating Voronoi...";

/// A colour, then a place, seed by seed: the order is part of what a seed of the random generator draws.
void DrawSeeds(const Image& palette, int count, VoronoiSeeds& seeds) {
    for (int k = 0; k < count; ++k) {
        const std::int32_t column = RandomInt(static_cast<std::int32_t>(palette.width));
        const std::int32_t row = RandomInt(static_cast<std::int32_t>(palette.height));
        const Color8 colour = palette.GetPixel8(column, row);
        const RandomXyz place = RandomVector(2.0f);
        seeds.Set(k, place.x, place.y, place.z, colour);
    }
}

}  // namespace

bool VoronoiSeeds::Resize(int count) {
    for (MVector<float>* array : {&x_, &y_, &z_, &red_, &green_, &blue_}) {
        if (!array->Resize(count, false)) return false;
    }
    if (!colour_.Resize(count, false)) return false;
    for (int k = 0; k < count; ++k) Set(k, 0.0f, 0.0f, 0.0f, Color8());
    return true;
}

void VoronoiSeeds::Set(int k, float x, float y, float z, const Color8& colour) {
    x_[k] = x;
    y_[k] = y;
    z_[k] = z;
    red_[k] = colour.red;
    green_[k] = colour.green;
    blue_[k] = colour.blue;
    colour_[k] = PackColour(Color8(colour.red, colour.green, colour.blue, 255));
}

SeedArrays VoronoiSeeds::Arrays() const {
    return {x_.Data(), y_.Data(), z_.Data(), colour_.Data(), x_.Count()};
}

SeedColours VoronoiSeeds::Colours() const {
    return {red_.Data(), green_.Data(), blue_.Data()};
}

void PaintVoronoi(Panorama& panorama, std::uint32_t size, const VoronoiSeeds& seeds,
                  const VoronoiLook& look) {
    const SeedArrays arrays = seeds.Arrays();
    const float border = look.border > 0.0f && arrays.count > 1 ? look.border : 0.0f;
    if (look.smooth) {
        // A settings file may hold anything; powers that are no number leave all weights alike.
        const float power = look.power == look.power ? look.power : 0.0f;
        const SeedColours seedColours = seeds.Colours();
        PaintFaces(panorama, size, kProgressText,
                   [&](const FaceRun& run, DirectionBlock& directions, Color8* colours) {
                       std::uint32_t packed[kBlockSize];
                       VoronoiPasses().blend(directions.x, directions.y, directions.z, run.count, arrays,
                                             seedColours, power, border, packed);
                       UnpackColours(packed, run.count, colours);
                   });
    } else {
        PaintFaceTiles(panorama, size, kProgressText, [&](const FaceRect& tile, TileCanvas& canvas) {
            PaintCells(tile, arrays, border, canvas);
        });
    }
}

bool GenerateVoronoi(Panorama& panorama, const std::wstring& palettePicturePath) {
    const AppState& settings = panorama.settings;
    SeedRandom();
    int count = ClampInt(settings.voronoiPoints, 1, kMostSeeds);
    VoronoiLook look;
    look.smooth = settings.voronoiSmooth;
    look.power = ClampFloat(settings.voronoiPower, 0.0f, 100.0f);
    look.border = settings.voronoiBorder;

    const Image palette = ReadPalette(panorama, palettePicturePath);
    // Without a palette all seeds are black and at one place: one stands for all.
    if (!palette.IsValid()) count = 1;
    VoronoiSeeds seeds;
    if (!seeds.Resize(count)) {
        panorama.feedback.Error(L"Out of memory");
        return false;
    }
    if (palette.IsValid()) DrawSeeds(palette, count, seeds);

    PaintVoronoi(panorama, GeneratorFaceSize(panorama, true), seeds, look);
    FinishFaces(panorama, true);
    return true;
}

}  // namespace skyvault
