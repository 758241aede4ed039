#include "codecs/metadata_bytes.h"

#include <algorithm>
#include <cstring>

#include "codecs/bytes.h"

namespace skyvault {

std::vector<std::byte> ByteSource::Piece(std::uint64_t at, std::uint64_t n) const {
    if (n > kMostMetadataBytes || !Holds(at, n)) return {};
    std::vector<std::byte> piece(static_cast<std::size_t>(n));
    if (!readAt(at, piece.data(), piece.size())) piece.clear();
    return piece;
}

ByteSource SourceOf(std::span<const std::byte> bytes) {
    return {bytes.size(), [bytes](std::uint64_t at, void* to, std::size_t n) {
                if (at > bytes.size() || n > bytes.size() - at) return false;
                if (n > 0) std::memcpy(to, bytes.data() + at, n);
                return true;
            }};
}

ByteSource SourceOf(FileStream& file) {
    return {file.Size(),
            [&file](std::uint64_t at, void* to, std::size_t n) { return file.Seek(at) && file.Read(to, n); }};
}

bool CopyBytes(const ByteSource& source, std::uint64_t first, std::uint64_t end, const ByteSink& sink) {
    constexpr std::uint64_t kPiece = std::uint64_t{1} << 20;
    std::vector<std::byte> piece;
    for (std::uint64_t at = first; at < end; at += piece.size()) {
        piece.resize(static_cast<std::size_t>(std::min(kPiece, end - at)));
        if (!source.Read(at, piece.data(), piece.size()) || !sink(piece.data(), piece.size())) return false;
    }
    return true;
}

std::span<const std::byte> BytesOfText(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

std::string_view TextOfBytes(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void Append(std::vector<std::byte>& bytes, std::span<const std::byte> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void AppendBig16(std::vector<std::byte>& bytes, std::uint32_t value) {
    std::byte stored[2];
    SetBig16(stored, value);
    Append(bytes, stored);
}

void AppendBig32(std::vector<std::byte>& bytes, std::uint32_t value) {
    std::byte stored[4];
    SetBig32(stored, value);
    Append(bytes, stored);
}

}  // namespace skyvault
