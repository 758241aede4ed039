#include "cli/console_feedback.h"

#include <algorithm>

#include "cli/terminal.h"

namespace skyvault {

std::wstring ProgressLine(float fraction, std::wstring_view text) {
    constexpr std::size_t kBarWidth = 24, kLineWidth = 78;
    // The comparison also turns away what is not a number.
    const float share = fraction > 0 ? std::min(fraction, 1.0f) : 0.0f;
    const std::size_t filled = static_cast<std::size_t>(share * kBarWidth);
    const std::wstring percent = std::to_wstring(static_cast<int>(share * 100));
    std::wstring line = L"[" + std::wstring(filled, L'#') + std::wstring(kBarWidth - filled, L'.') + L"] " +
                        std::wstring(3 - percent.size(), L' ') + percent + L" %  ";
    line += text.substr(0, kLineWidth - line.size());
    return line;
}

std::wstring OnOneLine(std::wstring_view text) {
    constexpr std::wstring_view kSpace = L" \r\n";
    text = text.substr(0, text.find_last_not_of(kSpace) + 1);
    std::wstring line;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(L"\r\n"), text.size());
        line += text.substr(0, end);
        text.remove_prefix(std::min(text.find_first_not_of(kSpace, end), text.size()));
        if (text.empty() || line.empty()) continue;
        const bool ended = std::wstring_view(L".:!?").find(line.back()) != std::wstring_view::npos;
        line += ended ? L" " : L". ";
    }
    return line;
}

void WriteMessage(std::wstring_view text) {
    WriteText(OutputStream::Messages, L"skyvault-cli: " + OnOneLine(text) + L"\n");
}

ConsoleFeedback::ConsoleFeedback(bool quiet)
    : quiet_(quiet), drawsBar_(!quiet && IsTerminal(OutputStream::Messages)) {}

void ConsoleFeedback::Information(const std::wstring& text) {
    if (quiet_) return;
    Draw({});
    WriteMessage(text);
}

void ConsoleFeedback::Error(const std::wstring& text) {
    Draw({});
    WriteMessage(text);
}

void ConsoleFeedback::BeginProgress() {
    active_ = true;
}

void ConsoleFeedback::SetProgress(float fraction, std::wstring_view text) {
    if (active_) Draw(ProgressLine(fraction, text));
}

void ConsoleFeedback::ResetProgress() {
    if (active_) Draw(ProgressLine(0, {}));
}

void ConsoleFeedback::EndProgress() {
    Draw({});
    active_ = false;
}

void ConsoleFeedback::Draw(const std::wstring& line) {
    if (!drawsBar_ || line == shownLine_) return;
    // Spaces over what is longer of the old line; the cursor waits in front of the bar or the next message.
    std::wstring text = L"\r" + line;
    if (shownLine_.size() > line.size()) text += std::wstring(shownLine_.size() - line.size(), L' ');
    if (line.empty()) text += L'\r';
    WriteText(OutputStream::Messages, text);
    shownLine_ = line;
}

}  // namespace skyvault
