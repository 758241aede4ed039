#include "platform/path_text.h"

#include "platform/system_text.h"

namespace skyvault {

namespace {

bool IsSeparator(wchar_t c) {
    return c == L'\\' || c == L'/';
}

}  // namespace

std::wstring JoinPath(std::wstring_view folder, std::wstring_view name) {
    std::wstring path(folder);
    if (folder.empty()) {
        path = name;
        return path;
    }
    if (!name.empty() && IsSeparator(name.front())) name.remove_prefix(1);
    if (!IsSeparator(folder.back())) path += kPathSeparator;
    path += name;
    return path;
}

std::wstring_view FileNamePart(std::wstring_view path) {
    const std::size_t end = path.find_last_of(L"\\/:");
    return end == std::wstring_view::npos ? path : path.substr(end + 1);
}

std::wstring_view FolderPart(std::wstring_view path) {
    const std::size_t end = path.find_last_of(L"\\/");
    return end == std::wstring_view::npos ? std::wstring_view{} : path.substr(0, end);
}

std::wstring Quoted(std::wstring_view path) {
    std::wstring quoted = L"\"";
    return quoted.append(path) += L'"';
}

std::wstring UpperExtension(std::wstring_view path) {
    const std::size_t dot = path.rfind(L'.');
    return dot == std::wstring_view::npos ? std::wstring() : UpperCase(path.substr(dot + 1));
}

std::wstring WithoutExtension(std::wstring_view path) {
    const std::wstring_view name = FileNamePart(path);
    const std::size_t dot = name.rfind(L'.');
    if (dot != std::wstring_view::npos) path.remove_suffix(name.size() - dot);
    return std::wstring(path);
}

}  // namespace skyvault
