// Whether anything went wrong aloud: the messages of an operation, passed on and remembered.
#pragma once

#include "platform/feedback_relay.h"

namespace skyvault {

class NotedErrors final : public FeedbackRelay {
  public:
    using FeedbackRelay::FeedbackRelay;

    /// From now on nothing has been said.
    void Forget() { any_ = false; }
    bool Any() const { return any_; }

    void Error(const std::wstring& text) override {
        any_ = true;
        FeedbackRelay::Error(text);
    }

  private:
    bool any_ = false;
};

}  // namespace skyvault
