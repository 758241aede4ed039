#include "session/not_available.h"

namespace skyvault {

void TellNotAvailable(Feedback& feedback, const LayoutRow& layout) {
    feedback.Information(std::wstring(layout.name) + L" is not available in this version yet.");
}

}  // namespace skyvault
