// Whole conversions in memory, in seconds per 10^9 written pixels (nanoseconds per pixel), beside the cost of
// merely fetching the same pixels through a ready-made index table.
//
// First argument: threads. The source is 8192 × 4096 (or six faces of 2048²) unless the name says otherwise.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench/conversion_grid.h"
#include "bench/count_pixels.h"
#include "bench/index_table.h"
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
    bench::Repeat(state, [&] { return RenderLayout(p.panorama, grid, options, result); });
    CountPixels(state, static_cast<double>(result.width) * result.height);
    SetThreadCount(0);
}

enum class Route { EquirectangularToItself, EquirectangularToFaces, FacesToEquirectangular };

void IndexTableFetch(benchmark::State& state, Route route, bool turned) {
    BenchPanorama p;
    if (turned) p.TurnObliquely();
    const Modifications& modifications = p.panorama.modifications;
    const bool sixFaces = route == Route::FacesToEquirectangular;
    Image source = sixFaces ? Image(kFace, kFaceCount * kFace, PixelFormat::Rgb8)
                            : Image(kWidth, kHeight, PixelFormat::Rgb8);
    BenchPanorama::Fill(source);
    const std::vector<std::uint32_t> table =
        route == Route::EquirectangularToFaces ? bench::EquirectangularToFacesTable(kWidth, modifications)
                                               : bench::EquirectangularTable(kWidth, modifications, sixFaces);
    std::vector<std::byte> result(table.size() * 3);
    for (auto _ : state) {
        bench::FetchByTable(source, table, result);
        benchmark::ClobberMemory();
    }
    CountPixels(state, static_cast<double>(table.size()));
}

void FetchStraight(benchmark::State& state) {
    IndexTableFetch(state, Route::EquirectangularToItself, false);
}
void FetchTurned(benchmark::State& state) {
    IndexTableFetch(state, Route::EquirectangularToItself, true);
}
void FetchToFaces(benchmark::State& state) {
    IndexTableFetch(state, Route::EquirectangularToFaces, false);
}
void FetchToFacesTurned(benchmark::State& state) {
    IndexTableFetch(state, Route::EquirectangularToFaces, true);
}
void FetchFromFaces(benchmark::State& state) {
    IndexTableFetch(state, Route::FacesToEquirectangular, false);
}
void FetchFromFacesTurned(benchmark::State& state) {
    IndexTableFetch(state, Route::FacesToEquirectangular, true);
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
/// A result of the source's size: every other sample lies right between two of the source's pixels.
void EquirectangularAntialiasedFull(benchmark::State& state) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth / 2, PixelFormat::Rgb8);
    Render(state, p, EquirectangularGrid(kWidth, kHeight), PixelFormat::Rgb8, true);
}
/// range: width of source and result.
void EquirectangularOfWidth(benchmark::State& state) {
    const auto width = static_cast<std::uint32_t>(state.range(1));
    BenchPanorama p;
    p.SetEquirectangular(width, PixelFormat::Rgb8);
    if (state.range(2)) p.TurnObliquely();
    Render(state, p, EquirectangularGrid(width, width / 2), PixelFormat::Rgb8, false);
}
void FacesToEquirectangular(benchmark::State& state) {
    BenchPanorama p;
    p.SetFaces(kFace, PixelFormat::Rgb8);
    if (state.range(1)) p.TurnObliquely();
    Render(state, p, EquirectangularGrid(kWidth, kHeight), PixelFormat::Rgb8, false);
}
void EquirectangularToFaces(benchmark::State& state) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth, PixelFormat::Rgb8);
    if (state.range(1)) p.TurnObliquely();
    SetThreadCount(static_cast<int>(state.range(0)));
    Image faces[kFaceCount];
    const auto build = [&] {
        Outcome built;
        for (int f = 0; f < kFaceCount && built.IsDone(); ++f) {
            built = BuildFace(p.panorama, faces[f], static_cast<CubeFace>(f), kFace, PixelFormat::Rgb8,
                              EmptyColour(p.settings));
        }
        return built;
    };
    bench::Repeat(state, build);
    CountPixels(state, 6.0 * kFace * kFace);
    SetThreadCount(0);
}

/// The turned equirectangular export with one thing more.
void EquirectangularModified(benchmark::State& state, void (*modify)(Modifications&)) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth, PixelFormat::Rgb8);
    p.TurnObliquely();
    modify(p.panorama.modifications);
    Render(state, p, EquirectangularGrid(kWidth, kHeight), PixelFormat::Rgb8, false);
}
/// Of and to one format.
void EquirectangularOfFormat(benchmark::State& state, PixelFormat format) {
    BenchPanorama p;
    p.SetEquirectangular(kWidth / 2, format);
    Render(state, p, EquirectangularGrid(kWidth / 2, kHeight / 2), format, false);
}

#define BENCHMARKED(name) BENCHMARK(name)->Unit(benchmark::kMillisecond)
BENCHMARKED(FetchStraight);
BENCHMARKED(FetchTurned);
BENCHMARKED(FetchToFaces);
BENCHMARKED(FetchToFacesTurned);
BENCHMARKED(FetchFromFaces);
BENCHMARKED(FetchFromFacesTurned);
#define CONVERSION(name) BENCHMARKED(name)->Arg(1)
CONVERSION(EquirectangularStraight);
CONVERSION(EquirectangularTurned);
BENCHMARKED(EquirectangularTurned)->Arg(2)->UseRealTime();
CONVERSION(EquirectangularTurnedBaseline);
CONVERSION(EquirectangularAntialiased);
CONVERSION(EquirectangularAntialiasedFull);
#define TURNED_OR_NOT(name) BENCHMARKED(name)->ArgNames({"threads", "turned"})->Args({1, 0})->Args({1, 1})
TURNED_OR_NOT(EquirectangularToFaces);
TURNED_OR_NOT(FacesToEquirectangular);
BENCHMARKED(EquirectangularOfWidth)
    ->ArgNames({"threads", "width", "turned"})
    ->ArgsProduct({{1}, {4096, 16384}, {0, 1}});

#define MODIFIED(name, ...) \
    BENCHMARK_CAPTURE(EquirectangularModified, name, __VA_ARGS__)->Unit(benchmark::kMillisecond)->Arg(1)
MODIFIED(nothing, [](Modifications&) {});
MODIFIED(flipped, [](Modifications& m) { m.flipHorizontal = true; });
MODIFIED(mirrored, [](Modifications& m) { m.mirrorTopToBottom = m.mirrorFrontToBack = true; });
MODIFIED(logo, [](Modifications& m) { m.logoSize = 0.4f; });
MODIFIED(horizon, [](Modifications& m) { m.horizonPower = 1.3f; });
#define OF_FORMAT(format)                                                   \
    BENCHMARK_CAPTURE(EquirectangularOfFormat, format, PixelFormat::format) \
        ->Unit(benchmark::kMillisecond)                                     \
        ->Arg(1)
OF_FORMAT(Grey8);
OF_FORMAT(Rgb8);
OF_FORMAT(Rgba8);
OF_FORMAT(Rgb16);
OF_FORMAT(Rgba16);
OF_FORMAT(RgbaHalf);

}  // namespace
