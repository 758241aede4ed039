// The millisecond clock that seeds the random generator, and waiting.
#pragma once

#include <chrono>
#include <cstdint>
#include <thread>

namespace skyvault {

/// Milliseconds since the system started; wraps after 49.7 days.
inline std::uint32_t MillisecondClock() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

/// Waits for at least the given time.
inline void SleepMilliseconds(std::uint32_t milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace skyvault
