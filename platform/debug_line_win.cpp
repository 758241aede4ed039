#include <windows.h>

#include "platform/debug_line.h"

namespace skyvault {

void WriteToDebugChannel(const std::wstring& text) {
    OutputDebugStringW(text.c_str());
}

}  // namespace skyvault
