// The program's folder for temporary files, one for each test.
#pragma once

#include <string>

#include "tests/temporary_folder.h"

namespace skyvault::test {

/// What TemporaryFilesFolder() gives while this lives is a folder nobody else writes to. (On Windows the
/// place is the system's to choose: tests there share it.)
class OwnTemporaryFiles {
  public:
    OwnTemporaryFiles();
    ~OwnTemporaryFiles();
    /// True when nothing is left in it; always true on Windows.
    bool Empty() const;

  private:
    TemporaryFolder home_;
    std::string before_;
};

}  // namespace skyvault::test
