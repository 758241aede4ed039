#include <windows.h>

#include <shlobj.h>

#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/system_text.h"

namespace skyvault {

namespace {

std::wstring ShellFolder(int csidl) {
    wchar_t path[MAX_PATH] = {};
    return SUCCEEDED(SHGetFolderPathW(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, path)) ? path
                                                                                          : std::wstring();
}

/// What tells folders apart: the volume and the number on it. False when there is no such folder.
bool FolderIdentity(const std::wstring& path, BY_HANDLE_FILE_INFORMATION& identity) {
    const HANDLE folder = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (folder == INVALID_HANDLE_VALUE) return false;
    const bool known = GetFileInformationByHandle(folder, &identity);
    CloseHandle(folder);
    return known && (identity.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

bool FileExists(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool FolderExists(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool SameFolder(const std::wstring& a, const std::wstring& b) {
    BY_HANDLE_FILE_INFORMATION first{}, second{};
    return FolderIdentity(a, first) && FolderIdentity(b, second) &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

std::uint64_t FileSizeOf(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (path.empty() || !GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return 0;
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return 0;
    return (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
}

bool MoveToNewName(const std::wstring& from, const std::wstring& to) {
    return MoveFileW(from.c_str(), to.c_str());
}

std::wstring WrittenThrough(const std::wstring& path) {
    return path;
}

bool SamePlace(const std::wstring& a, const std::wstring& b) {
    const auto folder = [](const std::wstring& path) {
        const std::wstring_view part = FolderPart(path);
        return part.empty() ? std::wstring(L".") : std::wstring(part) + L'\\';
    };
    return LowerCase(FileNamePart(a)) == LowerCase(FileNamePart(b)) && SameFolder(folder(a), folder(b));
}

Cause WhyNotOpened(const std::wstring& path) {
    if (FolderExists(path)) return Cause::IsFolder;
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        const bool onDisk = GetFileType(file) == FILE_TYPE_DISK;
        CloseHandle(file);
        return onDisk ? Cause::Unknown : Cause::NotAPlainFile;
    }
    switch (GetLastError()) {
        case ERROR_FILE_NOT_FOUND:
            return Cause::NoFile;
        case ERROR_PATH_NOT_FOUND:
            return Cause::NoFolder;
        case ERROR_ACCESS_DENIED:
            return Cause::NotReadable;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return Cause::InUse;
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_INVALID_NAME:
            return Cause::NameTooLong;
        default:
            return Cause::Unknown;
    }
}

Cause WhyNotWritten(const std::wstring& path, const std::wstring& temporary) {
    if (FolderExists(path)) return Cause::IsFolder;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        return Cause::ReadOnlyFile;
    DWORD reason = attributes == INVALID_FILE_ATTRIBUTES ? GetLastError() : ERROR_SUCCESS;
    if (reason == ERROR_FILE_NOT_FOUND || reason == ERROR_SUCCESS) {
        const HANDLE file = CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                        FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        reason = file == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
        if (file != INVALID_HANDLE_VALUE) {
            const std::vector<char> probe(std::size_t{1} << 20);
            DWORD written = 0;
            SetFilePointer(file, 0, nullptr, FILE_END);
            const bool fits =
                WriteFile(file, probe.data(), static_cast<DWORD>(probe.size()), &written, nullptr);
            if (!fits || written < probe.size()) reason = fits ? ERROR_DISK_FULL : GetLastError();
            CloseHandle(file);
        }
    }
    switch (reason) {
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return Cause::DiskFull;
        case ERROR_FILE_TOO_LARGE:
            return Cause::FileTooLarge;
        case ERROR_ACCESS_DENIED:
            return Cause::NoPermission;
        case ERROR_WRITE_PROTECT:
            return Cause::ReadOnlySystem;
        case ERROR_PATH_NOT_FOUND:
            return Cause::NoFolder;
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_INVALID_NAME:
            return Cause::NameTooLong;
        default:
            return Cause::Unknown;
    }
}

bool MoveOver(const std::wstring& from, const std::wstring& to) {
    // Another program may hold the old file for a moment: a second one of ours that reads its settings, a
    // virus scanner, a backup.
    constexpr int kAttempts = 10;
    constexpr DWORD kMillisecondsBetween = 100;
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING)) return true;
        const DWORD error = GetLastError();
        const bool held = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        const DWORD attributes = GetFileAttributesW(to.c_str());
        constexpr DWORD kForGood = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
        if (!held || attributes == INVALID_FILE_ATTRIBUTES || (attributes & kForGood) ||
            attempt == kAttempts) {
            return false;
        }
        Sleep(kMillisecondsBetween);
    }
}

bool RemoveFile(const std::wstring& path) {
    return DeleteFileW(path.c_str());
}

bool MakeNewFile(const std::wstring& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file);
}

bool MakeOneFolder(const std::wstring& path) {
    return CreateDirectoryW(path.c_str(), nullptr);
}

bool RemoveEmptyFolder(const std::wstring& path) {
    return RemoveDirectoryW(path.c_str());
}

std::vector<std::wstring> FindFiles(const std::wstring& folder) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"\\*.*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..") names.push_back(name);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return names;
}

std::wstring ProgramFolder() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2);
    }
    return std::wstring(FolderPart(path));
}

std::wstring UserDataFolder() {
    return ShellFolder(CSIDL_APPDATA);
}

std::wstring SystemTemporaryFolder() {
    wchar_t path[MAX_PATH + 1] = {};
    const DWORD length = GetTempPathW(MAX_PATH + 1, path);
    return length <= MAX_PATH ? std::wstring(path, length) : std::wstring();
}

std::wstring UserDocumentsFolder() {
    return ShellFolder(CSIDL_PERSONAL);
}

}  // namespace skyvault
