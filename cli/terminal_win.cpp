#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>

#include "cli/terminal_stream.h"
#include "platform/utf8.h"

namespace skyvault {

namespace {

HANDLE Handle(OutputStream stream) {
    return GetStdHandle(stream == OutputStream::Standard ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

std::function<void()>& InterruptHandler() {
    static std::function<void()> handler;
    return handler;
}

BOOL WINAPI ConsoleControl(DWORD) {
    InterruptHandler()();
    return TRUE;
}

}  // namespace

bool WriteToStream(OutputStream stream, std::wstring_view text) {
    const HANDLE handle = Handle(stream);
    DWORD written = 0;
    if (IsTerminal(stream)) {
        // Older consoles take no more than 64 KiB at a time.
        constexpr std::size_t kMost = 8192;
        for (; !text.empty(); text.remove_prefix(std::min(kMost, text.size()))) {
            const DWORD count = static_cast<DWORD>(std::min(kMost, text.size()));
            if (!WriteConsoleW(handle, text.data(), count, &written, nullptr)) return false;
        }
        return true;
    }
    std::string bytes = ToUtf8(text);
    while (!bytes.empty()) {
        const DWORD count = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1u << 20));
        if (!WriteFile(handle, bytes.data(), count, &written, nullptr) || written == 0) return false;
        bytes.erase(0, written);
    }
    return true;
}

bool IsTerminal(OutputStream stream) {
    DWORD mode = 0;
    return GetConsoleMode(Handle(stream), &mode) != 0;
}

void PrepareStreams() {}

void OnAbort(void (*)()) {}

void OnInterrupt(std::function<void()> interrupted) {
    InterruptHandler() = std::move(interrupted);
    SetConsoleCtrlHandler(ConsoleControl, TRUE);
}

}  // namespace skyvault
