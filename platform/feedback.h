// What a long operation may say while it runs. The window, the console and the tests implement it; the
// engine never knows which of them listens.
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

class Feedback {
  public:
    virtual ~Feedback() = default;

    /// A message box with the caption "Skyvault" (a line on stderr for the console).
    virtual void Information(const std::wstring& text) = 0;
    virtual void Error(const std::wstring& text) = 0;

    /// Progress box: begin shows it, set takes a fraction 0..1 and what is being done, reset returns it to
    /// 0 % and an empty text, end removes it. Set does nothing while none is shown.
    /// Always called on the thread that runs the command.
    virtual void BeginProgress() = 0;
    virtual void SetProgress(float fraction, std::wstring_view text) = 0;
    virtual void ResetProgress() = 0;
    virtual void EndProgress() = 0;
    virtual bool ProgressActive() const = 0;
};

}  // namespace skyvault
