#include "platform/debug_line.h"

#include <cassert>
#include <mutex>

namespace skyvault {

namespace {

std::mutex mutex;
bool capturing = false;

// Not destroyed at exit: a thread's last words may come later than the end of main.
std::wstring& Captured() {
    static std::wstring& text = *new std::wstring;
    return text;
}

}  // namespace

void DebugLine(std::wstring_view text) {
    const std::lock_guard lock(mutex);
    if (capturing) {
        Captured() += text;
    } else {
        WriteToDebugChannel(std::wstring(text));
    }
}

DebugLineCapture::DebugLineCapture() {
    const std::lock_guard lock(mutex);
    assert(!capturing);
    capturing = true;
    Captured().clear();
}

DebugLineCapture::~DebugLineCapture() {
    const std::lock_guard lock(mutex);
    capturing = false;
}

std::wstring DebugLineCapture::Text() const {
    const std::lock_guard lock(mutex);
    return Captured();
}

}  // namespace skyvault
