#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file_handle.h"
#include "platform/utf8.h"

namespace skyvault {

bool FileHandle::Open(const std::wstring& path, bool write, bool shared, bool* inUse) {
    const int flags = (write ? O_WRONLY | O_CREAT : O_RDONLY | O_NONBLOCK) | O_CLOEXEC;
    const int descriptor = open(ToSystemBytes(path).c_str(), flags, 0666);
    if (descriptor < 0) return false;
    struct stat status {};
    // Pipes and devices have no size and may never end; they can be written to.
    const bool isFile = fstat(descriptor, &status) == 0 && (write || S_ISREG(status.st_mode));
    // A lock stands in for the share mode; a file system that knows none is no reason to fail.
    const bool taken = flock(descriptor, (shared ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (!isFile || taken) {
        close(descriptor);
        if (inUse != nullptr) *inUse = isFile;
        return false;
    }
    descriptor_ = descriptor;
    return true;
}

bool FileHandle::IsOpen() const {
    return descriptor_ >= 0;
}

bool FileHandle::Read(void* destination, std::size_t n) {
    auto* bytes = static_cast<std::byte*>(destination);
    while (n > 0) {
        const ssize_t count = read(descriptor_, bytes, n);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        n -= static_cast<std::size_t>(count);
    }
    return true;
}

bool FileHandle::Write(const void* source, std::size_t n) {
    const auto* bytes = static_cast<const std::byte*>(source);
    while (n > 0) {
        const ssize_t count = write(descriptor_, bytes, n);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        n -= static_cast<std::size_t>(count);
    }
    return true;
}

bool FileHandle::Seek(std::uint64_t position) {
    return lseek(descriptor_, static_cast<off_t>(position), SEEK_SET) >= 0;
}

std::uint64_t FileHandle::Size() const {
    struct stat status {};
    return fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool FileHandle::Truncate(std::uint64_t size) {
    struct stat status {};
    // A device or pipe has no size to cut.
    if (fstat(descriptor_, &status) == 0 && !S_ISREG(status.st_mode)) return true;
    return ftruncate(descriptor_, static_cast<off_t>(size)) == 0;
}

bool FileHandle::Close() {
    if (descriptor_ < 0) return true;
    const bool closed = close(descriptor_) == 0;
    descriptor_ = -1;
    return closed;
}

}  // namespace skyvault
