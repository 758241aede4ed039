// The blobs, dots of light and rectangles: their inner loops, and whole panoramas. Seconds per 10^9 steps,
// that is nanoseconds each: time/Gstep per pixel and point (light, rectangle), time/Gpixel per painted pixel.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench/bench_panorama.h"
#include "generators/blobs.h"
#include "generators/dots_of_light.h"
#include "generators/field_kernels.h"
#include "generators/random.h"
#include "generators/rectangles.h"
#include "platform/parallel_rows.h"
#include "projection/face_rows.h"

namespace {

using namespace skyvault;

void Count(benchmark::State& state, const char* name, double steps) {
    state.counters[name] = benchmark::Counter(
        1e-9 * steps, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

bool ChooseKernels(benchmark::State& state) {
    state.SetLabel(state.range(0) ? "avx2" : "baseline");
    if (UseKernels(state.range(0) ? KernelSet::Avx2 : KernelSet::Baseline)) return true;
    state.SkipWithError("this processor has no AVX2");
    return false;
}

/// The middle of the Front face of 1024 × 1024.
DirectionBlock MiddleRun() {
    DirectionBlock block;
    float across[kBlockSize];
    const EdgeScale scale(1024);
    for (int i = 0; i < kBlockSize; ++i) across[i] = scale(384 + i);
    FaceRowDirections(CubeFace::Front, across, scale(500), kBlockSize, block.x, block.y, block.z);
    return block;
}

void Pull(benchmark::State& state) {
    if (!ChooseKernels(state)) return;
    const DirectionBlock block = MiddleRun();
    std::vector<RandomXyz> points(20);
    for (RandomXyz& point : points) point = RandomVector(2.0f);
    float sums[kBlockSize];
    for (auto _ : state) {
        FieldPasses().pull(block, kBlockSize, points.data(), 20, 7.0f, sums);
        benchmark::ClobberMemory();
    }
    Count(state, "time/Gstep", 20.0 * kBlockSize);
    UseKernels(KernelSet::Fastest);
}

void AddLight(benchmark::State& state) {
    if (!ChooseKernels(state)) return;
    const DirectionBlock block = MiddleRun();
    const Light light{{0, 0, 1}, 200, 100, 50};
    const LightSpread spread{2.0, -1.0f, false};
    float red[kBlockSize] = {}, green[kBlockSize] = {}, blue[kBlockSize] = {};
    for (auto _ : state) {
        FieldPasses().addLight(block, kBlockSize, light, spread, red, green, blue);
        benchmark::ClobberMemory();
    }
    Count(state, "time/Gstep", kBlockSize);
    UseKernels(KernelSet::Fastest);
}

/// Faces of 1024 × 1024 pixels, settings: how many points, lights or rectangles.
using Generator = Outcome (*)(const ImportRequest&, Feedback&, Panorama&);
void Generate(benchmark::State& state, Generator generate, std::int32_t AppState::*count) {
    if (!ChooseKernels(state)) return;
    SetThreadCount(static_cast<int>(state.range(1)));
    SetFixedSeed(1);
    bench::BenchPanorama p;
    p.settings.resolution0 = 2;
    p.settings.antialiasing = false;
    p.settings.*count = static_cast<std::int32_t>(state.range(2));
    const ImportRequest request = p.From(L"no such picture.png");
    // Without its picture a generator paints whole faces all the same.
    if (generate(request, p.feedback, p.panorama).reason != Reason::PictureMissing) {
        state.SkipWithError("it failed");
    }
    for (auto _ : state) benchmark::DoNotOptimize(generate(request, p.feedback, p.panorama));
    Count(state, "time/Gpixel", 6.0 * 1024 * 1024);
    ClearFixedSeed();
    SetThreadCount(0);
    UseKernels(KernelSet::Fastest);
}
void Blobs(benchmark::State& state) {
    Generate(state, GenerateBlobs, &AppState::blobsForceFields);
}
void BlobsWithoutMemory(benchmark::State& state) {
    Generate(
        state, [](const ImportRequest& r, Feedback& f, Panorama& p) { return GenerateBlobs(r, f, p, 0); },
        &AppState::blobsForceFields);
}
void Lights(benchmark::State& state) {
    Generate(state, GenerateLights, &AppState::lightsLights);
}
void Rectangles(benchmark::State& state) {
    Generate(state, GenerateRectangles, &AppState::blobsForceFields);
}

// instruction set; threads; count
BENCHMARK(Pull)->Arg(0)->Arg(1);
BENCHMARK(AddLight)->Arg(0)->Arg(1);
BENCHMARK(Blobs)
    ->Args({0, 1, 20})
    ->Args({1, 1, 20})
    ->Args({1, 2, 20})
    ->Args({1, 1, 200})
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(BlobsWithoutMemory)->Args({1, 1, 20})->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(Lights)
    ->Args({0, 1, 30})
    ->Args({1, 1, 30})
    ->Args({1, 2, 30})
    ->Args({1, 1, 200})
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(Rectangles)
    ->Args({0, 1, 20})
    ->Args({1, 1, 20})
    ->Args({1, 2, 20})
    ->Args({1, 1, 200})
    ->MeasureProcessCPUTime()
    ->UseRealTime();

}  // namespace
