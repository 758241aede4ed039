// The program's folder for temporary files, one of the tests' own.
#pragma once

#include <cstdlib>

#include "platform/files.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {

/// From the first of them on, the user's home is a new folder and TemporaryFilesFolder() is in it, where no
/// other process writes. (On Windows the places are the system's to choose: tests there share them.)
class OwnTemporaryFiles {
  public:
    OwnTemporaryFiles() {
#ifndef _WIN32
        setenv("HOME", ToUtf8(Home()).c_str(), 1);
        unsetenv("XDG_CONFIG_HOME");
#endif
        TemporaryFilesFolder();
    }
    /// True when nothing is left in it; always true on Windows.
    bool Empty() const {
        const bool shared = kPathSeparator == L'\\';
        return shared || FindFiles(TemporaryFilesFolder()).empty();
    }
    static std::wstring Home() {
        static const TemporaryFolder home;
        return home.Path();
    }
};

}  // namespace skyvault::test
