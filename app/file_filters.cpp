#include "app/file_filters.h"

#include <algorithm>
#include <array>

#include "platform/path_text.h"

namespace skyvault {
namespace {

/// Kinds this program reads on every machine. DDS and TGA are read without a codec.
constexpr std::wstring_view kFixedPatterns = L"*.BMP;*.DDS;*.GIF;*.JPG;*.JPEG;*.PNG;*.TGA;*.TIF;*.TIFF;";

struct SaveFilterRow {
    const wchar_t* name;
    const wchar_t* pattern;
    const wchar_t* extension;
};
constexpr std::array<SaveFilterRow, 6> kSaveFilters{{
    {L"BMP (*.BMP)", L"*.BMP;", L".bmp"},
    {L"DDS (*.DDS)", L"*.DDS;", L".dds"},
    {L"GIF (*.GIF)", L"*.GIF;", L".gif"},
    {L"JPG (*.JPG)", L"*.JPG;", L".jpg"},
    {L"PNG (*.PNG)", L"*.PNG;", L".png"},
    {L"TIF (*.TIF)", L"*.TIF;", L".tif"},
}};

/// Extensions that a chosen name loses when it is given another.
constexpr const wchar_t* kKnownExtensions[] = {L"BMP",  L"DDS", L"GIF",  L"JPG",  L"JPEG", L"JPE",
                                               L"JFIF", L"PNG", L"TIF",  L"TIFF", L"TGA",  L"HEIC",
                                               L"HEIF", L"MOV", L"HTML", L"HTM"};

}  // namespace

bool IsWellFormedPatternList(std::wstring_view patterns) {
    std::size_t stars = 0, stops = 0, ends = 0;
    for (const wchar_t c : patterns) {
        if (c == L'*')
            ++stars;
        else if (c == L'.')
            ++stops;
        else if (c == L';')
            ++ends;
        else if (!((c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9')))
            return false;
    }
    return stars == stops && stops == ends;
}

std::wstring BuildPictureOpenFilter(const std::vector<std::wstring>& codecExtensions) {
    if (codecExtensions.empty() || !IsWellFormedPatternList(kFixedPatterns)) return {};
    std::wstring patterns(kFixedPatterns);
    for (const std::wstring& extension : codecExtensions) {
        const std::wstring pattern = L"*." + extension + L";";
        if (IsWellFormedPatternList(pattern) && patterns.find(pattern) == std::wstring::npos) {
            patterns += pattern;
        }
    }
    return SingleFilter(L"Pictures", patterns) + SingleFilter(L"All files (*.*)", L"*.*");
}

std::wstring PictureSaveFilter() {
    std::wstring filter;
    for (const SaveFilterRow& row : kSaveFilters) filter += SingleFilter(row.name, row.pattern);
    return filter;
}

std::wstring_view PictureSaveExtension(std::int32_t filterIndex) {
    return kSaveFilters[static_cast<std::size_t>(CheckedFilterIndex(filterIndex) - 1)].extension;
}

std::int32_t CheckedFilterIndex(std::int32_t filterIndex) {
    constexpr std::int32_t kDefault = 4;
    return filterIndex >= 1 && filterIndex <= static_cast<std::int32_t>(kSaveFilters.size()) ? filterIndex
                                                                                             : kDefault;
}

std::wstring SingleFilter(std::wstring_view name, std::wstring_view pattern) {
    std::wstring filter(name);
    filter += L'\0';
    filter += pattern;
    filter += L'\0';
    return filter;
}

std::wstring GiveExtension(const std::wstring& path, std::wstring_view extension) {
    const std::wstring present = UpperExtension(FileNamePart(path));
    const bool known = std::any_of(std::begin(kKnownExtensions), std::end(kKnownExtensions),
                                   [&](const wchar_t* other) { return present == other; });
    std::wstring given = known ? WithoutExtension(path) : path;
    return given.append(extension);
}

}  // namespace skyvault
