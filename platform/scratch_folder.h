// A folder of one operation's own for its temporary files.
#pragma once

#include <string>

namespace skyvault {

/// A new folder in TemporaryFilesFolder(), or where none can be made there (a machine user without a home) in
/// the system's folder for temporary files. Every operation has one to itself, so that two running programs
/// do not disturb each other's files. The destructor removes it with the files in it, and so does
/// AbandonPendingOutputs; what a crashed program left behind is removed by a later one, a day after.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    bool Exists() const { return !path_.empty(); }

    /// The path of a file in the folder; empty when the folder could not be made.
    std::wstring Path(const std::wstring& name) const;

  private:
    std::wstring path_;
};

}  // namespace skyvault
