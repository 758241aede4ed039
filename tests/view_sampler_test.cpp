// The row engine against its definition, one sample at a time.
#include "projection/view_sampler.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/clock.h"
#include "platform/parallel_rows.h"
#include "projection/build_faces.h"
#include "projection/equirectangular.h"
#include "projection/preview.h"
#include "projection/sample_panorama.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TestPanorama;

/// Directions all around, with the awkward ones first: axes, ties, poles, zero, NaN, tiny and huge.
std::vector<Direction> Directions(int count) {
    const float n = std::numeric_limits<float>::quiet_NaN();
    std::vector<Direction> list = {{0, 0, 1},        {0, 0, -1},
                                   {1, 0, 0},        {-1, 0, 0},
                                   {0, 1, 0},        {0, -1, 0},
                                   {0, 0, 0},        {n, 0, 1},
                                   {0, n, 1},        {0, 0, n},
                                   {1, 0, 1},        {1, 1, 0},
                                   {1, 1, 1},        {-1, -1, -1},
                                   {0, -1, 1},       {-1, 1, 0},
                                   {1, -1, 0},       {0, 1, -1},
                                   {-1, 0, -1},      {0, -1, -1},
                                   {1e-30f, 0, 1},   {1e-30f, -1, 0},
                                   {-1e-4f, 0, -1},  {1e-4f, 0, -1},
                                   {1e18f, 1, 1},    {1e-18f, 1e-18f, -1e-18f},
                                   {0.1f, -1, 0.1f}, {0.05f, -1, -0.1f},
                                   {0, -1, 0.2f},    {-0.0f, -1, -0.0f}};
    std::mt19937 random(5);
    std::normal_distribution<float> normal;
    while (static_cast<int>(list.size()) < count)
        list.push_back({normal(random), normal(random), normal(random)});
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
    {"mirror top", [](Modifications& m) { m.mirrorTopToBottom = true; }},
    {"mirror front", [](Modifications& m) { m.mirrorFrontToBack = true; }},
    {"all",
     [](Modifications& m) {
         m.flipHorizontal = m.mirrorFrontToBack = true;
         ChangeHorizon(m, 0.2f);
         ChangeLogoSize(m, 1.0f);
         RotatePanorama(m, 2.0f, 1.0f, -0.5f);
     }},
};

/// Both ways for one panorama: whatever differs is printed.
void ExpectRowsEqualSamples(TestPanorama& t, PixelFormat format, bool applyOrientation,
                            const std::string& what) {
    const std::vector<Direction> directions = Directions(2 * kBlockSize + 77);
    const ViewSampler sampler(t.panorama, {format, applyOrientation});
    const std::uint32_t bytes = BytesPerPixel(format);
    for (std::size_t first = 0; first < directions.size(); first += kBlockSize) {
        const int count = static_cast<int>(std::min<std::size_t>(kBlockSize, directions.size() - first));
        DirectionBlock block;
        for (int i = 0; i < count; ++i) {
            const Direction& d = directions[first + static_cast<std::size_t>(i)];
            block.x[i] = d.x, block.y[i] = d.y, block.z[i] = d.z;
        }
        std::byte row[kBlockSize * 8], expected[8];
        ViewSampler::Lookup lookup;
        sampler.Find(block, count, lookup);
        sampler.Fetch(lookup, row);
        DoubtfulPixels doubtful(sampler);
        doubtful.Add(lookup, row, nullptr);
        doubtful.Finish();
        for (int i = 0; i < count; ++i) {
            const Direction& d = directions[first + static_cast<std::size_t>(i)];
            std::memset(expected, 0, sizeof expected);
            WritePixel(format, expected, SamplePanorama(t.panorama, d, applyOrientation));
            ASSERT_EQ(std::memcmp(expected, row + static_cast<std::size_t>(i) * bytes, bytes), 0)
                << what << ", direction " << d.x << " " << d.y << " " << d.z << ", kernels "
                << Kernels().name;
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
                if (source == kOnlyTop) {
                    for (std::size_t f : {0u, 1u, 2u, 3u, 5u}) t.panorama.faces[f].Clear();
                }
            }
            for (const Change& change : kChanges) {
                ResetModifications(t.panorama.modifications);
                change.apply(t.panorama.modifications);
                for (const PixelFormat out : {format, PixelFormat::Rgb8, PixelFormat::Rgba8}) {
                    const std::string what = "format " + std::to_string(static_cast<int>(format)) + " to " +
                                             std::to_string(static_cast<int>(out)) + ", source " +
                                             std::to_string(source) + ", " + change.name;
                    ExpectRowsEqualSamples(t, out, true, what);
                    if (testing::Test::HasFatalFailure()) return;
                }
            }
            ExpectRowsEqualSamples(t, format, false, "orientation left out");
        }
    }
}

TEST_P(RowsAndSamples, AgreeForEveryLogoFormat) {
    for (const PixelFormat logo : test::AllFormats()) {
        for (const PixelFormat format : {PixelFormat::Rgb8, PixelFormat::Rgba16, PixelFormat::RgbHalf}) {
            TestPanorama t;
            t.settings.logo = L"held in memory";
            t.panorama.logoPicture = test::RandomImage(19, 23, logo);
            t.panorama.modifications.logoSize = 0.8f;
            t.SetEquirectangular(test::RandomImage(128, 64, format));
            ExpectRowsEqualSamples(t, format, true, "logo format " + std::to_string(static_cast<int>(logo)));
        }
    }
}

TEST(RowEngine, AMissingLogoIsAskedForOncePerPicture) {
    // Of mixed formats, the faces are read pixel by pixel.
    TestPanorama t;
    t.SetFaces(8, PixelFormat::Rgb8);
    t.panorama.faces[0] = test::RandomImage(8, 8, PixelFormat::Rgba16);
    t.panorama.modifications.logoSize = 1.0f;
    t.settings.logo = L"missing-logo.tga";  // each attempt to open it takes a second
    Image face;
    const std::uint32_t start = MillisecondClock();
    ASSERT_TRUE(BuildFace(t.panorama, face, CubeFace::Bottom, 8, PixelFormat::Rgb8));
    EXPECT_LT(MillisecondClock() - start, 5000u);
}

INSTANTIATE_TEST_SUITE_P(KernelSets, RowsAndSamples, testing::Values(KernelSet::Baseline, KernelSet::Avx2),
                         [](const auto& p) { return p.param == KernelSet::Avx2 ? "Avx2" : "Baseline"; });

/// One picture of each kind, for comparing ways of making them.
std::vector<Image> EveryPicture(TestPanorama& t) {
    std::vector<Image> pictures;
    std::wstring log;
    for (const bool glass : {false, true}) {
        t.settings.magnifyingGlass = glass;
        ExportEquirectangular(t.panorama, L"", log);
        pictures.push_back(t.panorama.resultPicture.CopyRect());
    }
    ExportPreview(t.panorama, L"", {0.3f, -0.2f, 0.9f}, log);
    pictures.push_back(t.panorama.resultPicture.CopyRect());
    Image face;
    BuildFace(t.panorama, face, CubeFace::Left, 1100, PixelFormat::Rgba16);
    pictures.push_back(std::move(face));
    return pictures;
}

TEST(RowEngine, SameBytesForAnyNumberOfThreadsAndInstructionSet) {
    TestPanorama t;
    t.target.size = {2400, 1200};
    t.SetEquirectangular(test::RandomImage(4096, 2048, PixelFormat::Rgb8));
    RotatePanorama(t.panorama.modifications, 0.5f, 0.4f, 0.3f);
    ChangeHorizon(t.panorama.modifications, 0.1f);
    SetThreadCount(1);
    const std::vector<Image> expected = EveryPicture(t);
    ASSERT_EQ(expected.size(), 4u);
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

TEST(RowEngine, FewPixelsLandBesideWhereTheCLibrarySays) {
    constexpr int kWidth = 8192, kHeight = 4096, kCount = 400'000;
    std::mt19937 random(11);
    std::normal_distribution<float> normal;
    int beside = 0;
    for (int i = 0; i < kCount; ++i) {
        Direction d{normal(random), normal(random), normal(random)};
        Normalize(d);
        const auto column = [](float longitude) {
            return static_cast<int>(std::lround((longitude + kPi) * kWidth / kTwoPi)) % kWidth;
        };
        const auto row = [](float latitude) {
            return static_cast<int>(
                std::lround(static_cast<float>((kHalfPiWide - latitude) * kHeight / kPiWide)));
        };
        const Spherical ours = ToSpherical(d);
        const float longitude = std::atan2(d.x, d.z);
        const float latitude = std::atan2(d.y, std::sqrt(d.x * d.x + d.z * d.z));
        if (column(ours.longitude) != column(longitude) || row(ours.latitude) != row(latitude)) ++beside;
    }
    EXPECT_LE(beside, kCount / 2000);
}

}  // namespace
}  // namespace skyvault
