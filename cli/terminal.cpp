#include "cli/terminal.h"

#include <atomic>

#include "cli/terminal_stream.h"

namespace skyvault {

namespace {

std::atomic<bool> closed{false};

}  // namespace

void WriteText(OutputStream stream, std::wstring_view text) {
    if (!closed) WriteToStream(stream, text);
}

void SayNoMore() {
    closed = true;
}

bool SaysNoMore() {
    return closed;
}

}  // namespace skyvault
