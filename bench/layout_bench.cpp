// Every layout as the window's view builds it, from one equirectangular source of 8192 × 4096, in seconds per
// 10^9 pixels that show the panorama (nanoseconds per pixel; background is not counted).
//
// The first row is the equirectangular export, with half the source's resolution like the six faces of 1024².
#include <benchmark/benchmark.h>

#include "bench/bench_panorama.h"
#include "platform/parallel_rows.h"
#include "session/layouts.h"

namespace {

using namespace skyvault;

/// A window in which the layout's faces are 1024 pixels wide, or the whole picture is of that order.
ClientSize WindowFor(PanoramaFormat format) {
    switch (format) {
        case PanoramaFormat::HorizontalCross:
            return {4096, 3072};
        case PanoramaFormat::VerticalCross:
            return {3072, 4096};
        case PanoramaFormat::Strip:
        case PanoramaFormat::StripXyz:
        case PanoramaFormat::InteriorStrip:
            return {6144, 1024};
        case PanoramaFormat::Equirectangular:
            return {4096, 2048};
        default:
            return {2048, 2048};
    }
}

std::size_t ShownPixels(const Image& picture) {
    std::size_t count = 0;
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x) {
            count += picture.Row(y)[std::size_t{x} * 4 + 3] != std::byte{0};
        }
    }
    return count;
}

void View(benchmark::State& state, const LayoutRow& layout) {
    bench::BenchPanorama p;
    p.SetEquirectangular(8192, PixelFormat::Rgb8);
    p.settings.antialiasing = false;
    p.settings.resolution1 = 4;
    p.settings.resolution2 = 3;
    p.settings.resolution3 = 1;
    const ExportRequest request{
        .format = layout.format, .settings = p.settings, .client = WindowFor(layout.format)};
    Image& picture = p.panorama.resultPicture;
    const auto render = [&] { return layout.render(p.panorama, request, p.feedback, picture); };
    SetThreadCount(1);
    p.settings.transparency = true;
    const double shown = render().IsDone() ? static_cast<double>(ShownPixels(picture)) : 0.0;
    p.settings.transparency = false;
    bench::Repeat(state, render);
    state.counters["time/Gpixel"] = benchmark::Counter(
        1e-9 * shown, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    SetThreadCount(0);
}

const bool kRegistered = [] {
    for (const LayoutRow& layout : Layouts()) {
        if (layout.viewCommand == 0) continue;
        benchmark::RegisterBenchmark((std::string("View/") + layout.consoleName).c_str(),
                                     [&layout](benchmark::State& state) { View(state, layout); })
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace
