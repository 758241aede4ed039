#include <windows.h>

#include "platform/text_case.h"

namespace skyvault {

std::wstring UpperCase(std::wstring_view text) {
    std::wstring result(text);
    CharUpperBuffW(result.data(), static_cast<DWORD>(result.size()));
    return result;
}

std::wstring LowerCase(std::wstring_view text) {
    std::wstring result(text);
    CharLowerBuffW(result.data(), static_cast<DWORD>(result.size()));
    return result;
}

}  // namespace skyvault
