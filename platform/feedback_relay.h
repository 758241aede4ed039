// A feedback in front of another: passes everything on. Derive to listen in, or to keep something back.
#pragma once

#include "platform/feedback.h"

namespace skyvault {

class FeedbackRelay : public Feedback {
  public:
    /// The listener is kept.
    explicit FeedbackRelay(Feedback& listener) : listener_(listener) {}

    void Information(const std::wstring& text) override { listener_.Information(text); }
    void Error(const std::wstring& text) override { listener_.Error(text); }
    void BeginProgress() override { listener_.BeginProgress(); }
    void SetProgress(float fraction, std::wstring_view text) override {
        listener_.SetProgress(fraction, text);
    }
    void ResetProgress() override { listener_.ResetProgress(); }
    void EndProgress() override { listener_.EndProgress(); }
    bool ProgressActive() const override { return listener_.ProgressActive(); }

  private:
    Feedback& listener_;
};

}  // namespace skyvault
