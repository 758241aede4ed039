// A progress bar that shows its position while no messages are let in.
#pragma once

#include <windows.h>

namespace skyvault {

/// Moves the bar at once. Themed bars glide upwards by a timer, which cannot run in a long command, but jump
/// downwards.
void JumpTo(HWND bar, int position);

}  // namespace skyvault
