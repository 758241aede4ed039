// Cutting paths into their parts, as text. Nothing here asks the file system.
//
// The separators are "\" and "/", and ":" ends a drive letter. Paths the program joins itself use the
// system's own separator.
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

/// The separator the program joins with: '\\' on Windows, '/' elsewhere.
#ifdef _WIN32
inline constexpr wchar_t kPathSeparator = L'\\';
#else
inline constexpr wchar_t kPathSeparator = L'/';
#endif

/// folder + separator + name; just the name when the folder is empty; no doubled separator.
std::wstring JoinPath(std::wstring_view folder, std::wstring_view name);

/// The text after the last "\", "/" or ":"; the whole text when there is none.
std::wstring_view FileNamePart(std::wstring_view path);

/// The text before the last "\" or "/"; empty when there is none.
std::wstring_view FolderPart(std::wstring_view path);

/// The path in double quotes, for messages.
std::wstring Quoted(std::wstring_view path);

/// The text after the last full stop of the path, in upper case; empty when there is none.
std::wstring UpperExtension(std::wstring_view path);

/// The path with its file name's extension (from the last full stop of the file name on) taken off.
std::wstring WithoutExtension(std::wstring_view path);

}  // namespace skyvault
