// The parts of files.h that are the same on every system.
#include "platform/files.h"

#include <algorithm>

#include "platform/debug_line.h"
#include "platform/path_text.h"

namespace skyvault {

namespace {

std::wstring OwnFolder(const std::wstring& parent, std::wstring_view below) {
    if (parent.empty()) return {};
    std::wstring folder = JoinPath(parent, below);
    return CreateFolder(folder) ? folder : std::wstring();
}

}  // namespace

bool CreateFolder(const std::wstring& path) {
    std::wstring folder = path;
    if (kPathSeparator == L'\\') std::replace(folder.begin(), folder.end(), L'/', L'\\');
    const std::size_t root = RootLength(folder);
    if (folder.size() > root && folder.back() == kPathSeparator) folder.pop_back();
    if (folder.empty()) return false;
    if (FolderExists(folder)) return true;

    for (std::size_t i = root + 1; i <= folder.size(); ++i) {
        if (i < folder.size() && folder[i] != kPathSeparator) continue;
        const std::wstring part = folder.substr(0, i);
        if (FolderExists(part)) continue;
        if (!MakeOneFolder(part)) return false;
        DebugLine(L"New folder created: \"" + part + L"\"\n");
    }
    return FolderExists(folder);
}

bool RemoveFolderOfFiles(const std::wstring& path) {
    if (!FolderExists(path)) return true;
    for (const std::wstring& name : FindFiles(path)) RemoveFile(JoinPath(path, name));
    return RemoveEmptyFolder(path);
}

std::wstring ApplicationDataFolder() {
    const std::wstring maker = JoinPath(L"Brambleworks Studio", L"Skyvault");
    return OwnFolder(UserDataFolder(), maker);
}

std::wstring TemporaryFilesFolder() {
    return OwnFolder(UserDataFolder(), JoinPath(L"Brambleworks Studio", L"Temp"));
}

std::wstring DocumentsFolder() {
    return OwnFolder(UserDocumentsFolder(), L"Skyvault");
}

}  // namespace skyvault
