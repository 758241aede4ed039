#include "app/file_dialogs.h"

#include <commdlg.h>
#include <shobjidl.h>

#include <vector>

#include "app/file_filters.h"
#include "app/message_box.h"
#include "app/system_function.h"
#include "image/picture_codec.h"
#include "platform/com_ptr_win.h"
#include "platform/files.h"
#include "platform/path_text.h"

namespace skyvault {
namespace {

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

bool MayReplace(HWND owner, const std::wstring& path) {
    const std::wstring question =
        std::wstring(FileNamePart(path)) + L" already exists.\nDo you want to replace it?";
    return MessageBoxW(owner, question.c_str(), kProgramName, MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) ==
           IDYES;
}

}  // namespace

bool FileDialogs::BuildFilters() {
    pictureOpenFilter_ = BuildPictureOpenFilter(ReadableExtensions());
    return !pictureOpenFilter_.empty();
}

std::wstring FileDialogs::Ask(HWND owner, const std::wstring& startPath, FileDialogKind kind,
                              const std::wstring& title, AppState& settings) const {
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
    // A full stop anywhere makes it the path of a file.
    const std::wstring folder =
        startPath.find(L'.') == std::wstring::npos ? startPath : std::wstring(FolderPart(startPath));
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
    // The dialog would ask about replacing the name as typed, without the extension it gets afterwards:
    // the question is put here, and No returns to the dialog with the name still in it.
    while (ShowSaveDialog(dialog)) {
        if (pictureSave)
            settings.filterIndex = CheckedFilterIndex(static_cast<std::int32_t>(dialog.nFilterIndex));
        const std::wstring chosen =
            GiveExtension(path.data(), pictureSave ? PictureSaveExtension(settings.filterIndex)
                                                   : std::wstring_view(row.givenExtension));
        if (!FileExists(chosen) || MayReplace(owner, chosen)) return chosen;
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
