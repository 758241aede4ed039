// The row engine against its definition, one sample at a time.
#include "projection/view_sampler.h"

#include <gtest/gtest.h>

#include <random>

#include "projection/sample_panorama.h"
#include "tests/data_table.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TestPanorama;

/// Directions all around; every twelfth is an awkward one. That leaves enough others for estimates to be
/// made.
std::vector<Direction> MakeDirections(std::size_t count) {
    std::mt19937 random(5);
    std::normal_distribution<float> normal;
    std::vector<Direction> list(count);
    for (Direction& d : list) d = {normal(random), normal(random), normal(random)};
    std::size_t i = 0;
    for (const auto& [where, x, y, z] : TableOf<float, float, float>("awkward_directions")) {
        list.at(12 * i++) = {x, y, z};
    }
    // One direction of the last block meets a logo of 0.4, and just inside its rim.
    for (i = 2 * kBlockSize; i < count; ++i) list[i].y = std::fabs(list[i].y);
    list.back() = {0.36f, -1, 0.01f};
    return list;
}

struct Change {
    const char* name;
    void (*apply)(Modifications&);
};

const Change kChanges[] = {
    {"none", [](Modifications&) {}},
    {"turned", [](Modifications& m) { RotatePanorama(m, 0.7f, -0.4f, 1.1f); }},
    {"horizon up", [](Modifications& m) { ChangeHorizon(m, 0.37f); }},
    {"horizon down", [](Modifications& m) { ChangeHorizon(m, -0.6f); }},
    {"horizon off", [](Modifications& m) { ChangeHorizon(m, -1.5f); }},
    {"logo", [](Modifications& m) { ChangeLogoSize(m, 0.4f); }},
    {"logo picture", [](Modifications& m) { ChangeLogoSize(m, 0.8f); }},
    {"flip", [](Modifications& m) { m.flipHorizontal = true; }},
    {"mirrors", [](Modifications& m) { m.mirrorTopToBottom = m.mirrorFrontToBack = true; }},
    {"mirrored, then curved",
     [](Modifications& m) {
         m.mirrorTopToBottom = true;
         ChangeHorizon(m, 0.37f);
     }},
    {"all",
     [](Modifications& m) {
         m.flipHorizontal = m.mirrorFrontToBack = true;
         ChangeHorizon(m, 0.2f);
         ChangeLogoSize(m, 1.0f);
         RotatePanorama(m, 2.0f, 1.0f, -0.5f);
     }},
};

/// Both ways for one panorama: whatever differs is printed.
void ExpectRowsEqualSamples(TestPanorama& t, PixelFormat format, bool applyOrientation) {
    static const std::vector<Direction> directions = MakeDirections(2 * kBlockSize + 77);
    const ViewSampler sampler(
        t.panorama,
        {.format = format, .emptyColour = EmptyColour(t.settings), .applyOrientation = applyOrientation});
    const std::uint32_t bytes = BytesPerPixel(format);
    for (std::size_t first = 0; first < directions.size(); first += kBlockSize) {
        const int count = static_cast<int>(std::min<std::size_t>(kBlockSize, directions.size() - first));
        ViewSampler::Lookup lookup;
        DirectionBlock& block = lookup.directions;
        for (int i = 0; i < count; ++i) {
            const Direction& d = directions[first + static_cast<std::size_t>(i)];
            block.x[i] = d.x, block.y[i] = d.y, block.z[i] = d.z;
        }
        std::byte row[kBlockSize * 8], expected[8] = {};
        sampler.Find(lookup, count);
        sampler.Fetch(lookup, row);
        for (int i = 0; i < count; ++i) {
            const Direction& d = directions[first + static_cast<std::size_t>(i)];
            WritePixel(format, expected, t.Sample(d, applyOrientation));
            ASSERT_EQ(std::memcmp(expected, row + static_cast<std::size_t>(i) * bytes, bytes), 0)
                << "direction " << d.x << " " << d.y << " " << d.z << ", kernels " << Kernels().name;
        }
    }
}

class RowsAndSamples : public testing::TestWithParam<KernelSet> {
  protected:
    void SetUp() override {
        if (!UseKernels(GetParam())) GTEST_SKIP() << "this processor has no AVX2";
    }
    void TearDown() override { UseKernels(KernelSet::Fastest); }
};

TEST_P(RowsAndSamples, AgreeForEveryFormatSourceAndModification) {
    std::size_t logos = 0;
    enum Source { kEquirect, kFaces, kSomeFaces, kMixedFaces, kOnlyTop };
    for (const PixelFormat format : test::AllFormats()) {
        for (const Source source : {kEquirect, kFaces, kSomeFaces, kMixedFaces, kOnlyTop}) {
            TestPanorama t;
            t.settings.backgroundColour = Color8(200, 100, 50, 255);
            if (source == kEquirect) {
                t.SetEquirectangular(test::RandomImage(127, 61, format));
            } else {
                t.SetFaces(33, format);
                if (source == kSomeFaces) t.panorama.faces[2].Clear(), t.panorama.faces[5].Clear();
                if (source == kMixedFaces)
                    t.panorama.faces[4] = test::RandomImage(33, 33, PixelFormat::Rgba16);
                for (int f = 0; source == kOnlyTop && f < 6; ++f) {
                    if (f != 4) t.panorama.faces[f].Clear();
                }
            }
            for (const Change& change : kChanges) {
                ResetModifications(t.panorama.modifications);
                change.apply(t.panorama.modifications);
                for (const PixelFormat out : {format, PixelFormat::Rgb8, PixelFormat::Rgba8}) {
                    t.panorama.logoPicture.Clear();
                    if (t.panorama.modifications.logoSize == 0.8f) {
                        const PixelFormat logo = test::AllFormats()[++logos % 9];
                        t.panorama.logoPicture = test::RandomImage(19, 23, logo);
                    }
                    SCOPED_TRACE(testing::Message()
                                 << "format " << static_cast<int>(format) << " to " << static_cast<int>(out)
                                 << ", source " << source << ", " << change.name);
                    ExpectRowsEqualSamples(t, out, true);
                    if (testing::Test::HasFatalFailure()) return;
                }
            }
            ExpectRowsEqualSamples(t, format, false);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(KernelSets, RowsAndSamples, testing::Values(KernelSet::Baseline, KernelSet::Avx2),
                         [](const auto& p) { return p.param == KernelSet::Avx2 ? "Avx2" : "Baseline"; });

}  // namespace
}  // namespace skyvault
