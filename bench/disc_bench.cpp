// Sphere map, mirror ball and heart in memory, beside equirectangular exports of about as many pixels: in
// seconds per 10^9 pixels (nanoseconds per pixel) inside the shape, one thread, source 8192 × 4096.
#include <benchmark/benchmark.h>

#include <algorithm>

#include "bench/conversion_grid.h"
#include "bench/count_pixels.h"
#include "projection/disc_kernels.h"
#include "projection/disc_layouts.h"
#include "projection/face_import.h"

namespace {

using namespace skyvault;
using bench::BenchPanorama;

void Render(benchmark::State& state, BenchPanorama& p, const LayoutGrid& grid, double pixels) {
    SetThreadCount(1);
    RenderOptions options;
    options.format = PixelFormat::Rgb8;
    options.emptyColour = Color8(255, 255, 255, 255);
    Image result;
    bench::Repeat(state, [&] { return RenderLayout(p.panorama, grid, options, result); });
    bench::CountPixels(state, pixels);
    SetThreadCount(0);
}

/// range: edge of the picture.
void Export(benchmark::State& state, PanoramaFormat shape) {
    BenchPanorama p;
    p.SetEquirectangular(8192, PixelFormat::Rgb8);
    const LayoutGrid grid = DiscGrid(shape, static_cast<std::uint32_t>(state.range(0)));
    std::int64_t written = 0;
    DirectionBlock block;
    std::uint8_t inside[kBlockSize];
    for (std::uint32_t row = 0; row < grid.height; ++row) {
        for (std::uint32_t first = 0; first < grid.width; first += kBlockSize) {
            const Coverage coverage = grid.directions(row, first, kBlockSize, block, inside);
            if (coverage == Coverage::All) written += kBlockSize;
            if (coverage == Coverage::Some) written += std::count(inside, inside + kBlockSize, 1);
        }
    }
    Render(state, p, grid, static_cast<double>(written));
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
    Export(state, PanoramaFormat::SphereMap);
}
void MirrorBallExport(benchmark::State& state) {
    Export(state, PanoramaFormat::MirrorBall);
}
void HeartExport(benchmark::State& state) {
    Export(state, PanoramaFormat::Heart);
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
