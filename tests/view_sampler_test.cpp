// The row engine against its definition, one sample at a time.
#include "projection/view_sampler.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/parallel_rows.h"
#include "projection/build_faces.h"
#include "projection/equirectangular.h"
#include "projection/preview.h"
#include "projection/sample_panorama.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TestPanorama;

/// Directions all around; every twelfth is an awkward one: axes, ties, poles, zero, NaN, tiny and huge. That
/// leaves enough others for estimates to be made.
std::vector<Direction> Directions(int count) {
    const float n = std::numeric_limits<float>::quiet_NaN();
    const Direction awkward[] = {
        {0, 0, 1},      {0, 0, -1},       {1, 0, 0},          {-1, 0, 0},         {0, 1, 0},
        {0, -1, 0},     {0, 0, 0},        {n, 0, 1},          {0, n, 1},          {0, 0, n},
        {1, 0, 1},      {1, 1, 0},        {1, 1, 1},          {-1, -1, -1},       {0, -1, 1},
        {-1, 1, 0},     {1, -1, 0},       {0, 1, -1},         {-1, 0, -1},        {0, -1, -1},
        {1e-30f, 0, 1}, {1e-30f, -1, 0},  {-1e-4f, 0, -1},    {1e-4f, 0, -1},     {1e18f, 1, 1},
        {0, -1, 0.2f},  {0.1f, -1, 0.1f}, {0.05f, -1, -0.1f}, {-0.0f, -1, -0.0f}, {1e-18f, 1e-18f, -1e-18f}};
    std::mt19937 random(5);
    std::normal_distribution<float> normal;
    std::vector<Direction> list(static_cast<std::size_t>(count));
    for (Direction& d : list) d = {normal(random), normal(random), normal(random)};
    for (std::size_t i = 0; i < std::size(awkward); ++i) list[12 * i] = awkward[i];
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
    {"flip", [](Modifications& m) { m.flipHorizontal = true; }},
    {"mirrors", [](Modifications& m) { m.mirrorTopToBottom = m.mirrorFrontToBack = true; }},
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
    const std::vector<Direction> directions = Directions(2 * kBlockSize + 77);
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

TEST_P(RowsAndSamples, AgreeForEveryLogoFormat) {
    for (const PixelFormat logo : test::AllFormats()) {
        for (const PixelFormat format : {PixelFormat::Rgb8, PixelFormat::Rgba16, PixelFormat::RgbHalf}) {
            TestPanorama t;
            t.panorama.logoPicture = test::RandomImage(19, 23, logo);
            t.panorama.modifications.logoSize = 0.8f;
            t.SetEquirectangular(test::RandomImage(128, 64, format));
            SCOPED_TRACE(testing::Message() << "logo format " << static_cast<int>(logo));
            ExpectRowsEqualSamples(t, format, true);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(KernelSets, RowsAndSamples, testing::Values(KernelSet::Baseline, KernelSet::Avx2),
                         [](const auto& p) { return p.param == KernelSet::Avx2 ? "Avx2" : "Baseline"; });

/// One picture of each kind, for comparing ways of making them.
std::vector<Image> EveryPicture(TestPanorama& t) {
    std::vector<Image> pictures(3);
    t.settings.magnifyingGlass = true;
    ExportRequest request = t.ForView(PanoramaFormat::Equirectangular, {2400, 1200});
    EXPECT_TRUE(RenderEquirectangular(t.panorama, request, t.feedback, pictures[0]).IsDone());
    request.camera = {0.3f, -0.2f, 0.9f};
    EXPECT_TRUE(RenderPreview(t.panorama, request, t.feedback, pictures[1]).IsDone());
    EXPECT_TRUE(BuildFace(t.panorama, pictures[2], CubeFace::Left, 1100, PixelFormat::Rgba16, {}).IsDone());
    return pictures;
}

TEST(RowEngine, SameBytesForAnyNumberOfThreadsAndInstructionSet) {
    TestPanorama t;
    t.SetEquirectangular(test::RandomImage(4096, 2048, PixelFormat::Rgb8));
    RotatePanorama(t.panorama.modifications, 0.5f, 0.4f, 0.3f);
    SetThreadCount(1);
    const std::vector<Image> expected = EveryPicture(t);
    for (const KernelSet set : {KernelSet::Baseline, KernelSet::Avx2}) {
        if (!UseKernels(set)) continue;
        for (const int threads : {1, 2, 8}) {
            SetThreadCount(threads);
            const std::vector<Image> pictures = EveryPicture(t);
            for (std::size_t i = 0; i < pictures.size(); ++i) {
                EXPECT_TRUE(test::SameBytes(pictures[i], expected[i]))
                    << "picture " << i << ", " << threads << " threads, " << Kernels().name;
            }
        }
    }
    SetThreadCount(0);
    UseKernels(KernelSet::Fastest);
}

}  // namespace
}  // namespace skyvault
