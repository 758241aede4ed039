// Panoramas in memory for the benchmarks, with nobody to report to, and how a conversion is run again and
// again.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <utility>

#include "projection/layout_requests.h"

namespace skyvault::bench {

/// A panorama whose pictures hold noise.
struct BenchPanorama {
    SilentFeedback feedback;
    AppState settings;
    Panorama panorama;

    static void Fill(Image& image) {
        std::uint32_t state = 1;
        for (std::size_t i = 0; i < image.ByteCount(); ++i) {
            state = state * 1664525u + 1013904223u;
            image.pixels[i] = static_cast<std::byte>(state >> 24);
        }
    }
    void SetEquirectangular(std::uint32_t width, PixelFormat format) {
        panorama.equirectSource = Image(width, width / 2, format);
        Fill(panorama.equirectSource);
        panorama.faceSize = width / 4;
    }
    void SetFaces(std::uint32_t size, PixelFormat format) {
        for (Image& face : panorama.faces) {
            face = Image(size, size, format);
            Fill(face);
        }
        panorama.faceSize = size;
    }
    /// What a generator is asked.
    ImportRequest From(std::wstring picture) const {
        return {.format = {}, .paths = {std::move(picture)}, .settings = settings, .generator = settings};
    }
    void TurnObliquely() { RotatePanorama(panorama.modifications, 0.7f, 0.5f, 0.3f); }
};

/// Once before the loop, which touches the result's memory first and shows whether it works at all.
template <typename Work>
void Repeat(benchmark::State& state, Work work) {
    if (!work().IsDone()) {
        state.SkipWithError("it failed");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(work());
}

}  // namespace skyvault::bench
