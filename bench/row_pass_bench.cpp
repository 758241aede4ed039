// What each pass of the row engine costs, in seconds per 10^9 directions (nanoseconds each).
#include <benchmark/benchmark.h>

#include <random>

#include "projection/modifications.h"
#include "projection/row_kernels.h"

namespace {

using namespace skyvault;

constexpr EquirectGrid kEquirect{8192, 4096, 8192 * 3, 3};
constexpr CubeGrid kCube{2048, 2048 * 3, 3};

DirectionBlock RandomBlock() {
    std::mt19937 random(3);
    std::normal_distribution<float> normal;
    DirectionBlock block;
    for (int i = 0; i < kBlockSize; ++i) {
        block.x[i] = normal(random);
        block.y[i] = normal(random);
        block.z[i] = normal(random);
    }
    Kernels().normalize(block.x, block.y, block.z, kBlockSize);
    return block;
}

template <typename Pass>
void RunPass(benchmark::State& state, Pass pass) {
    if (!UseKernels(state.range(0) ? KernelSet::Avx2 : KernelSet::Baseline)) {
        state.SkipWithError("this processor has no AVX2");
        return;
    }
    DirectionBlock block = RandomBlock();
    for (auto _ : state) {
        pass(Kernels(), block);
        benchmark::ClobberMemory();
    }
    UseKernels(KernelSet::Fastest);
    state.SetLabel(state.range(0) ? "avx2" : "baseline");
    state.counters["time/Gdirection"] = benchmark::Counter(
        1e-9 * kBlockSize, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Normalize(benchmark::State& state) {
    RunPass(state, [](const RowKernels& k, DirectionBlock& b) { k.normalize(b.x, b.y, b.z, kBlockSize); });
}
void Transform(benchmark::State& state) {
    const Matrix4 turn = YawPitchRollMatrix(0.7f, 0.5f, 0.3f);
    RunPass(state,
            [&](const RowKernels& k, DirectionBlock& b) { k.transform(b.x, b.y, b.z, kBlockSize, turn); });
}
void HorizonCurve(benchmark::State& state) {
    RunPass(state, [](const RowKernels& k, DirectionBlock& b) { k.horizonCurve(b.y, kBlockSize, 1.0001f); });
}
void EquirectOffsets(benchmark::State& state) {
    std::uint64_t offsets[kBlockSize];
    RunPass(state, [&](const RowKernels& k, DirectionBlock& b) {
        benchmark::DoNotOptimize(k.equirectOffsets(b.x, b.y, b.z, kBlockSize, kEquirect, offsets));
    });
}
void CubeOffsets(benchmark::State& state) {
    std::uint64_t offsets[kBlockSize];
    std::int32_t faces[kBlockSize];
    RunPass(state, [&](const RowKernels& k, DirectionBlock& b) {
        benchmark::DoNotOptimize(k.cubeOffsets(b.x, b.y, b.z, kBlockSize, kCube, faces, offsets));
    });
}

BENCHMARK(Normalize)->Arg(0)->Arg(1);
BENCHMARK(Transform)->Arg(0)->Arg(1);
BENCHMARK(HorizonCurve)->Arg(0)->Arg(1);
BENCHMARK(EquirectOffsets)->Arg(0)->Arg(1);
BENCHMARK(CubeOffsets)->Arg(0)->Arg(1);

}  // namespace
