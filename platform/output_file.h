// Writing a file so that its name never shows half a file: write beside it, then rename.
#pragma once

#include <string>

#include "platform/outcome.h"

namespace skyvault {

/// A new file beside the target, on the same volume, named ".TARGET.PROCESS-DOMAIN.part": no program takes it
/// for a picture. Write it anew under TemporaryPath() and call Commit(); without a Commit the destructor
/// removes the temporary file and the target stays as it was. A target that is a symbolic link stays one:
/// what it leads to is written.
class OutputFile {
  public:
    explicit OutputFile(std::wstring targetPath);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::wstring& TemporaryPath() const { return temporaryPath_; }

    /// Renames the temporary file to the target, replacing an older one. False when that fails (the
    /// target is a folder, is open elsewhere, was made read-only …), and for a file without a byte; the
    /// temporary file is then removed.
    bool Commit();

    /// CannotWrite, with the cause as far as the system tells. Ends the writing.
    Outcome Failed();

  private:
    std::wstring givenPath_, targetPath_;
    std::wstring temporaryPath_;
    bool finished_ = false;
};

/// Removes what processes of this machine that run no more have left half-written in the folder.
void RemoveAbandonedOutputs(const std::wstring& folder);

/// From now on the file, or the folder with the files in it, is removed by AbandonPendingOutputs. It need not
/// exist yet.
void AddPendingOutput(const std::wstring& path);
void ForgetPendingOutput(const std::wstring& path);

/// For a program that is interrupted and about to end: removes the temporary files of this process that
/// have not got their names yet, and its scratch folders; from now on every Commit fails. Callable from any
/// thread, also while another one writes. False while a file could not be removed because it is still open
/// (Windows): try again until its writer has closed it.
bool AbandonPendingOutputs();

}  // namespace skyvault
