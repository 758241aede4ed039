// Whether anything went wrong aloud: the messages of an operation, passed on and remembered.
#pragma once

#include <string>

#include "platform/feedback.h"

namespace skyvault {

class NotedErrors final : public Feedback {
  public:
    /// The listener is kept.
    explicit NotedErrors(Feedback& listener) : listener_(listener) {}

    /// From now on nothing has been said.
    void Forget() { any_ = false; }
    bool Any() const { return any_; }

    void Information(const std::wstring& text) override { listener_.Information(text); }
    void Error(const std::wstring& text) override {
        any_ = true;
        listener_.Error(text);
    }
    void BeginProgress() override { listener_.BeginProgress(); }
    void SetProgress(float fraction, std::wstring_view text) override {
        listener_.SetProgress(fraction, text);
    }
    void ResetProgress() override { listener_.ResetProgress(); }
    void EndProgress() override { listener_.EndProgress(); }
    bool ProgressActive() const override { return listener_.ProgressActive(); }

  private:
    Feedback& listener_;
    bool any_ = false;
};

}  // namespace skyvault
