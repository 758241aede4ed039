// Nobody to report to.
#pragma once

#include "platform/feedback.h"

namespace skyvault {

class SilentFeedback final : public Feedback {
  public:
    void Information(const std::wstring&) override {}
    void Error(const std::wstring&) override {}
    void BeginProgress() override {}
    void SetProgress(float, std::wstring_view) override {}
    void ResetProgress() override {}
    void EndProgress() override {}
    bool ProgressActive() const override { return false; }
};

}  // namespace skyvault
