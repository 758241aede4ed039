#include <cstdio>

#include "platform/debug_line.h"
#include "platform/utf8.h"

namespace skyvault {

void WriteToDebugChannel(const std::wstring& text) {
    const std::string bytes = ToUtf8(text);
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

}  // namespace skyvault
