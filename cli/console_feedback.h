// What the console program says while it works: messages and a progress bar on stderr.
#pragma once

#include <string>
#include <string_view>

#include "platform/feedback.h"

namespace skyvault {

/// The bar of a progress display, without line ends: "[#########...........]  45 %  Exporting...".
/// fraction: clamped to 0..1. The text is cut so that the line stays below 80 columns.
std::wstring ProgressLine(float fraction, std::wstring_view text);

/// A message box's text as one line: its paragraphs become sentences.
std::wstring OnOneLine(std::wstring_view text);

class ConsoleFeedback : public Feedback {
  public:
    /// quiet: no information and no progress bar. The bar is shown only on a terminal anyway.
    explicit ConsoleFeedback(bool quiet);

    /// "skyvault-cli: text" on a line of stderr.
    void Information(const std::wstring& text) override;

    /// The same, also when quiet.
    void Error(const std::wstring& text);

    void BeginProgress() override;
    void SetProgress(float fraction, std::wstring_view text) override;
    void ResetProgress() override;
    void EndProgress() override;
    bool ProgressActive() const override { return active_; }

    /// Takes the bar away until the next SetProgress, so that something else can be written to the line.
    void HideBar() { Draw({}); }

  private:
    void Draw(const std::wstring& line);

    const bool quiet_;
    const bool drawsBar_;
    bool active_ = false;
    std::wstring shownLine_;
};

/// A message of the program on a line of stderr: "skyvault-cli: text".
void WriteMessage(std::wstring_view text);

}  // namespace skyvault
