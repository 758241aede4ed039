// A folder for one test's files, removed with everything in it.
#pragma once

#include <atomic>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/clock.h"
#include "platform/path_text.h"

namespace skyvault {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        static std::atomic<int> counter{0};
        std::error_code error;
        do {
            path_ =
                std::filesystem::temp_directory_path(error) /
                (L"skyvault-test-" + std::to_wstring(MillisecondClock()) + L"-" + std::to_wstring(counter++));
        } while (!std::filesystem::create_directories(path_, error) && !error);
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::wstring Path() const { return path_.wstring(); }
    std::wstring operator/(std::wstring_view name) const { return JoinPath(Path(), name); }

  private:
    std::filesystem::path path_;
};

}  // namespace skyvault
