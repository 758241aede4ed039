// Sphere map, mirror ball and heart in memory, beside equirectangular exports of about as many pixels: in
// seconds per 10^9 pixels (nanoseconds per pixel) inside the shape, one thread, source 8192 × 4096.
#include <benchmark/benchmark.h>

#include "bench/conversion_grid.h"
#include "bench/count_pixels.h"
#include "projection/disc_shape.h"
#include "projection/face_import.h"

namespace {

using namespace skyvault;
using bench::BenchPanorama;

void Render(benchmark::State& state, BenchPanorama& p, const LayoutGrid& grid, double pixels) {
    SetThreadCount(1);
    RenderOptions options;
    options.format = PixelFormat::Rgb8;
    options.background = Color8(255, 255, 255, 255);
    Image result;
    RenderLayout(p.panorama, grid, options, result);  // first touch of the result's memory
    for (auto _ : state) RenderLayout(p.panorama, grid, options, result);
    bench::CountPixels(state, pixels);
    SetThreadCount(0);
}

/// range: edge of the picture.
void Export(benchmark::State& state, DiscKernels::Directions directions) {
    BenchPanorama p;
    p.SetEquirectangular(8192, PixelFormat::Rgb8);
    const auto size = static_cast<std::uint32_t>(state.range(0));
    std::int64_t written = 0;
    DirectionBlock block;
    std::uint8_t inside[kBlockSize];
    for (std::int32_t row = 0; row < state.range(0); ++row) {
        for (std::int32_t first = 0; first < state.range(0); first += kBlockSize) {
            written += directions({static_cast<std::int32_t>(size), row, first}, kBlockSize, block, inside);
        }
    }
    Render(state, p, DiscGrid(size, directions), static_cast<double>(written));
}

/// range: edge of the picture; the faces are twice as large.
void Import(benchmark::State& state, DiscKernels::Pixels pixels) {
    const auto size = static_cast<std::uint32_t>(state.range(0));
    Image picture(size, size, PixelFormat::Rgb8);
    BenchPanorama::Fill(picture);
    Image face(2 * size, 2 * size, PixelFormat::Rgb8);
    BenchPanorama::Fill(face);
    SetThreadCount(1);
    for (auto _ : state) {
        for (int f = 0; f < kFaceCount; ++f) {
            FillFaceByDirection(static_cast<CubeFace>(f), face, picture,
                                [&](const DirectionBlock& block, int count, std::int32_t* columns,
                                    std::int32_t* rows) { pixels(block, count, size, size, columns, rows); });
        }
    }
    bench::CountPixels(state, 24.0 * size * size);
    SetThreadCount(0);
}

void EquirectangularExport(benchmark::State& state) {
    BenchPanorama p;
    p.SetEquirectangular(8192, PixelFormat::Rgb8);
    const auto width = static_cast<std::uint32_t>(state.range(0));
    Render(state, p, bench::EquirectangularGrid(width, width / 2), width * (width / 2.0));
}
void SphereMapExport(benchmark::State& state) {
    Export(state, DiscPasses().sphereMapDirections);
}
void MirrorBallExport(benchmark::State& state) {
    Export(state, DiscPasses().mirrorBallDirections);
}
void HeartExport(benchmark::State& state) {
    Export(state, DiscPasses().heartDirections);
}
void SphereMapImport(benchmark::State& state) {
    Import(state, DiscPasses().sphereMapPixels);
}
void MirrorBallImport(benchmark::State& state) {
    Import(state, DiscPasses().mirrorBallPixels);
}
void HeartImport(benchmark::State& state) {
    Import(state, DiscPasses().heartPixels);
}

#define EXPORT(name, small, large) \
    BENCHMARK(name)->Arg(small)->Arg(large)->Unit(benchmark::kMillisecond)->MinTime(0.5)
#define IMPORT(name) BENCHMARK(name)->Arg(1024)->Unit(benchmark::kMillisecond)->MinTime(0.5)
EXPORT(EquirectangularExport, 4096, 8192);
EXPORT(SphereMapExport, 2048, 4096);
EXPORT(MirrorBallExport, 2048, 4096);
EXPORT(HeartExport, 2048, 4096);
IMPORT(SphereMapImport);
IMPORT(MirrorBallImport);
IMPORT(HeartImport);

}  // namespace
