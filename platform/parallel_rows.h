// Row loops spread over the processor's cores.
//
// The one place of the program with threads: a pool made on first use, whose threads only ever run a row
// loop's bands. The calling thread works too, and ParallelBands returns when every band is done, so that
// a caller sees an ordinary loop. Bands must write to memory of their own; then the result is the same
// bytes for any number of threads.
#pragma once

#include <cstdint>
#include <functional>

namespace skyvault {

/// Below this many pixels, waking other threads costs more than it saves (0.8 ms under Wine).
inline constexpr std::uint64_t kParallelPixels = 1'000'000;

/// Rows of a picture made together: enough that a tile of 256 columns is square-ish in the source, few enough
/// that a doubled tile stays in the cache.
inline constexpr std::uint32_t kBandRows = 64;

/// Threads a loop may use, the calling one included. 0 (the start value) means one per core.
void SetThreadCount(int count);

/// Runs work(band) once for every band 0 .. bandCount − 1, in any order.
/// work: must not throw. parallel false: all on the calling thread, in order.
/// done: when given, called on the calling thread only, now and then and once at the end, with the number
/// of bands finished so far.
void ParallelBands(int bandCount, bool parallel, const std::function<void(int band)>& work,
                   const std::function<void(int finished)>& done = {});

}  // namespace skyvault
