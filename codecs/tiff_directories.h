// Where the pictures of a TIFF file are: the chain of its directories, one for each page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace skyvault {

/// Reads exactly n bytes of a file at an offset; false when they are not there.
using ReadFileAt = std::function<bool(std::uint64_t at, void* to, std::size_t n)>;

/// A multi-page file counts no more pages than these.
inline constexpr std::size_t kMostTiffPages = 65536;

/// The offset of each page's directory, in the chain's order, of classic and big files alike. The chain ends
/// at the first directory that is met again or does not lie in the file as a whole. Empty for what is no
/// TIFF. loops: becomes true when it ends at one met again.
std::vector<std::uint64_t> FindTiffDirectories(const ReadFileAt& readAt, bool* loops = nullptr);

/// Whether the chain of directories, or a strip or tile of one of its pages, lies beyond the end of the file.
/// False for what is no TIFF.
bool IsTiffCutShort(const ReadFileAt& readAt, std::uint64_t fileSize);

/// Whether the directory at that offset has the tag.
bool TiffDirectoryHas(const ReadFileAt& readAt, std::uint64_t directory, std::uint32_t tag);

}  // namespace skyvault
