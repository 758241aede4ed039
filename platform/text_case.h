// Upper and lower case as the operating system sees it (CharUpperBuffW, CharLowerBuffW on Windows).
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

std::wstring UpperCase(std::wstring_view text);
std::wstring LowerCase(std::wstring_view text);

}  // namespace skyvault
