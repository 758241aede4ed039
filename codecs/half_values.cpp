#include "codecs/half_values.h"

#include "platform/path_text.h"

namespace skyvault {
std::wstring TextOfLosses(const std::wstring& path, const HalfLosses& losses) {
    if (losses.beyond + losses.notNumbers == 0) return {};
    const std::wstring clamped =
        L"beyond 65504, the largest half float, clamped: " + std::to_wstring(losses.beyond);
    const std::wstring zeroed = L"no numbers, now 0: " + std::to_wstring(losses.notNumbers);
    const bool both = losses.beyond > 0 && losses.notNumbers > 0;
    return Quoted(path) + L": values " + (losses.beyond > 0 ? clamped : L"") + (both ? L"; " : L"") +
           (losses.notNumbers > 0 ? zeroed : L"") + L"\n";
}

}  // namespace skyvault
