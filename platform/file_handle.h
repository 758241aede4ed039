// One open file of the system, the piece of FileStream that differs between systems.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace skyvault {

/// Owns the system's handle; reads and writes go on from where the last one ended.
class FileHandle {
  public:
    FileHandle() = default;
    ~FileHandle() { Close(); }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    /// One attempt. write: opened or created, an existing file keeps its contents. shared: other readers
    /// are admitted; otherwise nobody else may have the file open through a stream. inUse: whether it failed
    /// because somebody has, so that it may succeed in a moment.
    bool Open(const std::wstring& path, bool write, bool shared, bool* inUse = nullptr);
    bool IsOpen() const;

    /// True when exactly n bytes came or went.
    bool Read(void* destination, std::size_t n);
    bool Write(const void* source, std::size_t n);

    bool Seek(std::uint64_t position);
    std::uint64_t Size() const;

    /// Cuts the file at the position.
    bool Truncate(std::uint64_t size);
    bool Close();

  private:
#ifdef _WIN32
    void* handle_ = nullptr;
#else
    int descriptor_ = -1;
#endif
};

}  // namespace skyvault
