#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/utf8.h"

namespace skyvault {

namespace {

bool Status(const std::wstring& path, struct stat& status) {
    return stat(ToUtf8(path).c_str(), &status) == 0;
}

std::wstring HomeFolder() {
    const char* home = std::getenv("HOME");
    if (home && *home) return FromUtf8(home);
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? FromUtf8(user->pw_dir) : std::wstring();
}

}  // namespace

bool FileExists(const std::wstring& path) {
    struct stat status {};
    return Status(path, status) && !S_ISDIR(status.st_mode);
}

bool FolderExists(const std::wstring& path) {
    struct stat status {};
    return Status(path, status) && S_ISDIR(status.st_mode);
}

bool SameFolder(const std::wstring& a, const std::wstring& b) {
    struct stat first {
    }, second{};
    return Status(a, first) && Status(b, second) && S_ISDIR(first.st_mode) && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

std::uint64_t FileSizeOf(const std::wstring& path) {
    struct stat status {};
    return Status(path, status) && !S_ISDIR(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool MoveToNewName(const std::wstring& from, const std::wstring& to) {
    const std::string source = ToUtf8(from), target = ToUtf8(to);
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return true;
    const int reason = errno;
    struct stat status {};
    if (lstat(target.c_str(), &status) == 0) return false;
    // Not every file system can refuse an existing name in the same step.
    if (reason == EINVAL || reason == ENOSYS) return rename(source.c_str(), target.c_str()) == 0;
    if (reason != EXDEV) return false;
    std::error_code error;
    if (!std::filesystem::copy_file(source, target, error)) {
        if (error != std::errc::file_exists) unlink(target.c_str());
        return false;
    }
    return unlink(source.c_str()) == 0;
}

bool MoveOver(const std::wstring& from, const std::wstring& to) {
    const std::string source = ToUtf8(from), target = ToUtf8(to);
    // rename alone would replace a write-protected file.
    if (access(target.c_str(), F_OK) == 0 && access(target.c_str(), W_OK) != 0) return false;
    return rename(source.c_str(), target.c_str()) == 0;
}

bool RemoveFile(const std::wstring& path) {
    return unlink(ToUtf8(path).c_str()) == 0;
}

bool MakeNewFile(const std::wstring& path) {
    const int descriptor = open(ToUtf8(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    return descriptor >= 0 && close(descriptor) == 0;
}

bool MakeOneFolder(const std::wstring& path) {
    return mkdir(ToUtf8(path).c_str(), 0777) == 0;
}

bool RemoveEmptyFolder(const std::wstring& path) {
    return rmdir(ToUtf8(path).c_str()) == 0;
}

std::vector<std::wstring> FindFiles(const std::wstring& folder) {
    std::vector<std::wstring> names;
    const auto close = [](DIR* opened) { closedir(opened); };
    const std::unique_ptr<DIR, decltype(close)> entries(opendir(ToUtf8(folder).c_str()), close);
    if (!entries) return names;
    while (const dirent* entry = readdir(entries.get())) {
        std::wstring name = FromUtf8(entry->d_name);
        if (name != L"." && name != L"..") names.push_back(std::move(name));
    }
    return names;
}

std::wstring ProgramFolder() {
    std::string path(1024, '\0');
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0) return {};
        if (static_cast<std::size_t>(length) < path.size()) {
            path.resize(static_cast<std::size_t>(length));
            break;
        }
        path.resize(path.size() * 2);
    }
    return std::wstring(FolderPart(FromUtf8(path)));
}

std::wstring UserDataFolder() {
    const char* configured = std::getenv("XDG_CONFIG_HOME");
    if (configured && *configured == '/') return FromUtf8(configured);
    const std::wstring home = HomeFolder();
    return home.empty() ? home : JoinPath(home, L".config");
}

std::wstring UserDocumentsFolder() {
    const std::wstring home = HomeFolder();
    return home.empty() ? home : JoinPath(home, L"Documents");
}

}  // namespace skyvault
