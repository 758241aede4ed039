#include "generators/dots_of_light.h"

#include <cmath>
#include <cstring>

#include "generators/field_kernels.h"
#include "generators/paint_faces.h"
#include "generators/palette.h"
#include "image/mvector.h"
#include "image/numeric.h"
#include "image/random.h"
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

bool GenerateLights(Panorama& panorama, const std::wstring& palettePicturePath) {
    const AppState& settings = panorama.settings;
    SeedRandom();
    const std::int32_t count = ClampInt(settings.lightsLights, 1, kMostLights);
    const LightSpread spread = SpreadOf(settings.lightsBrightness);
    MVector<Light> lights;
    if (!lights.Resize(count, false)) {
        panorama.feedback.Error(L"Out of memory");
        return false;
    }
    for (std::int32_t i = 0; i < count; ++i) lights[i] = Light();

    const Image palette = ReadPalette(panorama, palettePicturePath);
    if (palette.IsValid()) {
        for (std::int32_t i = 0; i < count; ++i) {
            const Color8 colour = RandomPixel(palette);
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
    PaintFaces(panorama, GeneratorFaceSize(panorama, false), L"Generating lights...", paint);
    return true;
}

}  // namespace skyvault
