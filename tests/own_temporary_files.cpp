#include "tests/own_temporary_files.h"

#include <cstdlib>

#include "platform/files.h"

namespace skyvault::test {

#ifdef _WIN32
OwnTemporaryFiles::OwnTemporaryFiles() {
    TemporaryFilesFolder();
}
OwnTemporaryFiles::~OwnTemporaryFiles() = default;
bool OwnTemporaryFiles::Empty() const {
    return true;
}
#else
OwnTemporaryFiles::OwnTemporaryFiles() {
    if (const char* const value = std::getenv("XDG_CONFIG_HOME")) before_ = value;
    setenv("XDG_CONFIG_HOME", ToUtf8(home_.Path()).c_str(), 1);
    TemporaryFilesFolder();
}
OwnTemporaryFiles::~OwnTemporaryFiles() {
    if (before_.empty()) {
        unsetenv("XDG_CONFIG_HOME");
    } else {
        setenv("XDG_CONFIG_HOME", before_.c_str(), 1);
    }
}
bool OwnTemporaryFiles::Empty() const {
    return FindFiles(TemporaryFilesFolder()).empty();
}
#endif

}  // namespace skyvault::test
