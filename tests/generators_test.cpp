// What all generators have in common: the same picture everywhere, and how they do without their palette.
#include <functional>
#include <string_view>

#include "generators/blobs.h"
#include "generators/dots_of_light.h"
#include "generators/fractal_planet.h"
#include "generators/polyhedra.h"
#include "generators/rectangles.h"
#include "generators/voronoi.h"
#include "tests/generator_checks.h"

namespace skyvault::test {
namespace {

struct Generator {
    const char* name;
    std::function<bool(Panorama&, const std::wstring&)> generate;
    const wchar_t* progress;
    std::uint64_t checksum;     ///< of a panorama from a palette of noise
    Color8 unread;              ///< what is painted without the palette, but for the white background
    bool refusesNoName = true;  ///< else no name is as a palette that cannot be read
};

template <PanoramaFormat kFormat>
bool GenerateSolid(Panorama& panorama, const std::wstring& path) {
    return GeneratePolyhedron(panorama, path, kFormat);
}

constexpr Color8 kRed{255, 0, 0, 255}, kBlack{0, 0, 0, 255};
const Generator kGenerators[] = {
    {"Voronoi", GenerateVoronoi, L"Generating Voronoi...", 3692908223802424373u, kBlack, false},
    {"blobs", [](Panorama& p, const std::wstring& path) { return GenerateBlobs(p, path); },
     L"Generating blobs...", 3215742172500203986u, kRed},
    {"rectangles", GenerateRectangles, L"Generating rectangles...", 9535161887212828700u, kBlack},
    {"fractal planet", GenerateFractalPlanet, L"Generating fractal planet...", 2172108046866768902u, kRed},
    {"dots of light", GenerateLights, L"Generating lights...", 15318013833425557425u, kBlack, false},
    {"tetrahedron", GenerateSolid<PanoramaFormat::Tetrahedron>, L"Generating", 17962244129328595065u, kRed},
    {"hexahedron", GenerateSolid<PanoramaFormat::Hexahedron>, L"Generating", 17798046328394781056u, kRed},
    {"octahedron", GenerateSolid<PanoramaFormat::Octahedron>, L"Generating", 14320542814335284085u, kRed},
    {"dodecahedron", GenerateSolid<PanoramaFormat::Dodecahedron>, L"Generating", 224556942675632309u, kRed},
    {"icosahedron", GenerateSolid<PanoramaFormat::Icosahedron>, L"Generating", 9024741363846915104u, kRed},
    {"football", GenerateSolid<PanoramaFormat::Football>, L"Generating", 11511269300202790532u, kRed},
};

struct GeneratorsTest : GeneratorTest {};

TEST_F(GeneratorsTest, TheSameOnEveryPlatformWithAnyThreadsAndKernels) {
    GeneratorPanorama t;
    t.settings.polyhedraBorder = 0.1f;
    t.settings.polyhedraTextureScale = 0.4f;
    t.settings.polyhedraFrames = 2;
    const std::wstring palette = Palette(64, 40, PixelFormat::Rgba8);
    for (const Generator& generator : kGenerators) {
        SCOPED_TRACE(generator.name);
        // Of the solids there are many.
        t.settings.antialiasing = std::wstring_view(generator.progress) != L"Generating";
        ExpectTheSameEverywhere(t.settings, generator.checksum, generator.progress,
                                [&](Panorama& p) { return generator.generate(p, palette); });
    }
}

TEST_F(GeneratorsTest, PalettesThatAreMissingAndNotNamed) {
    for (const Generator& generator : kGenerators) {
        SCOPED_TRACE(generator.name);
        GeneratorPanorama t, unnamed;
        EXPECT_TRUE(generator.generate(t.panorama, MissingPalette()));
        EXPECT_TRUE(t.panorama.paletteMissing);
        EXPECT_TRUE(t.feedback.errors.empty());
        const int painted = CountPixels(t.panorama, generator.unread);
        EXPECT_GT(painted, 0);
        EXPECT_EQ(painted + CountPixels(t.panorama, kOpaqueWhite), kAllPixels);

        SetRandomState(77);
        EXPECT_EQ(generator.generate(unnamed.panorama, L""), !generator.refusesNoName);
        EXPECT_EQ(unnamed.panorama.IsEmpty(), generator.refusesNoName);
        if (generator.refusesNoName) {
            EXPECT_EQ(RandomState(), 77u);
        } else {
            EXPECT_EQ(CountPixels(unnamed.panorama, generator.unread), kAllPixels);
        }
    }
}

}  // namespace
}  // namespace skyvault::test
