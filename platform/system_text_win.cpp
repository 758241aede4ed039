#include <windows.h>

#include <climits>

#include "platform/system_text.h"

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

std::wstring FromSystemText(std::string_view text) {
    if (text.empty() || text.size() > INT_MAX) return {};
    const int length = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string ToSystemText(std::wstring_view text) {
    if (text.empty() || text.size() > INT_MAX) return {};
    const int length = static_cast<int>(text.size());
    std::string narrow(static_cast<std::size_t>(
                           WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr)),
                       '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, narrow.data(), static_cast<int>(narrow.size()),
                        nullptr, nullptr);
    return narrow;
}

}  // namespace skyvault
