#include "app/waiting_input.h"

#include <windows.h>

namespace skyvault {

void ForgetWaitingInput() {
    struct Range {
        UINT first, last;
    };
    constexpr Range kInput[] = {
        {WM_KEYFIRST, WM_KEYLAST}, {WM_MOUSEFIRST, WM_MOUSELAST}, {WM_NCMOUSEMOVE, WM_NCXBUTTONDBLCLK}};
    for (const Range& range : kInput) {
        MSG message;
        while (PeekMessageW(&message, nullptr, range.first, range.last, PM_REMOVE)) {
        }
    }
}

}  // namespace skyvault
