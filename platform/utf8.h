// Between the program's wide text (UTF-16 on Windows, UTF-32 elsewhere), UTF-8 and UTF-16.
//
// What is not valid Unicode becomes U+FFFD, in every direction but between system bytes and text; nothing
// fails.
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view text);

/// File names and command lines outside of Windows are bytes that need not be UTF-8. A byte that belongs to
/// no valid sequence is carried as U+DC80 .. U+DCFF and becomes the same byte again: every name comes back as
/// it was. Text of Windows has no such bytes.
std::string ToSystemBytes(std::wstring_view text);
std::wstring FromSystemBytes(std::string_view bytes);

std::u16string ToUtf16(std::wstring_view text);
std::wstring FromUtf16(std::u16string_view text);

}  // namespace skyvault
