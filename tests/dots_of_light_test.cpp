#include "generators/dots_of_light.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "projection/fast_math.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

using test::GeneratorPanorama;
using test::kFaceEdge;

struct LightsTest : test::GeneratorTest {};

struct PlainLight {
    float x, y, z;
    Color8 colour;
};

std::vector<PlainLight> PlainLights(int count, const Image& palette) {
    SeedRandom();
    std::vector<PlainLight> lights(static_cast<std::size_t>(count));
    for (PlainLight& light : lights) {
        const int x = RandomInt(static_cast<std::int32_t>(palette.width));
        const int y = RandomInt(static_cast<std::int32_t>(palette.height));
        light.colour = palette.GetPixel8(x, y);
    }
    for (PlainLight& light : lights) {
        const float a = RandomFloat(6.2831855f), b = RandomFloat(6.2831855f);
        light.x = Cos(b) * Sin(a);
        light.y = Sin(b);
        light.z = Cos(b) * Cos(a);
    }
    return lights;
}

Color8 PlainGlow(const std::vector<PlainLight>& lights, const Direction& d, float spread) {
    float red = 0, green = 0, blue = 0;
    for (const PlainLight& light : lights) {
        float s = std::max(0.0f, d.x * light.x + d.y * light.y + d.z * light.z);
        if (spread > 0.0f) {
            s = static_cast<float>(1.0 - (1.0 - static_cast<double>(s)) / static_cast<double>(spread));
        }
        s = std::max(0.0f, s);
        red += s * light.colour.red;
        green += s * light.colour.green;
        blue += s * light.colour.blue;
    }
    const auto channel = [](float sum) { return static_cast<std::uint8_t>(std::min(sum, 255.0f)); };
    return Color8(channel(red), channel(green), channel(blue), 255);
}

TEST_F(LightsTest, RowsEqualTheSumOverTheLightsPixelByPixel) {
    const std::wstring path = Palette(37, 23);
    const Image palette = LoadPicture(path);
    ASSERT_TRUE(palette.IsValid());
    struct Row {
        std::int32_t setting, lights;
        float brightness, spread;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Row& row : {Row{30, 30, 0.2f, 0.2f}, Row{7, 7, 0.9999f, 0.9999f}, Row{0, 1, 1.0f, 1.0f},
                           Row{3, 3, 0.0f, 0.0f}, Row{3, 3, -1.0f, 0.0f}, Row{1000, 200, 0.05f, 0.05f},
                           Row{200, 200, 10.0f, 10.0f}, Row{2, 2, 20.0f, 10.0f}, Row{3, 3, 1.3f, 1.3f},
                           Row{9, 9, 0.01f, 0.01f}, Row{9, 9, 1e-9f, 1e-9f}, Row{9, 9, nan, 0.0f}}) {
        GeneratorPanorama t;
        t.settings.antialiasing = true;  // not for this generator
        t.settings.lightsLights = row.setting;
        t.settings.lightsBrightness = row.brightness;
        ASSERT_TRUE(GenerateLights(t.panorama, path));
        ASSERT_EQ(t.panorama.faceSize, kFaceEdge);
        const std::vector<PlainLight> lights = PlainLights(row.lights, palette);
        int wrong = 0;
        test::ForEveryFacePixel(kFaceEdge, [&](int face, int x, int y) {
            const Direction d = FacePixelToDirection(kFaceEdge, static_cast<CubeFace>(face), x, y);
            const Color8 found = t.panorama.faces[static_cast<std::size_t>(face)].GetPixel8(x, y);
            wrong += found == PlainGlow(lights, d, row.spread) ? 0 : 1;
        });
        EXPECT_EQ(wrong, 0) << row.setting << " lights, brightness " << row.brightness;
    }
}

}  // namespace
}  // namespace skyvault
