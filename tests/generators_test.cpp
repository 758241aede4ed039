// What all generators have in common: the same picture everywhere, with settings of every kind, and how they
// do without their picture. Then what one blob, one dot of light and one rectangle look like, and the
// palettes.
#include <algorithm>
#include <cmath>

#include "generators/blobs.h"
#include "generators/dots_of_light.h"
#include "generators/field_kernels.h"
#include "generators/palette.h"
#include "generators/rectangles.h"
#include "projection/fast_math.h"
#include "projection/matrix4.h"
#include "session/layouts.h"
#include "settings/settings_table.h"
#include "tests/data_table.h"
#include "tests/generator_checks.h"

namespace skyvault::test {
namespace {

std::uint64_t Checksum(const Panorama& panorama) {
    std::uint64_t sum = 14695981039346656037u;
    for (const Image& face : panorama.faces) {
        for (std::size_t i = 0; i < face.ByteCount(); ++i) {
            sum = (sum ^ static_cast<std::uint64_t>(face.pixels[i])) * 1099511628211u;
        }
    }
    return sum;
}

/// "Blue=3 Red=Y" and so on.
void Apply(const std::string& changes, AppState& settings) {
    std::istringstream words(changes);
    for (std::string key, value; std::getline(words, key, '=') && words >> value; words.get())
        EXPECT_TRUE(SetFromText(settings, *FindSetting(FromUtf8(key)), FromUtf8(value))) << key;
}

using GeneratorsTest = GeneratorTest;

TEST_F(GeneratorsTest, TheSameOnEveryPlatformWithAnyThreadsAndKernels) {
    const std::wstring picture = Save(RandomImage(64, 40, PixelFormat::Rgba8, 5));
    for (const auto& [where, name, changes, checksum] :
         TableOf<std::string, std::string, std::uint64_t>("generators")) {
        const LayoutRow& layout = *LayoutOfConsoleName(name);
        for (const bool fast : {false, true}) {
            SCOPED_TRACE(where + (fast ? ", 8 threads" : ", baseline"));
            UseKernels(fast ? KernelSet::Fastest : KernelSet::Baseline);
            SetThreadCount(fast ? 8 : 1);
            GeneratorPanorama t;
            Apply(changes, t.settings);
            t.feedback.BeginProgress();
            ASSERT_EQ(t.Generate(layout.import, picture, layout.format), Reason::Done);
            EXPECT_EQ(Checksum(t.panorama), checksum);
            EXPECT_EQ(t.panorama.faceSize, 256u);
            EXPECT_EQ(t.feedback.progressTexts.at(0).rfind(L"Generating", 0), 0u);
            // Rises from 0 to 1; antialiasing starts anew.
            const std::vector<float>& fractions = t.feedback.fractions;
            EXPECT_LT(fractions[0], 0.01f);
            EXPECT_EQ(std::is_sorted_until(fractions.begin(), fractions.end())[-1], 1.0f);
        }
    }
}

TEST_F(GeneratorsTest, PicturesThatAreMissingAndNotNamed) {
    for (const auto& [where, name, changes, checksum, unread, refusesNoName] :
         TableOf<std::string, std::string, std::uint64_t, std::string, bool>("generators")) {
        if (unread == "-") continue;
        const LayoutRow& layout = *LayoutOfConsoleName(name);
        SCOPED_TRACE(name);
        GeneratorPanorama t, unnamed;
        EXPECT_EQ(t.Generate(layout.import, folder / L"none.png", layout.format), Reason::PictureMissing);
        const Color8 painted = unread == "red" ? Color8(255, 0, 0, 255) : Color8(0, 0, 0, 255);
        const auto is = [](const Color8& colour) { return [=](auto&, auto& c) { return c == colour; }; };
        const int here = CountPixels(t.panorama, is(painted));
        EXPECT_GT(here, 0);
        EXPECT_EQ(here + CountPixels(t.panorama, is(kOpaqueWhite)), 6 * 256 * 256);

        SetRandomState(77);
        EXPECT_EQ(unnamed.Generate(layout.import, L"", layout.format),
                  refusesNoName ? Reason::CannotOpen : Reason::PictureMissing);
        EXPECT_EQ(unnamed.panorama.IsEmpty(), refusesNoName);
        EXPECT_EQ(RandomState() == 77, refusesNoName);
    }
}

float Dot(const Direction& a, const Direction& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

struct FieldGenerators : GeneratorTest {
    const Image palette = RandomImage(37, 23, PixelFormat::Rgb8, 5);
    const std::wstring path = Save(palette.CopyRect());
    GeneratorPanorama t;
};

TEST_F(FieldGenerators, TheNearerABlobTheFurtherIntoThePaletteWithOrWithoutMemoryForTheField) {
    const auto red = [](int x, int) { return Color8(static_cast<std::uint8_t>(x), 0, 0, 255); };
    const std::wstring ramp = Save(Drawn(256, 1, PixelFormat::Rgb8, red));
    t.settings.blobsForceFields = 1;
    for (const std::size_t fieldBytes : {kMostFieldBytes, std::size_t{0}}) {
        ASSERT_TRUE(GenerateBlobs(t.From(ramp), t.feedback, t.panorama, fieldBytes).IsDone());
        SeedRandom();
        const RandomXyz p = RandomVector(2.0f);
        std::vector<std::pair<float, int>> seen;
        CountPixels(t.panorama, [&](const Direction& d, const Color8& colour) {
            const float x = d.x - p.x, y = d.y - p.y, z = d.z - p.z;
            seen.emplace_back(x * x + y * y + z * z, -colour.red);
            return true;
        });
        std::sort(seen.begin(), seen.end());
        EXPECT_TRUE(seen.front().second == -255 && seen.back().second == 0);
        EXPECT_TRUE(std::ranges::is_sorted(seen, {}, [](const auto& pixel) { return pixel.second; }));
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

TEST_F(FieldGenerators, ALightFadesWithTheCosine) {
    for (const float brightness : {0.2f, 1.0f, 1.3f, NAN}) {
        t.settings.antialiasing = true;  // not for this generator
        t.settings.lightsLights = 1;
        t.settings.lightsBrightness = brightness;
        ASSERT_EQ(t.Generate(GenerateLights, path), Reason::Done);
        SeedRandom();
        const Color8 own = RandomPixel(palette);
        const float a = RandomFloat(kTwoPi), b = RandomFloat(kTwoPi);
        const Direction light = {Cos(b) * Sin(a), Sin(b), Cos(b) * Cos(a)};
        const auto isWrong = [&](const Direction& d, const Color8& colour) {
            const double cosine = static_cast<double>(std::max(0.0f, Dot(d, light)));
            const double fades =
                brightness > 0 ? 1.0 - (1.0 - cosine) / static_cast<double>(brightness) : cosine;
            const float share = std::max(0.0f, static_cast<float>(fades));
            const auto channel = [&](int full) {
                return static_cast<std::uint8_t>(share * static_cast<float>(full));
            };
            return colour != Color8(channel(own.red), channel(own.green), channel(own.blue), 255);
        };
        EXPECT_EQ(CountPixels(t.panorama, isWrong), 0) << brightness;
    }
}

TEST_F(FieldGenerators, ARectangleIsAtADistanceOfTwenty) {
    t.settings.transparency = true;
    t.settings.backgroundColour = Color8(3, 2, 1, 255);
    t.settings.blobsForceFields = 1;
    t.settings.blobsPower = 30;
    ASSERT_EQ(t.Generate(GenerateRectangles, path), Reason::Done);
    SeedRandom();
    const float width = RandomFloat(15, 45), height = RandomFloat(15, 45);  // to its sides
    const RandomXyz angles = RandomVector(kTwoPi);
    const Matrix4 turn = YawPitchRollMatrix(angles.x, angles.y, angles.z);
    const Color8 own = RandomPixel(palette);
    const auto isWrong = [&](const Direction& d, const Color8& colour) {
        const float z = Dot(d, Transform({0, 0, 1}, turn)) / 20;
        const float inside = std::min(width * z - std::fabs(Dot(d, Transform({1, 0, 0}, turn))),
                                      height * z - std::fabs(Dot(d, Transform({0, 1, 0}, turn))));
        return std::fabs(inside) > 1e-6f && colour != (inside > 0 ? own : Color8(3, 2, 1, 0));
    };
    EXPECT_EQ(CountPixels(t.panorama, isWrong), 0);
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
}  // namespace skyvault::test
