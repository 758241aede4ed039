// Speed as ratios of two times measured in turns: what must not be lost unnoticed. The limits are about twice
// what an idle machine shows, as these tests run on busy ones too; the figures themselves come from
// bench/reach.py.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>

#include "bench/bench_panorama.h"
#include "bench/index_table.h"
#include "generators/voronoi.h"
#include "platform/parallel_rows.h"
#include "projection/build_faces.h"

namespace skyvault {
namespace {

constexpr std::uint32_t kWidth = 4096, kFace = kWidth / 4;

class Speed : public testing::Test {
  protected:
    void SetUp() override {
#ifndef NDEBUG
        GTEST_SKIP() << "only of builds for release";
#endif
        SetThreadCount(1);
        equirect_.SetEquirectangular(kWidth, PixelFormat::Rgb8);
        faces_.SetFaces(kFace, PixelFormat::Rgb8);
    }
    void TearDown() override {
        SetThreadCount(0);
        UseKernels(KernelSet::Fastest);
    }

    /// Expects that `work` takes less than `limit` times as long as `measure`, each at its quickest. On a
    /// busy machine it takes a while until both were left alone for once.
    static void ExpectRatioBelow(double limit, const std::function<void()>& work,
                                 const std::function<void()>& measure, const char* what) {
        double best[2] = {1e9, 1e9};
        double seconds = 0;
        for (int turn = 0; turn < 12 || (best[0] >= limit * best[1] && seconds < 20); ++turn) {
            const auto start = std::chrono::steady_clock::now();
            turn % 2 == 0 ? work() : measure();
            const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
            best[turn % 2] = std::min(best[turn % 2], passed.count());
            seconds += passed.count();
        }
        EXPECT_LT(best[0] / best[1], limit) << what;
    }

    void BuildFaces() {
        for (int f = 0; f < kFaceCount; ++f) {
            Image& face = builtFaces_[f];
            ASSERT_TRUE(
                BuildFace(equirect_.panorama, face, static_cast<CubeFace>(f), kFace, PixelFormat::Rgb8));
        }
    }

    void Render(Panorama& panorama, std::uint32_t width, bool halve) {
        RenderOptions options;
        options.format = PixelFormat::Rgb8;
        options.halve = halve;
        const LayoutGrid grid = bench::EquirectangularGrid(width, width / 2);
        ASSERT_TRUE(RenderLayout(panorama, grid, options, halve ? halved_ : result_));
    }

    bench::BenchPanorama equirect_, faces_;
    Image builtFaces_[kFaceCount], result_, halved_;
};

TEST_F(Speed, ConversionsCostLittleMoreThanFetchingTheirPixels) {
    for (const bool turned : {false, true}) {
        if (turned) equirect_.TurnObliquely(), faces_.TurnObliquely();
        const Modifications& modifications = equirect_.panorama.modifications;
        std::vector<std::byte> fetched(std::size_t{kWidth} * kWidth / 2 * 3);

        const auto toFaces = bench::EquirectangularToFacesTable(kWidth, modifications);
        const Image& source = equirect_.panorama.equirectSource;
        ExpectRatioBelow(
            3.5, [&] { BuildFaces(); }, [&] { bench::FetchByTable(source, toFaces, fetched); },
            turned ? "to faces, turned" : "to faces");

        Image below(kFace, kFaceCount * kFace, PixelFormat::Rgb8);
        const auto fromFaces = bench::EquirectangularTable(kWidth, modifications, true);
        ExpectRatioBelow(
            3.5, [&] { Render(faces_.panorama, kWidth, false); },
            [&] { bench::FetchByTable(below, fromFaces, fetched); },
            turned ? "from faces, turned" : "from faces");
    }
}

TEST_F(Speed, ModificationsAntialiasingAndOldProcessorsCostWhatTheyShould) {
    Panorama& panorama = equirect_.panorama;
    const auto plain = [&] { Render(panorama, kWidth, false); };
    // Four samples for a written pixel.
    ExpectRatioBelow(
        2.0, [&] { Render(panorama, kWidth, true); }, plain, "antialiased, a sample");
    const auto turned = [&] {
        RotatePanorama(panorama.modifications, 0.7f, 0.5f, 0.3f);
        plain();
        ResetModifications(panorama.modifications);
    };
    ExpectRatioBelow(2.4, turned, plain, "turned");
    const auto withLogo = [&] {
        panorama.modifications.logoSize = 0.4f;
        plain();
        ResetModifications(panorama.modifications);
    };
    ExpectRatioBelow(2.4, withLogo, plain, "with a logo");
    if (ChosenKernels() != KernelSet::Avx2) return;
    const auto baseline = [&] {
        UseKernels(KernelSet::Baseline);
        plain();
        UseKernels(KernelSet::Fastest);
    };
    ExpectRatioBelow(3.9, baseline, plain, "SSE4 instead of AVX2");
}

TEST_F(Speed, AHundredTimesAsManySeedsCostLittle) {
    const auto paint = [this](int count) {
        VoronoiSeeds seeds;
        ASSERT_TRUE(seeds.Resize(count));
        std::uint32_t state = 1;
        const auto next = [&state] {
            state = state * 1664525u + 1013904223u;
            return static_cast<float>(state >> 8) / 8388608.0f - 1.0f;
        };
        for (int k = 0; k < count; ++k) {
            const float x = next(), y = next(), z = next();
            seeds.Set(k, x, y, z, Color8(1, 2, 3, 255));
        }
        PaintVoronoi(faces_.panorama, 1024, seeds, {});
    };
    ExpectRatioBelow(
        8.0, [&] { paint(2000); }, [&] { paint(20); }, "2000 seeds");
}

}  // namespace
}  // namespace skyvault
