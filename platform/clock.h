// The millisecond clock that seeds the random generator.
#pragma once

#include <cstdint>

namespace skyvault {

/// Milliseconds since the system started (timeGetTime on Windows); wraps after 49.7 days.
std::uint32_t MillisecondClock();

/// Waits for at least the given time.
void SleepMilliseconds(std::uint32_t milliseconds);

}  // namespace skyvault
