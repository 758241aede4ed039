#include "generators/voronoi.h"

#include "generators/paint_faces.h"
#include "generators/paint_tiles.h"
#include "generators/palette.h"
#include "generators/random.h"
#include "generators/voronoi_cells.h"
#include "platform/numeric.h"

namespace skyvault {

namespace {

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

void PaintVoronoi(const FacePainting& painting, const VoronoiSeeds& seeds, const VoronoiLook& look) {
    const SeedArrays arrays = seeds.Arrays();
    const float border = look.border > 0.0f && arrays.count > 1 ? look.border : 0.0f;
    if (look.smooth) {
        // A settings file may hold anything; powers that are no number leave all weights alike.
        const float power = look.power == look.power ? look.power : 0.0f;
        const SeedColours seedColours = seeds.Colours();
        PaintFaces(painting, [&](const FaceRun& run, DirectionBlock& directions, Color8* colours) {
            std::uint32_t packed[kBlockSize];
            VoronoiPasses().blend(directions.x, directions.y, directions.z, run.count, arrays, seedColours,
                                  power, border, packed);
            UnpackColours(packed, run.count, colours);
        });
    } else {
        PaintFaceTiles(painting, [&](const FaceRect& tile, TileCanvas& canvas) {
            PaintCells(tile, arrays, border, canvas);
        });
    }
}

Outcome GenerateVoronoi(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    const GeneratorSettings& settings = request.generator;
    SeedRandom();
    int count = ClampInt(settings.voronoiPoints, 1, kMostSeeds);
    VoronoiLook look;
    look.smooth = settings.voronoiSmooth;
    look.power = ClampFloat(settings.voronoiPower, 0.0f, 100.0f);
    look.border = settings.voronoiBorder;

    Image picture;
    Outcome palette = ReadPalette(request, picture);
    // Without a palette all seeds are black and at one place: one stands for all.
    if (!palette.IsDone()) count = 1;
    VoronoiSeeds seeds;
    if (!seeds.Resize(count)) return Failure(Reason::NoMemory);
    if (palette.IsDone()) DrawSeeds(picture, count, seeds);

    const FacePainting painting = StartPainting(request, feedback, panorama, L"Generating Voronoi...", true);
    PaintVoronoi(painting, seeds, look);
    return FirstFailure(FinishFaces(painting), std::move(palette));
}

}  // namespace skyvault
