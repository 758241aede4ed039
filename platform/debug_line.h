// The debugger channel: one line at a time, for developers, never shown to the user.
//
// On Windows the text goes to OutputDebugStringW, elsewhere to stderr.
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

/// Writes a diagnostic text; by convention it is one line ending in "\n". Callable from any thread.
void DebugLine(std::wstring_view text);

/// The system's end of the channel, without a capture before it; DebugLine alone calls it.
void WriteToDebugChannel(const std::wstring& text);

/// While it lives, every DebugLine is kept instead of going to the debugger channel (for tests).
/// One at a time; not to be made while other threads write.
class DebugLineCapture {
  public:
    DebugLineCapture();
    ~DebugLineCapture();
    DebugLineCapture(const DebugLineCapture&) = delete;
    DebugLineCapture& operator=(const DebugLineCapture&) = delete;

    /// All that was written since construction.
    std::wstring Text() const;
};

}  // namespace skyvault
