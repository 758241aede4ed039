// Cutting paths into their parts, as text. Nothing here asks the file system.
//
// On Windows the separators are "\" and "/", and ":" ends a drive letter; elsewhere the separator is "/", and
// the other two are characters of names like any. Paths the program joins itself use the system's own
// separator.
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

/// How much of the path is its root, which is never created: "C:\", "\\server\share\", "\\?\C:\",
/// "\\?\UNC\server\share\", "\" or "/"; 0 for a relative path.
std::size_t RootLength(std::wstring_view path);

/// The text after the last separator or ":"; the whole text when there is none.
std::wstring_view FileNamePart(std::wstring_view path);

/// The text before the last separator; empty when there is none.
std::wstring_view FolderPart(std::wstring_view path);

/// The text with its control characters as "\x1B", so that a file's name cannot steer a terminal or add a
/// line.
std::wstring Printable(std::wstring_view text);

/// The path in double quotes, printable, for messages.
std::wstring Quoted(std::wstring_view path);

/// The text after the last full stop of the path, in upper case; empty when there is none.
std::wstring UpperExtension(std::wstring_view path);

/// The path with its file name's extension (from the last full stop of the file name on) taken off.
std::wstring WithoutExtension(std::wstring_view path);

}  // namespace skyvault
