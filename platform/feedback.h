// What a long operation may say while it runs. The window, the console and the tests implement it; the
// engine never knows which of them listens.
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

class Feedback {
  public:
    virtual ~Feedback() = default;

    /// A message box with the caption "Skyvault" (a line on stderr for the console). What failed is not told
    /// here but by the Outcome.
    virtual void Information(const std::wstring& text) = 0;

    /// Progress box: begin shows it, set takes a fraction 0..1 and what is being done, reset returns it to
    /// 0 % and an empty text, end removes it. Set does nothing while none is shown.
    /// Always called on the thread that runs the command.
    virtual void BeginProgress() = 0;
    virtual void SetProgress(float fraction, std::wstring_view text) = 0;
    virtual void ResetProgress() = 0;
    virtual void EndProgress() = 0;
    virtual bool ProgressActive() const = 0;
};

/// The progress box for as long as an operation runs.
class ProgressScope {
  public:
    explicit ProgressScope(Feedback& feedback) : feedback_(feedback) { feedback_.BeginProgress(); }
    ~ProgressScope() { feedback_.EndProgress(); }
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

  private:
    Feedback& feedback_;
};

/// Nobody to report to.
class SilentFeedback final : public Feedback {
  public:
    void Information(const std::wstring&) override {}
    void BeginProgress() override {}
    void SetProgress(float, std::wstring_view) override {}
    void ResetProgress() override {}
    void EndProgress() override {}
    bool ProgressActive() const override { return false; }
};

}  // namespace skyvault
