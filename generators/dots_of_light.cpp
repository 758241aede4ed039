#include "generators/dots_of_light.h"

#include <cmath>
#include <cstring>

#include "generators/field_kernels.h"
#include "generators/paint_faces.h"
#include "generators/palette.h"
#include "generators/random.h"
#include "platform/mvector.h"
#include "platform/numeric.h"
#include "projection/fast_math.h"

namespace skyvault {

namespace {

constexpr int kMostLights = 200;

/// What a spread makes of a cosine; rises with it, rounding included.
float Brightness(float cosine, double spread) {
    return static_cast<float>(1.0 - (1.0 - static_cast<double>(cosine)) / spread);
}

LightSpread SpreadOf(float setting) {
    const float spread = ClampFloat(setting, 0.0f, 10.0f);
    LightSpread result;
    result.plain = !(spread > 0.0f);
    if (result.plain) return result;
    result.spread = static_cast<double>(spread);
    if (Brightness(0.0f, result.spread) > 0.0f) {
        result.darkUpTo = -1.0f;
        return result;
    }
    // Finds the cosine at which the light ends, so that runs without light are passed over quickly.
    result.darkUpTo = 1.0f - spread;
    while (Brightness(result.darkUpTo, result.spread) > 0.0f) {
        result.darkUpTo = std::nextafter(result.darkUpTo, 0.0f);
    }
    return result;
}

}  // namespace

Outcome GenerateLights(const ImportRequest& request, Feedback& feedback, Panorama& panorama) {
    const GeneratorSettings& settings = request.generator;
    SeedRandom();
    const std::int32_t count = ClampInt(settings.lightsLights, 1, kMostLights);
    const LightSpread spread = SpreadOf(settings.lightsBrightness);
    MVector<Light> lights;
    if (!lights.Resize(count, false)) return Failure(Reason::NoMemory);
    for (std::int32_t i = 0; i < count; ++i) lights[i] = Light();

    Image picture;
    Outcome palette = ReadPalette(request, picture);
    if (palette.IsDone()) {
        for (std::int32_t i = 0; i < count; ++i) {
            const Color8 colour = RandomPixel(picture);
            lights[i].red = colour.red;
            lights[i].green = colour.green;
            lights[i].blue = colour.blue;
        }
    }
    for (std::int32_t i = 0; i < count; ++i) {
        const float a = RandomFloat(kTwoPi);
        const float b = RandomFloat(kTwoPi);
        lights[i].direction = {Cos(b) * Sin(a), Sin(b), Cos(b) * Cos(a)};
    }

    const auto paint = [&](const FaceRun& run, DirectionBlock& directions, Color8* colours) {
        const FieldKernels& passes = FieldPasses();
        alignas(64) float red[kBlockSize] = {}, green[kBlockSize] = {}, blue[kBlockSize] = {};
        for (std::int32_t i = 0; i < count; ++i) {
            passes.addLight(directions, run.count, lights[i], spread, red, green, blue);
        }
        std::uint32_t packed[kBlockSize];
        passes.packColours(red, green, blue, run.count, packed);
        std::memcpy(colours, packed, sizeof(Color8) * static_cast<std::size_t>(run.count));
    };
    const FacePainting painting = StartPainting(request, feedback, panorama, L"Generating lights...", false);
    PaintFaces(painting, paint);
    return FirstFailure(FinishFaces(painting), std::move(palette));
}

}  // namespace skyvault
