// Keys and clicks that came while the program stood still.
#pragma once

namespace skyvault {

/// Forgets those that wait in the thread's queue, clicks on frames and menus included. They were not meant
/// for what is shown next: they would close its message unread, or choose from a menu that was not there.
void ForgetWaitingInput();

}  // namespace skyvault
