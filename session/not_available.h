// What a command says in place of a conversion this build does not have.
#pragma once

#include <string>

#include "platform/feedback.h"

namespace skyvault {

/// name: of the layout or dialog, as the menu calls it.
void TellNotAvailable(Feedback& feedback, const std::wstring& name);

}  // namespace skyvault
