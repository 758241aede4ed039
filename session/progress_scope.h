// The progress box for as long as an operation runs.
#pragma once

#include "platform/feedback.h"

namespace skyvault {

class ProgressScope {
  public:
    explicit ProgressScope(Feedback& feedback) : feedback_(feedback) { feedback_.BeginProgress(); }
    ~ProgressScope() { feedback_.EndProgress(); }
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

  private:
    Feedback& feedback_;
};

}  // namespace skyvault
