#include "app/file_dialogs.h"

#include <commdlg.h>
#include <shobjidl.h>

#include <algorithm>
#include <array>

#include "app/window_helpers.h"
#include "codecs/picture_codec.h"
#include "platform/com_ptr_win.h"
#include "platform/files.h"
#include "platform/path_text.h"

namespace skyvault {
namespace {

/// Kinds this program reads on every machine. DDS, TGA, EXR and HDR are read without a codec.
constexpr std::wstring_view kFixedPatterns = L"*.BMP;*.DDS;*.GIF;*.JPG;*.JPEG;*.PNG;*.TGA;*.TIF;*.TIFF;";
constexpr const wchar_t* kHalfPatterns[] = {L"*.EXR;", L"*.HDR;"};

struct SaveFilterRow {
    const wchar_t* name;
    const wchar_t* pattern;
    const wchar_t* extension;
};
constexpr std::array<SaveFilterRow, 8> kSaveFilters{{
    {L"BMP (*.BMP)", L"*.BMP;", L".bmp"},
    {L"DDS (*.DDS)", L"*.DDS;", L".dds"},
    {L"GIF (*.GIF)", L"*.GIF;", L".gif"},
    {L"JPG (*.JPG)", L"*.JPG;", L".jpg"},
    {L"PNG (*.PNG)", L"*.PNG;", L".png"},
    {L"TIF (*.TIF)", L"*.TIF;", L".tif"},
    {L"EXR (*.EXR)", L"*.EXR;", L".exr"},
    {L"HDR (*.HDR)", L"*.HDR;", L".hdr"},
}};

/// Extensions that a chosen name loses when it is given another.
constexpr const wchar_t* kKnownExtensions[] = {L"BMP",  L"DDS", L"GIF",  L"JPG",  L"JPEG", L"JPE",
                                               L"JFIF", L"PNG", L"TIF",  L"TIFF", L"TGA",  L"HEIC",
                                               L"HEIF", L"MOV", L"HTML", L"HTM",  L"EXR",  L"HDR"};

/// What differs between the six kinds, by FileDialogKind.
struct DialogRow {
    bool save;
    const wchar_t* name;  ///< of the one filter; null: a picture list
    const wchar_t* pattern;
    const wchar_t* defaultExtension;  ///< null: none
    const wchar_t* givenExtension;    ///< after OK; null: by the chosen filter, or none when opening
};
constexpr DialogRow kDialogs[] = {
    {false, L"QTVR (*.MOV)", L"*.MOV", L"MOV", nullptr}, {true, L"QTVR (*.MOV)", L"*.MOV", L"MOV", L".mov"},
    {false, L"DDS (*.DDS)", L"*.DDS", L"DDS", nullptr},  {true, L"DDS (*.DDS)", L"*.DDS", L"DDS", L".dds"},
    {false, nullptr, nullptr, nullptr, nullptr},         {true, nullptr, nullptr, nullptr, nullptr},
};

/// Longest path the dialogs can return.
constexpr std::size_t kPathRoom = 32768;

bool ShowOpenDialog(OPENFILENAMEW& dialog) {
    static decltype(&GetOpenFileNameW) show = nullptr;
    return FindSystemFunction(show, L"comdlg32.dll", "GetOpenFileNameW") && show(&dialog);
}

bool ShowSaveDialog(OPENFILENAMEW& dialog) {
    static decltype(&GetSaveFileNameW) show = nullptr;
    return FindSystemFunction(show, L"comdlg32.dll", "GetSaveFileNameW") && show(&dialog);
}

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
    for (const wchar_t* const pattern : kHalfPatterns) {
        if (patterns.find(pattern) == std::wstring::npos) patterns += pattern;
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

bool FileDialogs::BuildFilters() {
    pictureOpenFilter_ = BuildPictureOpenFilter(ReadableExtensions());
    return !pictureOpenFilter_.empty();
}

std::wstring FileDialogs::Ask(HWND owner, const std::wstring& startPath, FileDialogKind kind,
                              const std::wstring& title, AppState& settings, const AcceptPath& accept) const {
    const auto number = static_cast<std::size_t>(kind);
    if (number >= std::size(kDialogs)) {
        ShowMessage(L"ERROR: unknown path type", true);
        return {};
    }
    const DialogRow& row = kDialogs[number];
    const bool pictureSave = kind == FileDialogKind::SavePicture;
    const std::wstring filter = row.name != nullptr ? SingleFilter(row.name, row.pattern)
                                : pictureSave       ? PictureSaveFilter()
                                                    : pictureOpenFilter_;
    // A full stop anywhere makes it the path of a file, unless it is a folder that is there.
    const bool isFolder = startPath.find(L'.') == std::wstring::npos || FolderExists(startPath);
    const std::wstring folder = isFolder ? startPath : std::wstring(FolderPart(startPath));
    std::vector<wchar_t> path(kPathRoom, L'\0');

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = filter.c_str();
    dialog.nFilterIndex = pictureSave ? static_cast<DWORD>(CheckedFilterIndex(settings.filterIndex)) : 1;
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
    dialog.lpstrTitle = title.c_str();
    dialog.lpstrDefExt = row.defaultExtension;
    dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST;
    if (!row.save) {
        dialog.Flags |= OFN_FILEMUSTEXIST;
        return ShowOpenDialog(dialog) ? path.data() : std::wstring();
    }
    // The dialog itself would ask about replacing the name as typed, which is not always a file that is
    // written. What is not accepted returns to the dialog with the name still in it.
    while (ShowSaveDialog(dialog)) {
        if (pictureSave)
            settings.filterIndex = CheckedFilterIndex(static_cast<std::int32_t>(dialog.nFilterIndex));
        const std::wstring chosen =
            GiveExtension(path.data(), pictureSave ? PictureSaveExtension(settings.filterIndex)
                                                   : std::wstring_view(row.givenExtension));
        if (accept == nullptr || accept(chosen)) return chosen;
    }
    return {};
}

std::wstring AskForFolder(HWND owner, const std::wstring& title, const std::wstring& startFolder) {
    ComPtr<IFileOpenDialog> dialog;
    if (FAILED(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER,
                                __uuidof(IFileOpenDialog), dialog.PutVoid()))) {
        return {};
    }
    FILEOPENDIALOGOPTIONS options = 0;
    if (FAILED(dialog->GetOptions(&options)) || FAILED(dialog->SetOptions(options | FOS_PICKFOLDERS)))
        return {};
    dialog->SetTitle(title.c_str());
    ComPtr<IShellItem> folder;
    if (!startFolder.empty() && SUCCEEDED(SHCreateItemFromParsingName(
                                    startFolder.c_str(), nullptr, __uuidof(IShellItem), folder.PutVoid()))) {
        dialog->SetFolder(folder.Get());
    }
    ComPtr<IShellItem> result;
    if (FAILED(dialog->Show(owner)) || FAILED(dialog->GetResult(result.Put()))) return {};
    PWSTR name = nullptr;
    if (FAILED(result->GetDisplayName(SIGDN_DESKTOPABSOLUTEPARSING, &name))) return {};
    std::wstring path = name;
    CoTaskMemFree(name);
    return path;
}

}  // namespace skyvault
