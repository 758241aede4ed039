#include "cli/terminal.h"

#include <array>
#include <atomic>
#include <string>

#include "cli/terminal_stream.h"
#include "platform/path_text.h"

namespace skyvault {

namespace {

std::atomic<bool> closed{false};
/// By OutputStream.
std::array<std::atomic<bool>, 2> cut{};

/// As Printable, but for what lays text out.
std::wstring WithoutControls(std::wstring_view text) {
    std::wstring result;
    for (const wchar_t c : text) {
        const bool layout = c == L'\t' || c == L'\n' || c == L'\r';
        result += layout ? std::wstring(1, c) : Printable(std::wstring_view(&c, 1));
    }
    return result;
}

}  // namespace

void WriteText(OutputStream stream, std::wstring_view text) {
    if (closed || WriteToStream(stream, WithoutControls(text))) return;
    cut[static_cast<std::size_t>(stream)] = true;
}

bool IsWholeSoFar(OutputStream stream) {
    return !cut[static_cast<std::size_t>(stream)];
}

void SayNoMore() {
    closed = true;
}

bool SaysNoMore() {
    return closed;
}

}  // namespace skyvault
