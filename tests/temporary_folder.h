// A new folder for one test, removed with all its files at the end; and the program's folder for temporary
// files, one of the tests' own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/utf8.h"

namespace skyvault::test {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        // Several test programs run at the same time.
        static int counter = 0;
        do {
            folder_ =
                std::filesystem::temp_directory_path() /
                ("skyvault-test-" + std::to_string(MillisecondClock()) + "-" + std::to_string(counter++));
        } while (!std::filesystem::create_directory(folder_));
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::wstring Path() const {
        const std::u8string utf8 = folder_.u8string();
        return FromUtf8({reinterpret_cast<const char*>(utf8.data()), utf8.size()});
    }
    std::wstring Path(const std::wstring& name) const { return JoinPath(Path(), name); }
    std::wstring operator/(std::wstring_view name) const { return JoinPath(Path(), name); }

    /// Writes a file and returns its path.
    std::wstring Write(const std::wstring& name, const std::string& bytes) const {
        std::ofstream(SystemPath(name), std::ios::binary) << bytes;
        return Path(name);
    }

    /// The bytes of a file; empty when there is none.
    std::string Read(const std::wstring& name) const {
        std::ifstream file(SystemPath(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    std::size_t FileCount() const {
        const std::filesystem::directory_iterator entries(folder_);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    /// The file's path as the standard library takes it.
    std::filesystem::path SystemPath(const std::wstring& name) const {
        // Through UTF-8: elsewhere than on Windows wide paths depend on the locale.
        const std::string utf8 = ToUtf8(Path(name));
        return std::u8string(utf8.begin(), utf8.end());
    }

  private:
    std::filesystem::path folder_;
};

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
