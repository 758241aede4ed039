// Text as the operating system sees it: upper and lower case, and 8-bit text in its own code page (UTF-8
// elsewhere than on Windows).
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

std::wstring UpperCase(std::wstring_view text);
std::wstring LowerCase(std::wstring_view text);

std::wstring FromSystemText(std::string_view text);

/// Characters the code page lacks become its replacement character.
std::string ToSystemText(std::wstring_view text);

}  // namespace skyvault
