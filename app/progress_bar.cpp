#include "app/progress_bar.h"

// After windows.h:
#include <commctrl.h>

namespace skyvault {

void JumpTo(HWND bar, int position) {
    SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(position + 1), 0);
    SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(position), 0);
}

}  // namespace skyvault
