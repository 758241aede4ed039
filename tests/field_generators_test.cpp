// Blobs, dots of light and rectangles against slow rules that take one direction at a time.
#include "generators/field_kernels.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "generators/blobs.h"
#include "generators/dots_of_light.h"
#include "generators/palette.h"
#include "generators/rectangles.h"
#include "projection/fast_math.h"
#include "projection/matrix4.h"
#include "tests/data_table.h"
#include "tests/generator_checks.h"

namespace skyvault {
namespace {

using test::GeneratorPanorama;

float Dot(const Direction& a, const Direction& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

struct FieldGenerators : test::GeneratorTest {
    const Image palette = test::RandomImage(37, 23, PixelFormat::Rgb8, 5);
    const std::wstring path = Save(palette.CopyRect());
};

/// How many points, lights or rectangles are asked for and drawn.
struct Row {
    std::int32_t setting, count;
    float power, second;  ///< second: blobs have a contrast, the others the power that is meant
};

constexpr std::int32_t kFewest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

/// The field between 0 and 1 at a direction.
float PlainField(const std::vector<RandomXyz>& points, float power, float contrast, const Direction& d) {
    float sum = 0.0f;
    for (const RandomXyz& p : points) {
        const float q = (d.x - p.x) * (d.x - p.x) + (d.y - p.y) * (d.y - p.y) + (d.z - p.z) * (d.z - p.z);
        sum += std::max(0.0f, q > 0.0f ? power / q - 1.0f : 1000.0f);
    }
    const float v = std::min(sum / 255.0f, 1.0f), k = 1.0f - std::clamp(contrast, 0.0f, 1.0f);
    return v <= 0.5f - k ? 0.0f : v >= 0.5f + k ? 1.0f : (v - (0.5f - k)) / (2.0f * k);
}

TEST_F(FieldGenerators, BlobsShowThePointsPullAsAPaletteEntry) {
    const auto entryColour = [](int k) {
        return Color8(static_cast<std::uint8_t>(k >> 8), static_cast<std::uint8_t>(k), 9, 255);
    };
    const std::wstring entries =
        Save(test::Drawn(1024, 1, PixelFormat::Rgb8, [&](int x, int) { return entryColour(x); }));
    for (const Row& row : {Row{20, 20, 7.0f, 0.5f}, Row{9, 9, 30.0f, 0.9f}, Row{12, 12, 20.0f, 1.0f},
                           Row{kFewest, 1, 60.0f, -3.0f}, Row{kMost, 200, 1.5f, 0.0f}, Row{2, 2, 1e30f, 0.2f},
                           Row{3, 3, -2.0f, 2.0f}}) {
        GeneratorPanorama t;
        t.settings.blobsForceFields = row.setting;
        t.settings.blobsPower = row.power;
        t.settings.blobsContrast = row.second;
        // Every other row without memory for the field.
        const std::size_t fieldBytes = row.count % 2 == 0 ? kMostFieldBytes : 0;
        ASSERT_TRUE(GenerateBlobs(t.From(entries), t.feedback, t.panorama, fieldBytes).IsDone());
        SeedRandom();
        std::vector<RandomXyz> points;
        for (int i = 0; i < row.count; ++i) points.push_back(RandomVector(2.0f));
        float lowest = 1.0f, highest = 0.0f;
        const auto field = [&](const Direction& d) { return PlainField(points, row.power, row.second, d); };
        test::CountPixels(t.panorama, [&](const Direction& d, auto&) {
            lowest = std::min(lowest, field(d));
            highest = std::max(highest, field(d));
            return true;
        });
        const auto isWrong = [&](const Direction& d, const Color8& colour) {
            const float v = highest > lowest ? (field(d) - lowest) / (highest - lowest) : field(d);
            return colour != entryColour(std::min(static_cast<int>(v * 1023.0f), 1023));
        };
        EXPECT_EQ(test::CountPixels(t.panorama, isWrong), 0)
            << row.setting << " points, power " << row.power << ", contrast " << row.second;
    }
}

TEST(FieldKernels, APointAtThePixelItselfPullsAThousand) {
    for (const KernelSet set : {KernelSet::Baseline, KernelSet::Fastest}) {
        UseKernels(set);
        DirectionBlock directions{};
        directions.y[5] = 1.0f;
        const RandomXyz points[] = {{0, 1, 0}, {0, 0, 1}};
        float sums[kBlockSize];
        FieldPasses().pull(directions, 7, points, 2, 0.5f, sums);
        EXPECT_EQ(sums[5], 1000.0f) << "the other one is too far away";
    }
}

TEST_F(FieldGenerators, LightsAddUp) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Row& row : {Row{30, 30, 0.2f, 0.2f}, Row{0, 1, 1.0f, 1.0f}, Row{kFewest, 1, 1.0f, 1.0f},
                           Row{3, 3, -1.0f, 0.0f}, Row{kMost, 200, 0.05f, 0.05f}, Row{2, 2, 20.0f, 10.0f},
                           Row{3, 3, 1.3f, 1.3f}, Row{9, 9, 1e-9f, 1e-9f}, Row{9, 9, nan, 0.0f}}) {
        GeneratorPanorama t;
        t.settings.antialiasing = true;  // not for this generator
        t.settings.lightsLights = row.setting;
        t.settings.lightsBrightness = row.power;
        ASSERT_EQ(t.Generate(GenerateLights, path), Reason::Done);
        ASSERT_EQ(t.panorama.faceSize, 256u);
        SeedRandom();
        std::vector<Light> lights(static_cast<std::size_t>(row.count));
        for (Light& light : lights) {
            const Color8 colour = RandomPixel(palette);
            light.red = colour.red, light.green = colour.green, light.blue = colour.blue;
        }
        for (Light& light : lights) {
            const float a = RandomFloat(kTwoPi), b = RandomFloat(kTwoPi);
            light.direction = {Cos(b) * Sin(a), Sin(b), Cos(b) * Cos(a)};
        }
        const auto isWrong = [&](const Direction& d, const Color8& colour) {
            float sums[3] = {};
            for (const Light& light : lights) {
                double s = static_cast<double>(std::max(0.0f, Dot(d, light.direction)));
                if (row.second > 0.0f) s = 1.0 - (1.0 - s) / static_cast<double>(row.second);
                const float share = std::max(0.0f, static_cast<float>(s));
                sums[0] += share * light.red;
                sums[1] += share * light.green;
                sums[2] += share * light.blue;
            }
            const auto channel = [](float sum) { return static_cast<std::uint8_t>(std::min(sum, 255.0f)); };
            return colour != Color8(channel(sums[0]), channel(sums[1]), channel(sums[2]), 255);
        };
        EXPECT_EQ(test::CountPixels(t.panorama, isWrong), 0)
            << row.setting << " lights, brightness " << row.power;
    }
}

TEST_F(FieldGenerators, TheFirstRectangleOnTheRayGivesTheColour) {
    /// Its axes, and half its sides at distance 20.
    struct Rectangle {
        Direction across, up, forward;
        float width, height;
        Color8 colour;
    };
    for (const Row& row : {Row{kFewest, 1, 100.0f, 50.0f}, Row{kMost, 200, 5.0f, 5.0f},
                           Row{60, 60, -3.0f, 5.0f}, Row{25, 25, 30.0f, 30.0f}}) {
        GeneratorPanorama t;
        t.settings.transparency = true;
        t.settings.backgroundColour = Color8(3, 2, 1, 255);
        t.settings.blobsForceFields = row.setting;
        t.settings.blobsPower = row.power;
        ASSERT_EQ(t.Generate(GenerateRectangles, path), Reason::Done);
        SeedRandom();
        std::vector<Rectangle> rectangles(static_cast<std::size_t>(row.count));
        for (Rectangle& r : rectangles) {
            r.width = RandomFloat(0.5f * row.second, 1.5f * row.second);
            r.height = RandomFloat(0.5f * row.second, 1.5f * row.second);
            const RandomXyz angles = RandomVector(kTwoPi);
            const Matrix4 turn = YawPitchRollMatrix(angles.x, angles.y, angles.z);
            r.across = Transform({1, 0, 0}, turn);
            r.up = Transform({0, 1, 0}, turn);
            r.forward = Transform({0, 0, 1}, turn);
        }
        for (Rectangle& r : rectangles) r.colour = RandomPixel(palette);
        int unsure = 0;
        const auto isWrong = [&](const Direction& d, const Color8& colour) {
            for (const Rectangle& r : rectangles) {
                const float z = Dot(d, r.forward) / 20, x = Dot(d, r.across), y = Dot(d, r.up);
                const float inside = std::min(r.width * z - std::fabs(x), r.height * z - std::fabs(y));
                if (std::fabs(inside) < 1e-6f && ++unsure) return false;
                if (inside > 0) return colour != r.colour;
            }
            return colour != Color8(3, 2, 1, 0);
        };
        EXPECT_EQ(test::CountPixels(t.panorama, isWrong), 0)
            << row.setting << " rectangles, size " << row.power;
        EXPECT_LT(unsure, 100);
    }
}

TEST(Palette, RunsAlongTheDiagonal) {
    constexpr Color8 kMark{1, 2, 3, 255};
    for (const auto& [where, width, height, toCorner, entry, column, row] :
         TableOf<std::uint32_t, std::uint32_t, bool, std::size_t, int, int>("palette_entries")) {
        const Diagonal rule = toCorner ? Diagonal::ToCorner : Diagonal::EvenShares;
        Image picture(width, height, PixelFormat::Rgb8);
        picture.SetPixel(column, row, kMark);
        std::vector<Color8> colours(1000);
        ASSERT_TRUE(DiagonalPalette(picture, rule, colours));
        EXPECT_EQ(colours[entry], kMark) << where;
        EXPECT_FALSE(DiagonalPalette(Image(), rule, colours));
        EXPECT_EQ(colours[entry], kMark) << "nothing is filled";
    }
}

}  // namespace
}  // namespace skyvault
