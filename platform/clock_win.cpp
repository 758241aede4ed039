#include <windows.h>

#include <timeapi.h>

#include "platform/clock.h"

namespace skyvault {

std::uint32_t MillisecondClock() {
    return timeGetTime();
}

void SleepMilliseconds(std::uint32_t milliseconds) {
    Sleep(milliseconds);
}

}  // namespace skyvault
