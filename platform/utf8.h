// Between the program's wide text (UTF-16 on Windows, UTF-32 elsewhere), UTF-8 and UTF-16.
//
// What is not valid Unicode becomes U+FFFD, in every direction; nothing fails.
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view text);

std::u16string ToUtf16(std::wstring_view text);
std::wstring FromUtf16(std::u16string_view text);

}  // namespace skyvault
