#include "platform/path_text.h"

#include "platform/system_text.h"

namespace skyvault {

namespace {

#ifdef _WIN32
constexpr std::wstring_view kSeparators = L"\\/", kNameEnds = L"\\/:";
#else
constexpr std::wstring_view kSeparators = L"/", kNameEnds = L"/";
#endif

bool IsSeparator(wchar_t c) {
    return kSeparators.find(c) != std::wstring_view::npos;
}

/// Past the next `count` names and the separator behind each.
std::size_t SkipNames(std::wstring_view path, std::size_t at, int count) {
    for (int i = 0; i < count && at < path.size(); ++i) {
        const std::size_t end = path.find_first_of(kSeparators, at);
        at = end == std::wstring_view::npos ? path.size() : end + 1;
    }
    return at;
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

std::size_t RootLength(std::wstring_view path) {
    const auto startsLike = [&](std::wstring_view pattern) {
        for (std::size_t i = 0; i < pattern.size(); ++i) {
            if (i == path.size()) return false;
            if (pattern[i] == L'\\' ? !IsSeparator(path[i]) : UpperCase(path.substr(i, 1))[0] != pattern[i]) {
                return false;
            }
        }
        return true;
    };
    if (kPathSeparator == L'\\') {
        if (startsLike(L"\\\\?\\UNC\\")) return SkipNames(path, 8, 2);
        if (startsLike(L"\\\\?\\") || startsLike(L"\\\\.\\")) return SkipNames(path, 4, 1);
        if (startsLike(L"\\\\")) return SkipNames(path, 2, 2);
        if (path.size() >= 2 && path[1] == L':') return path.size() > 2 && IsSeparator(path[2]) ? 3 : 2;
    }
    return !path.empty() && IsSeparator(path.front()) ? 1 : 0;
}

std::wstring_view FileNamePart(std::wstring_view path) {
    const std::size_t end = path.find_last_of(kNameEnds);
    return end == std::wstring_view::npos ? path : path.substr(end + 1);
}

std::wstring_view FolderPart(std::wstring_view path) {
    const std::size_t end = path.find_last_of(kSeparators);
    return end == std::wstring_view::npos ? std::wstring_view{} : path.substr(0, end);
}

std::wstring Printable(std::wstring_view text) {
    constexpr const wchar_t* kDigits = L"0123456789ABCDEF";
    std::wstring printable;
    printable.reserve(text.size());
    for (const wchar_t c : text) {
        if (c < 0x20 || (c >= 0x7f && c < 0xa0)) {
            printable += {L'\\', L'x', kDigits[c >> 4], kDigits[c & 15]};
        } else {
            printable += c;
        }
    }
    return printable;
}

std::wstring Quoted(std::wstring_view path) {
    return L'"' + Printable(path) + L'"';
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
