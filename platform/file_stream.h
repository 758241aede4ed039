// A file read or written from front to back, with the patience desktop files need: another program may
// hold the file for a moment, so opening one that is in use is tried ten times, 100 ms apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace skyvault {

/// The program-wide switch: while it is on, files opened for reading are shared with other readers and a
/// failure to open is final at once. Off at start.
void SetShareAndFailAtOnce(bool on);

enum class FileUse {
    Read,        ///< must exist; nobody else may have it open, unless the switch is on
    ReadShared,  ///< must exist; other readers are welcome
    Write,       ///< created, or opened over an older one; holds exactly what was written once closed
};

class FileStream {
  public:
    FileStream() = default;
    FileStream(const std::wstring& path, FileUse use);
    ~FileStream();
    FileStream(FileStream&&) noexcept;
    FileStream& operator=(FileStream&&) noexcept;

    bool IsOpen() const;

    /// Reads exactly n bytes; false when fewer arrived (the position is then undefined).
    bool Read(void* destination, std::size_t n);

    /// Writes n bytes; false on a full disk or any other error.
    bool Write(const void* source, std::size_t n);

    /// Moves to an absolute position in bytes.
    bool Seek(std::uint64_t position);

    /// Size of the open file in bytes; 0 when nothing is open.
    std::uint64_t Size() const;

    /// Closes; a written file is cut to what was written. False when that failed.
    bool Close();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The whole file as bytes; false when it cannot be opened, is larger than `limit` bytes or cannot be
/// read to its end.
bool ReadWholeFile(const std::wstring& path, std::vector<std::byte>& bytes,
                   std::uint64_t limit = std::uint64_t{1} << 32, FileUse use = FileUse::Read);

}  // namespace skyvault
