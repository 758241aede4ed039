// What libtiff reads from: a file, or its bytes. Nothing is printed; its messages are only counted.
#pragma once

#include <tiffio.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace skyvault {

class TiffSource {
  public:
    explicit TiffSource(const std::wstring& path);
    explicit TiffSource(std::span<const std::byte> file) : memory_(file), size_(file.size()) {}
    ~TiffSource();
    TiffSource(const TiffSource&) = delete;
    TiffSource& operator=(const TiffSource&) = delete;

    std::uint64_t Size() const { return size_; }

    /// As many of n bytes as there are.
    std::size_t ReadSome(std::uint64_t at, void* to, std::size_t n) const;

    std::uint64_t position = 0;
    int errors = 0, warnings = 0;

  private:
    std::span<const std::byte> memory_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

using TiffHandle = std::unique_ptr<TIFF, void (*)(TIFF*)>;

/// Opened, but at none of its directories yet; null without memory and for what is no TIFF. The source must
/// outlive it.
TiffHandle OpenTiff(TiffSource& source);

}  // namespace skyvault
