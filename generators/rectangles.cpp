#include "generators/rectangles.h"

#include "generators/field_kernels.h"
#include "generators/paint_faces.h"
#include "generators/palette.h"
#include "generators/random.h"
#include "platform/mvector.h"
#include "platform/numeric.h"
#include "projection/matrix4.h"

namespace skyvault {

namespace {

constexpr float kDistance = 20.0f;

struct Rectangles {
    RectanglePlanes planes;
    Color8 colours[kMostRectangles];
};

/// A rectangle of random sides and place.
///
///     corner 1 +-----------+ corner 2
///              |           |             as seen from the centre before it is turned, x to the right and
///     corner 0 +-----------+ corner 3    y up
void DrawRectangle(float size, RectanglePlanes& planes, int k) {
    const float a = RandomFloat(0.5f * size, 1.5f * size);
    const float b = RandomFloat(0.5f * size, 1.5f * size);
    const RandomXyz angles = RandomVector(kTwoPi);
    const Matrix4 turn = YawPitchRollMatrix(angles.x, angles.y, angles.z);
    const Direction corners[4] = {Transform({-a, -b, kDistance}, turn), Transform({-a, b, kDistance}, turn),
                                  Transform({a, b, kDistance}, turn), Transform({a, -b, kDistance}, turn)};
    for (int edge = 0; edge < 4; ++edge) {
        // The plane through the centre and an edge. This order of the cross product points inwards.
        const Direction& from = corners[edge];
        const Direction& to = corners[(edge + 1) % 4];
        Direction normal = {to.y * from.z - to.z * from.y, to.z * from.x - to.x * from.z,
                            to.x * from.y - to.y * from.x};
        Normalize(normal);
        planes.x[edge][k] = normal.x;
        planes.y[edge][k] = normal.y;
        planes.z[edge][k] = normal.z;
    }
}

}  // namespace

Outcome GenerateRectangles(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    if (request.Path().empty()) return Failure(Reason::CannotOpen);
    const GeneratorSettings& settings = request.generator;
    SeedRandom();
    const std::int32_t count = ClampInt(settings.blobsForceFields, 1, kMostRectangles);
    const float size = ClampFloat(settings.blobsPower, 5.0f, 50.0f);
    MVector<Rectangles> memory;
    if (!memory.Resize(1, false)) return Failure(Reason::NoMemory);
    Rectangles& rectangles = memory[0];
    rectangles.planes.count = count;
    for (int k = 0; k < count; ++k) DrawRectangle(size, rectangles.planes, k);

    Image picture;
    Outcome palette = ReadPalette(request, picture);
    for (int k = 0; k < count; ++k) {
        rectangles.colours[k] = palette.IsDone() ? RandomPixel(picture) : Color8();
    }

    const Color8 background = EmptyColour(request.settings);
    const auto paint = [&](const FaceRun& run, DirectionBlock& directions, Color8* colours) {
        const FieldKernels& passes = FieldPasses();
        const auto direction = [&](int i) {
            return Direction{directions.x[i], directions.y[i], directions.z[i]};
        };
        std::int32_t seen[kMostRectangles], owners[kBlockSize];
        passes.rectanglesInRun(rectangles.planes, direction(0), direction(run.count - 1), seen);
        for (int i = 0; i < run.count; ++i) owners[i] = -1;
        bool open = true;
        for (int k = 0; k < count && open; ++k) {
            if (seen[k]) open = passes.coverRectangle(directions, run.count, rectangles.planes, k, owners);
        }
        for (int i = 0; i < run.count; ++i) {
            colours[i] = owners[i] < 0 ? background : rectangles.colours[owners[i]];
        }
    };
    const FacePainting painting =
        StartPainting(request, feedback, panorama, L"Generating rectangles...", true);
    PaintFaces(painting, paint);
    return FirstFailure(FinishFaces(painting), std::move(palette));
}

}  // namespace skyvault
