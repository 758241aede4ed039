// What all generators have in common: the same picture everywhere, and how they do without their picture.
#include <algorithm>
#include <limits>

#include "session/layouts.h"
#include "tests/generator_checks.h"

namespace skyvault::test {
namespace {

struct Generator {
    PanoramaFormat format;
    std::uint64_t checksum;     ///< FNV-1a over the bytes of the faces made of a picture of noise
    Color8 unread;              ///< what is painted without the picture, but for the white background
    bool refusesNoName = true;  ///< else no name is as a picture that cannot be read
    bool blended = false;       ///< with "VoronoiSmooth"
};

constexpr Color8 kRed{255, 0, 0, 255}, kBlack{0, 0, 0, 255};
const Generator kGenerators[] = {
    {PanoramaFormat::Voronoi, 3692908223802424373u, kBlack, false},
    {PanoramaFormat::Voronoi, 17986461579157190894u, kBlack, false, true},
    {PanoramaFormat::Blobs, 3215742172500203986u, kRed},
    {PanoramaFormat::Rectangles, 9535161887212828700u, kBlack},
    {PanoramaFormat::FractalPlanet, 2172108046866768902u, kRed},
    {PanoramaFormat::DotsOfLight, 15318013833425557425u, kBlack, false},
    {PanoramaFormat::Tetrahedron, 17962244129328595065u, kRed},
    {PanoramaFormat::Hexahedron, 17798046328394781056u, kRed},
    {PanoramaFormat::Octahedron, 14320542814335284085u, kRed},
    {PanoramaFormat::Dodecahedron, 224556942675632309u, kRed},
    {PanoramaFormat::Icosahedron, 9024741363846915104u, kRed},
    {PanoramaFormat::Football, 11511269300202790532u, kRed},
};

std::uint64_t Checksum(const Panorama& panorama) {
    std::uint64_t sum = 14695981039346656037u;
    for (const Image& face : panorama.faces) {
        for (std::size_t i = 0; i < face.ByteCount(); ++i) {
            sum = (sum ^ static_cast<std::uint64_t>(face.pixels[i])) * 1099511628211u;
        }
    }
    return sum;
}

using GeneratorsTest = GeneratorTest;

TEST_F(GeneratorsTest, TheSameOnEveryPlatformWithAnyThreadsAndKernels) {
    const std::wstring picture = Save(RandomImage(64, 40, PixelFormat::Rgba8, 5));
    for (const Generator& generator : kGenerators) {
        const LayoutRow& layout = *FindLayout(generator.format);
        for (const bool fast : {false, true}) {
            SCOPED_TRACE(std::string(layout.consoleName) + (fast ? ", 8 threads" : ", baseline"));
            UseKernels(fast ? KernelSet::Fastest : KernelSet::Baseline);
            SetThreadCount(fast ? 8 : 1);
            GeneratorPanorama t;
            t.settings.voronoiSmooth = generator.blended;
            t.settings.voronoiPower = generator.blended ? 2.7f : 3.0f;
            t.settings.polyhedraBorder = 0.1f;
            t.settings.polyhedraTextureScale = 0.4f;
            t.settings.polyhedraFrames = 2;
            t.settings.antialiasing = generator.format < PanoramaFormat::Tetrahedron;
            t.feedback.BeginProgress();
            ASSERT_EQ(t.Generate(layout.import, picture, generator.format), Reason::Done);
            EXPECT_EQ(Checksum(t.panorama), generator.checksum);
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
    for (const Generator& generator : kGenerators) {
        const LayoutRow& layout = *FindLayout(generator.format);
        SCOPED_TRACE(layout.consoleName);
        GeneratorPanorama t, unnamed;
        EXPECT_EQ(t.Generate(layout.import, folder / L"none.png", generator.format), Reason::PictureMissing);
        const auto pixelsOf = [&](const Color8& colour) {
            return CountPixels(t.panorama, [&](auto&, auto& c) { return c == colour; });
        };
        EXPECT_GT(pixelsOf(generator.unread), 0);
        EXPECT_EQ(pixelsOf(generator.unread) + pixelsOf(kOpaqueWhite), 6 * 256 * 256);

        SetRandomState(77);
        EXPECT_EQ(unnamed.Generate(layout.import, L"", generator.format),
                  generator.refusesNoName ? Reason::CannotOpen : Reason::PictureMissing);
        EXPECT_EQ(unnamed.panorama.IsEmpty(), generator.refusesNoName);
        EXPECT_EQ(RandomState() == 77, generator.refusesNoName);
    }
}

/// What bounds a generator's work: beyond a limit it makes what the limit makes.
TEST_F(GeneratorsTest, CountsBeyondTheirLimitsAreTheLimits) {
    const struct {
        PanoramaFormat format;
        std::int32_t GeneratorSettings::*count;
        std::int32_t most;
    } rows[] = {{PanoramaFormat::Voronoi, &GeneratorSettings::voronoiPoints, 2000},
                {PanoramaFormat::Blobs, &GeneratorSettings::blobsForceFields, 200},
                {PanoramaFormat::Rectangles, &GeneratorSettings::blobsForceFields, 200},
                {PanoramaFormat::DotsOfLight, &GeneratorSettings::lightsLights, 200}};
    const std::wstring picture = Save(RandomImage(64, 40, PixelFormat::Rgba8, 5));
    for (const auto& row : rows) {
        const auto made = [&](std::int32_t count) {
            GeneratorPanorama t;
            t.settings.blobsPower = 1;  // every blob reaches every pixel
            t.settings.*row.count = count;
            EXPECT_EQ(t.Generate(FindLayout(row.format)->import, picture, row.format), Reason::Done);
            return Checksum(t.panorama);
        };
        using Ints = std::numeric_limits<std::int32_t>;
        SCOPED_TRACE(FindLayout(row.format)->consoleName);
        EXPECT_EQ(made(row.most), made(Ints::max()));
        EXPECT_NE(made(row.most), made(row.most / 2));
        EXPECT_EQ(made(1), made(Ints::min()));
    }
}

}  // namespace
}  // namespace skyvault::test
