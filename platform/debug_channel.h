// The system's end of the debugger channel; only debug_line.cpp calls it.
#pragma once

#include <string>

namespace skyvault {

/// Hands the text to the debugger (Windows) or stderr as UTF-8 (elsewhere).
void WriteToDebugChannel(const std::wstring& text);

}  // namespace skyvault
