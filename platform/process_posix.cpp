#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

#include "platform/process.h"

namespace skyvault {

std::uint32_t ProcessId() {
    return static_cast<std::uint32_t>(getpid());
}

bool ProcessRuns(std::uint32_t id) {
    return kill(static_cast<pid_t>(id), 0) == 0 || errno != ESRCH;
}

std::string ProcessDomain() {
    std::array<char, 256> host{}, numbering{};
    gethostname(host.data(), host.size() - 1);
    // Containers can share a machine's name and still count their processes anew.
    const ssize_t length = readlink("/proc/self/ns/pid", numbering.data(), numbering.size());
    return std::string(host.data()) + ' ' +
           std::string(numbering.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
}

}  // namespace skyvault
