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
    return stat(ToSystemBytes(path).c_str(), &status) == 0;
}

std::wstring HomeFolder() {
    const char* home = std::getenv("HOME");
    if (home && *home) return FromSystemBytes(home);
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? FromSystemBytes(user->pw_dir) : std::wstring();
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
    const std::string source = ToSystemBytes(from), target = ToSystemBytes(to);
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
    const std::string source = ToSystemBytes(from), target = ToSystemBytes(to);
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) {
        // rename alone would replace a write-protected file.
        if (access(target.c_str(), W_OK) != 0) return false;
        constexpr mode_t kPermissions = 0777;
        // A file system without permissions is no reason to fail.
        static_cast<void>(chmod(source.c_str(), status.st_mode & kPermissions));
    }
    return rename(source.c_str(), target.c_str()) == 0;
}

std::wstring WrittenThrough(const std::wstring& path) {
    const std::string name = ToSystemBytes(path);
    struct stat status {};
    if (lstat(name.c_str(), &status) != 0) return path;
    if (S_ISLNK(status.st_mode)) {
        const std::unique_ptr<char, decltype(&std::free)> target(realpath(name.c_str(), nullptr), &std::free);
        return target ? WrittenThrough(FromSystemBytes(target.get())) : std::wstring();
    }
    return S_ISREG(status.st_mode) || S_ISDIR(status.st_mode) ? path : std::wstring();
}

bool SamePlace(const std::wstring& a, const std::wstring& b) {
    const std::wstring first = WrittenThrough(a), second = WrittenThrough(b);
    const auto folder = [](const std::wstring& path) {
        const std::wstring_view part = FolderPart(path);
        return part.empty() ? std::wstring(path.starts_with(L'/') ? L"/" : L".") : std::wstring(part);
    };
    return !first.empty() && FileNamePart(first) == FileNamePart(second) &&
           SameFolder(folder(first), folder(second));
}

Cause WhyNotOpened(const std::wstring& path) {
    struct stat status {};
    if (stat(ToSystemBytes(path).c_str(), &status) != 0) {
        switch (errno) {
            case ENOENT:
                return Cause::NoFile;
            case ENOTDIR:
                return Cause::NoFolder;
            case EACCES:
                return Cause::NotReadable;
            case ENAMETOOLONG:
                return Cause::NameTooLong;
            default:
                return Cause::Unknown;
        }
    }
    if (S_ISDIR(status.st_mode)) return Cause::IsFolder;
    if (!S_ISREG(status.st_mode)) return Cause::NotAPlainFile;
    return access(ToSystemBytes(path).c_str(), R_OK) != 0 ? Cause::NotReadable : Cause::Unknown;
}

Cause WhyNotWritten(const std::wstring& path, const std::wstring& temporary) {
    if (FolderExists(path)) return Cause::IsFolder;
    const std::wstring place = WrittenThrough(path);
    if (place.empty()) return Cause::NotAPlainFile;
    if (FileExists(place) && access(ToSystemBytes(place).c_str(), W_OK) != 0) {
        return errno == EROFS ? Cause::ReadOnlySystem : Cause::ReadOnlyFile;
    }
    const std::string name = ToSystemBytes(temporary);
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    int reason = file < 0 ? errno : 0;
    if (file >= 0) {
        // More than the blocks that are left to the file may have room for.
        const std::vector<char> probe(std::size_t{1} << 20);
        const ssize_t written = write(file, probe.data(), probe.size());
        if (written < 0) reason = errno;
        if (written >= 0 && static_cast<std::size_t>(written) < probe.size() &&
            write(file, probe.data(), 1) < 0) {
            reason = errno;
        }
        close(file);
        unlink(name.c_str());
    }
    switch (reason) {
        case ENOSPC:
        case EDQUOT:
            return Cause::DiskFull;
        case EFBIG:
            return Cause::FileTooLarge;
        case EACCES:
        case EPERM:
            return Cause::NoPermission;
        case EROFS:
            return Cause::ReadOnlySystem;
        case ENOENT:
        case ENOTDIR:
            return Cause::NoFolder;
        default:
            break;
    }
    struct stat status {};
    const bool tooLong = stat(ToSystemBytes(path).c_str(), &status) != 0 && errno == ENAMETOOLONG;
    return tooLong || reason == ENAMETOOLONG ? Cause::NameTooLong : Cause::Unknown;
}

bool RemoveFile(const std::wstring& path) {
    return unlink(ToSystemBytes(path).c_str()) == 0;
}

bool MakeNewFile(const std::wstring& path) {
    const int descriptor = open(ToSystemBytes(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    return descriptor >= 0 && close(descriptor) == 0;
}

bool MakeOneFolder(const std::wstring& path) {
    return mkdir(ToSystemBytes(path).c_str(), 0777) == 0;
}

bool RemoveEmptyFolder(const std::wstring& path) {
    return rmdir(ToSystemBytes(path).c_str()) == 0;
}

std::vector<std::wstring> FindFiles(const std::wstring& folder) {
    std::vector<std::wstring> names;
    const auto close = [](DIR* opened) { closedir(opened); };
    const std::unique_ptr<DIR, decltype(close)> entries(opendir(ToSystemBytes(folder).c_str()), close);
    if (!entries) return names;
    while (const dirent* entry = readdir(entries.get())) {
        std::wstring name = FromSystemBytes(entry->d_name);
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
    return std::wstring(FolderPart(FromSystemBytes(path)));
}

std::wstring UserDataFolder() {
    const char* configured = std::getenv("XDG_CONFIG_HOME");
    if (configured && *configured == '/') return FromSystemBytes(configured);
    const std::wstring home = HomeFolder();
    return home.empty() ? home : JoinPath(home, L".config");
}

std::wstring SystemTemporaryFolder() {
    const char* configured = std::getenv("TMPDIR");
    return configured && *configured == '/' ? FromSystemBytes(configured) : L"/tmp";
}

std::wstring UserDocumentsFolder() {
    const std::wstring home = HomeFolder();
    return home.empty() ? home : JoinPath(home, L"Documents");
}

}  // namespace skyvault
