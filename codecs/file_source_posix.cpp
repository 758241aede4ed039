#include "codecs/file_source_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/utf8.h"

namespace skyvault {

FileSource::FileSource(const std::wstring& path) {
    // Opening a pipe must not wait for its other end.
    descriptor_ = open(ToSystemBytes(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat status {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) return;
    size_ = static_cast<std::uint64_t>(status.st_size);
}

FileSource::~FileSource() {
    if (descriptor_ >= 0) close(descriptor_);
}

std::size_t FileSource::ReadSome(std::uint64_t at, void* to, std::size_t n) const {
    if (at >= size_) return 0;
    n = static_cast<std::size_t>(std::min<std::uint64_t>(n, size_ - at));
    if (descriptor_ < 0) {
        std::memcpy(to, memory_.data() + at, n);
        return n;
    }
    std::size_t done = 0;
    while (done < n) {
        const ssize_t count =
            pread(descriptor_, static_cast<char*>(to) + done, n - done, static_cast<off_t>(at + done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

}  // namespace skyvault
