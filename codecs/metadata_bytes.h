// What the readers and writers of photo metadata share: a file's bytes at any address, and pieces of them
// that are bounded whatever a file claims.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "codecs/tiff_directories.h"
#include "platform/file_stream.h"

namespace skyvault {

/// Nothing larger is taken for metadata: a profile, a block of EXIF or a packet of XMP.
inline constexpr std::uint64_t kMostMetadataBytes = std::uint64_t{32} << 20;

/// A file that is read at any address.
struct ByteSource {
    std::uint64_t size = 0;
    ReadFileAt readAt;

    bool Holds(std::uint64_t at, std::uint64_t n) const { return at <= size && n <= size - at; }
    /// False when the bytes are not all there.
    bool Read(std::uint64_t at, void* to, std::size_t n) const { return Holds(at, n) && readAt(at, to, n); }
    /// The n bytes; none when they are not all there or more than kMostMetadataBytes.
    std::vector<std::byte> Piece(std::uint64_t at, std::uint64_t n) const;
};

/// The bytes, or the open file, must outlive what is returned.
ByteSource SourceOf(std::span<const std::byte> bytes);
ByteSource SourceOf(FileStream& file);

/// Takes the next bytes of a file that is written; false on a full disk.
using ByteSink = std::function<bool(const void* bytes, std::size_t n)>;

/// Bytes first .. end − 1 of the source, in pieces. False when they cannot be read or written.
bool CopyBytes(const ByteSource& source, std::uint64_t first, std::uint64_t end, const ByteSink& sink);

std::span<const std::byte> BytesOfText(std::string_view text);
std::string_view TextOfBytes(std::span<const std::byte> bytes);
void Append(std::vector<std::byte>& bytes, std::span<const std::byte> more);
void AppendBig16(std::vector<std::byte>& bytes, std::uint32_t value);
void AppendBig32(std::vector<std::byte>& bytes, std::uint32_t value);

}  // namespace skyvault
