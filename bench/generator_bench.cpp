// Generators: what a painted pixel costs, in seconds per 10^9 painted pixels (nanoseconds each). With
// antialiasing four pixels are painted for each that stays.
#include <benchmark/benchmark.h>

#include "bench/bench_panorama.h"
#include "generators/paint_faces.h"
#include "generators/random.h"
#include "generators/voronoi.h"

namespace {

using namespace skyvault;
using namespace skyvault::bench;

/// Seeds and colours at random.
struct BenchSeeds {
    VoronoiSeeds seeds;

    explicit BenchSeeds(int count) {
        if (!seeds.Resize(count)) std::abort();
        SetRandomState(5);
        for (int k = 0; k < count; ++k) {
            const auto channel = [] { return static_cast<std::uint8_t>(RandomInt(256)); };
            const Color8 colour(channel(), channel(), channel(), 255);
            const RandomXyz place = RandomVector(2.0f);
            seeds.Set(k, place.x, place.y, place.z, colour);
        }
    }
};

/// Opaque faces of size × size pixels.
FacePainting PaintingOf(BenchPanorama& bench, std::uint32_t size, bool doubled = false) {
    return {.panorama = bench.panorama,
            .feedback = bench.feedback,
            .text = L"",
            .format = PixelFormat::Rgb8,
            .size = size,
            .doubled = doubled};
}

void CountPixels(benchmark::State& state, std::uint32_t size) {
    state.counters["time/Gpixel"] = benchmark::Counter(
        6e-9 * size * size, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Six faces of 1024², antialiased: painted at 2048² and halved.
void VoronoiHard(benchmark::State& state) {
    BenchPanorama bench;
    const BenchSeeds made(static_cast<int>(state.range(0)));
    VoronoiLook look;
    look.border = state.range(1) != 0 ? 0.01f : 0.0f;
    const FacePainting painting = PaintingOf(bench, 2048, true);
    Repeat(state, [&] {
        PaintVoronoi(painting, made.seeds, look);
        return FinishFaces(painting);
    });
    CountPixels(state, 2048);
}

/// The painting alone.
void VoronoiHardPainted(benchmark::State& state) {
    BenchPanorama bench;
    const BenchSeeds made(static_cast<int>(state.range(0)));
    const FacePainting painting = PaintingOf(bench, 2048);
    for (auto _ : state) PaintVoronoi(painting, made.seeds, VoronoiLook());
    CountPixels(state, 2048);
}

/// What VoronoiHard is measured against: every pixel asks every seed, in vectors.
void VoronoiEverySeed(benchmark::State& state) {
    BenchPanorama bench;
    const BenchSeeds made(static_cast<int>(state.range(0)));
    const SeedArrays seeds = made.seeds.Arrays();
    const FacePainting painting = PaintingOf(bench, 2048, true);
    Repeat(state, [&] {
        PaintFaces(painting, [&](const FaceRun& run, DirectionBlock& d, Color8* colours) {
            std::uint32_t packed[kBlockSize];
            VoronoiPasses().nearest(d.x, d.y, d.z, run.count, seeds, packed);
            UnpackColours(packed, run.count, colours);
        });
        return FinishFaces(painting);
    });
    CountPixels(state, 2048);
}

/// Arguments: seeds, ten times the power. time/Gpoint: per pixel and seed.
void VoronoiSmooth(benchmark::State& state) {
    constexpr std::uint32_t kSize = 512;
    BenchPanorama bench;
    const BenchSeeds made(static_cast<int>(state.range(0)));
    VoronoiLook look;
    look.smooth = true;
    look.power = static_cast<float>(state.range(1)) / 10.0f;
    const FacePainting painting = PaintingOf(bench, kSize);
    for (auto _ : state) PaintVoronoi(painting, made.seeds, look);
    CountPixels(state, kSize);
    state.counters["time/Gpoint"] =
        benchmark::Counter(6e-9 * kSize * kSize * static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(VoronoiHard)
    ->ArgNames({"points", "border"})
    ->Args({20, 0})
    ->Args({2000, 0})
    ->Args({20, 1})
    ->Args({2000, 1})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(VoronoiHardPainted)
    ->Arg(20)
    ->Arg(2000)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(VoronoiEverySeed)
    ->Arg(20)
    ->Arg(2000)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(VoronoiSmooth)
    ->ArgNames({"points", "power"})
    ->Args({20, 20})
    ->Args({20, 25})
    ->Args({200, 20})
    ->Args({200, 25})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
