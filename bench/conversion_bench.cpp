// Whole conversions in memory, in seconds per 10^9 written pixels (nanoseconds per pixel), beside the cost of
// merely fetching the same pixels through a ready-made index table.
//
// Arguments: threads. The source is 8192 × 4096 (or six faces of 2048²) unless the name says otherwise.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "bench/conversion_grid.h"
#include "projection/build_faces.h"

namespace {

using namespace skyvault;
using bench::BenchPanorama;
using bench::CountPixels;
using bench::EquirectangularGrid;

constexpr std::uint32_t kWidth = 8192, kHeight = 4096, kFace = 2048;

void Render(benchmark::State& state, BenchPanorama& p, const LayoutGrid& grid, PixelFormat format,
            bool halve) {
    SetThreadCount(static_cast<int>(state.range(0)));
    RenderOptions options;
    options.format = format;
    options.halve = halve;
    Image result;
    RenderLayout(p.panorama, grid, options, result);  // first touch of the result's memory
    for (auto _ : state) RenderLayout(p.panorama, grid, options, result);
    CountPixels(state, static_cast<double>(result.width) * result.height);
    SetThreadCount(0);
}

/// The index table's only work: read an index, copy a pixel.
void IndexTableFetch(benchmark::State& state, bool turned) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth, PixelFormat::Rgb8);
    if (turned) p.TurnObliquely();
    const LayoutGrid grid = EquirectangularGrid(kWidth, kHeight);
    std::vector<std::uint32_t> table(std::size_t{kWidth} * kHeight);
    DirectionBlock block;
    std::uint64_t offsets[kBlockSize];
    const Image& source = p.panorama.equirectSource;
    for (std::uint32_t row = 0; row < kHeight; ++row) {
        for (std::uint32_t first = 0; first < kWidth; first += kBlockSize) {
            grid.directions(row, first, kBlockSize, block, nullptr);
            Kernels().normalize(block.x, block.y, block.z, kBlockSize);
            if (turned) {
                Kernels().transform(block.x, block.y, block.z, kBlockSize,
                                    p.panorama.modifications.orientation);
            }
            Kernels().equirectOffsets(block.x, block.y, block.z, kBlockSize,
                                      {kWidth, kHeight, source.stride, 3}, offsets);
            for (int i = 0; i < kBlockSize; ++i) {
                table[std::size_t{row} * kWidth + first + static_cast<std::uint32_t>(i)] =
                    static_cast<std::uint32_t>(offsets[i] / 3);
            }
        }
    }
    std::vector<std::byte> result(std::size_t{kWidth} * kHeight * 3);
    for (auto _ : state) {
        const std::byte* from = source.pixels.get();
        std::byte* to = result.data();
        for (const std::uint32_t index : table) {
            std::memcpy(to, from + std::size_t{index} * 3, 3);
            to += 3;
        }
        benchmark::ClobberMemory();
    }
    CountPixels(state, static_cast<double>(table.size()));
}

void FetchStraight(benchmark::State& state) {
    IndexTableFetch(state, false);
}
void FetchTurned(benchmark::State& state) {
    IndexTableFetch(state, true);
}

void EquirectangularStraight(benchmark::State& state) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth, PixelFormat::Rgb8);
    Render(state, p, EquirectangularGrid(kWidth, kHeight), PixelFormat::Rgb8, false);
}
void EquirectangularTurned(benchmark::State& state) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth, PixelFormat::Rgb8);
    p.TurnObliquely();
    Render(state, p, EquirectangularGrid(kWidth, kHeight), PixelFormat::Rgb8, false);
}
void EquirectangularTurnedBaseline(benchmark::State& state) {
    UseKernels(KernelSet::Baseline);
    EquirectangularTurned(state);
    UseKernels(KernelSet::Fastest);
}
void EquirectangularAntialiased(benchmark::State& state) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth, PixelFormat::Rgb8);
    Render(state, p, EquirectangularGrid(2 * kWidth / 2, 2 * kHeight / 2), PixelFormat::Rgb8, true);
}
void FacesToEquirectangular(benchmark::State& state) {
    BenchPanorama p;
    p.SetFaces(kFace, PixelFormat::Rgb8);
    Render(state, p, EquirectangularGrid(kWidth, kHeight), PixelFormat::Rgb8, false);
}
void EquirectangularToFaces(benchmark::State& state) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth, PixelFormat::Rgb8);
    SetThreadCount(static_cast<int>(state.range(0)));
    Image faces[kFaceCount];
    const auto build = [&] {
        for (int f = 0; f < kFaceCount; ++f) {
            BuildFace(p.panorama, faces[f], static_cast<CubeFace>(f), kFace, PixelFormat::Rgb8);
        }
    };
    build();
    for (auto _ : state) build();
    CountPixels(state, 6.0 * kFace * kFace);
    SetThreadCount(0);
}

#define CONVERSION(name) BENCHMARK(name)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(1)
CONVERSION(FetchStraight);
CONVERSION(FetchTurned);
CONVERSION(EquirectangularStraight);
CONVERSION(EquirectangularTurned)->Arg(2)->UseRealTime();
CONVERSION(EquirectangularTurnedBaseline);
CONVERSION(EquirectangularAntialiased);
CONVERSION(EquirectangularToFaces);
CONVERSION(FacesToEquirectangular);

}  // namespace

BENCHMARK_MAIN();
