// 8-bit text in the system's own code page (UTF-8 elsewhere than on Windows).
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

std::wstring FromSystemText(std::string_view text);

/// Characters the code page lacks become its replacement character.
std::string ToSystemText(std::wstring_view text);

}  // namespace skyvault
