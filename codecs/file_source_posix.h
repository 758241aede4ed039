// What pictures are read from: a file, or the bytes of one, at any place and in any order.
//
// A file is opened without a lock: any number of processes may read it at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace skyvault {

class FileSource {
  public:
    /// Of anything but a regular file, and of one that cannot be opened, there are no bytes.
    explicit FileSource(const std::wstring& path);
    /// The bytes must outlive this.
    explicit FileSource(std::span<const std::byte> file) : memory_(file), size_(file.size()) {}
    ~FileSource();
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    /// In bytes, as it was when the file was opened.
    std::uint64_t Size() const { return size_; }

    /// As many of n bytes as there are.
    std::size_t ReadSome(std::uint64_t at, void* to, std::size_t n) const;

    /// All of n bytes, or false.
    bool Read(std::uint64_t at, void* to, std::size_t n) const { return ReadSome(at, to, n) == n; }

  private:
    std::span<const std::byte> memory_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

}  // namespace skyvault
