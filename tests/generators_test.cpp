// What all generators have in common: the same picture everywhere, and how they do without their picture.
#include <algorithm>

#include "session/layouts.h"
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

using GeneratorsTest = GeneratorTest;

TEST_F(GeneratorsTest, TheSameOnEveryPlatformWithAnyThreadsAndKernels) {
    const std::wstring picture = Save(RandomImage(64, 40, PixelFormat::Rgba8, 5));
    for (const auto& [where, name, blended, checksum] :
         TableOf<std::string, bool, std::uint64_t>("generators")) {
        const LayoutRow& layout = *LayoutOfConsoleName(name);
        for (const bool fast : {false, true}) {
            SCOPED_TRACE(name + (fast ? ", 8 threads" : ", baseline"));
            UseKernels(fast ? KernelSet::Fastest : KernelSet::Baseline);
            SetThreadCount(fast ? 8 : 1);
            GeneratorPanorama t;
            t.settings.voronoiSmooth = blended;
            t.settings.voronoiPower = blended ? 2.7f : 3.0f;
            t.settings.polyhedraBorder = 0.1f;
            t.settings.polyhedraTextureScale = 0.4f;
            t.settings.polyhedraFrames = 2;
            t.settings.antialiasing = layout.format < PanoramaFormat::Tetrahedron;
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
    for (const auto& [where, name, blended, checksum, unread, refusesNoName] :
         TableOf<std::string, bool, std::uint64_t, std::string, bool>("generators")) {
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

}  // namespace
}  // namespace skyvault::test
