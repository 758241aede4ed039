#include "session/not_available.h"

namespace skyvault {

void TellNotAvailable(Feedback& feedback, const std::wstring& name) {
    feedback.Information(name + L" is not available in this version yet.");
}

}  // namespace skyvault
