// What a command says in place of a conversion this build does not have.
#pragma once

#include "platform/feedback.h"
#include "session/layouts.h"

namespace skyvault {

void TellNotAvailable(Feedback& feedback, const LayoutRow& layout);

}  // namespace skyvault
