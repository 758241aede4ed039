// How benchmarks report: nanoseconds per pixel, as seconds per 10^9 pixels.
#pragma once

#include <benchmark/benchmark.h>

namespace skyvault::bench {

inline void CountPixels(benchmark::State& state, double pixels) {
    state.counters["time/Gpixel"] = benchmark::Counter(
        1e-9 * pixels, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace skyvault::bench
