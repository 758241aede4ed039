#include "app/dialog_text.h"

namespace skyvault {

std::wstring TextOfControl(HWND dialog, int id) {
    const HWND control = GetDlgItem(dialog, id);
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    text.resize(
        static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
    return text;
}

}  // namespace skyvault
