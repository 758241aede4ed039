#include "codecs/png_metadata.h"

#include <zlib.h>

#include <algorithm>
#include <optional>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n"sv;
constexpr std::string_view kXmpKeyword = "XML:com.adobe.xmp\0"sv;
constexpr std::size_t kTypeSize = 4;

/// What is packed (zlib), as far as it stays within kMostMetadataBytes.
std::optional<std::vector<std::byte>> Unpacked(std::span<const std::byte> packed) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) return {};
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    std::vector<std::byte> bytes;
    int state = Z_OK;
    while (state == Z_OK && bytes.size() < kMostMetadataBytes) {
        const std::size_t done = bytes.size();
        bytes.resize(std::max<std::size_t>(2 * done, 4096));
        stream.next_out = reinterpret_cast<Bytef*>(&bytes[done]);
        stream.avail_out = static_cast<uInt>(bytes.size() - done);
        state = inflate(&stream, Z_NO_FLUSH);
        bytes.resize(bytes.size() - stream.avail_out);
        // A stream that is cut hands out nothing more.
        if (bytes.size() == done && state != Z_STREAM_END) break;
    }
    inflateEnd(&stream);
    if (state != Z_STREAM_END) return {};
    return bytes;
}

std::vector<std::byte> Packed(std::span<const std::byte> bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::vector<std::byte> packed(size);
    const int state = compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                                reinterpret_cast<const Bytef*>(bytes.data()),
                                static_cast<uLong>(bytes.size()), Z_BEST_COMPRESSION);
    packed.resize(state == Z_OK ? size : 0);
    return packed;
}

struct Chunk {
    std::string type;
    std::uint64_t at = 0;         ///< of the length
    std::uint64_t contentAt = 0;  ///< behind the type
    std::uint64_t bytes = 0;      ///< of the content
    std::uint64_t end = 0;        ///< behind the checksum
};

bool NextChunk(const ByteSource& file, std::uint64_t at, Chunk& chunk) {
    std::byte head[8];
    if (!file.Read(at, head, sizeof head)) return false;
    chunk.type = TextOfBytes({head + 4, kTypeSize});
    chunk.at = at;
    chunk.contentAt = at + sizeof head;
    chunk.bytes = Big32(head);
    chunk.end = chunk.contentAt + chunk.bytes + 4;
    return file.Holds(at, chunk.end - at);
}

std::vector<std::byte> ContentOf(const ByteSource& file, const Chunk& chunk) {
    return file.Piece(chunk.contentAt, chunk.bytes);
}

/// The profile behind its name and the way it is packed.
bool UnpackProfile(std::span<const std::byte> content, std::vector<std::byte>& icc) {
    const std::size_t name = TextOfBytes(content).find('\0');
    if (name == std::string_view::npos || name + 2 > content.size()) return false;
    auto unpacked = Unpacked(content.subspan(name + 2));
    if (!unpacked || unpacked->empty()) return false;
    icc = std::move(*unpacked);
    return true;
}

bool IsXmp(const ByteSource& file, const Chunk& chunk) {
    if (chunk.type != "iTXt" || chunk.bytes < kXmpKeyword.size()) return false;
    return TextOfBytes(file.Piece(chunk.contentAt, kXmpKeyword.size())) == kXmpKeyword;
}

/// The text behind keyword, packing, language and translated keyword.
bool UnpackXmp(std::span<const std::byte> content, std::string& xmp) {
    content = content.subspan(kXmpKeyword.size());
    if (content.size() < 2) return false;
    const bool packed = content[0] != std::byte{0};
    content = content.subspan(2);
    for (int i = 0; i < 2; ++i) {
        const std::size_t end = TextOfBytes(content).find('\0');
        if (end == std::string_view::npos) return false;
        content = content.subspan(end + 1);
    }
    if (!packed) {
        xmp = TextOfBytes(content);
        return true;
    }
    const auto unpacked = Unpacked(content);
    if (unpacked) xmp = TextOfBytes(*unpacked);
    return unpacked.has_value();
}

/// Chunks that say what we write ourselves. The colours of a profile are told by nothing else.
bool IsReplaced(const ByteSource& file, const Chunk& chunk, bool hasProfile) {
    const std::string& type = chunk.type;
    if (type == "iCCP" || type == "eXIf" || IsXmp(file, chunk)) return true;
    return hasProfile && (type == "sRGB" || type == "gAMA" || type == "cHRM" || type == "cICP");
}

void AddChunk(std::vector<std::byte>& to, std::string_view type, std::span<const std::byte> content) {
    AppendBig32(to, static_cast<std::uint32_t>(content.size()));
    const std::size_t typeAt = to.size();
    Append(to, BytesOfText(type));
    Append(to, content);
    AppendBig32(to, static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(&to[typeAt]),
                                                     static_cast<uInt>(to.size() - typeAt))));
}

std::vector<std::byte> ChunksOf(const PhotoMetadata& metadata) {
    std::vector<std::byte> chunks;
    if (!metadata.icc.empty()) {
        std::vector<std::byte> content;
        Append(content, BytesOfText("ICC profile\0\0"sv));
        Append(content, Packed(metadata.icc));
        AddChunk(chunks, "iCCP", content);
    }
    if (!metadata.exif.empty()) AddChunk(chunks, "eXIf", metadata.exif);
    if (!metadata.xmp.empty()) {
        std::vector<std::byte> content;
        Append(content, BytesOfText(kXmpKeyword));
        Append(content, BytesOfText("\0\0\0\0"sv));  // not packed, no language, no translated keyword
        Append(content, BytesOfText(metadata.xmp));
        AddChunk(chunks, "iTXt", content);
    }
    return chunks;
}

}  // namespace

bool IsPngStart(const ByteSource& file) {
    return TextOfBytes(file.Piece(0, kSignature.size())) == kSignature;
}

bool IsWebpStart(const ByteSource& file) {
    const std::vector<std::byte> start = file.Piece(0, 12);
    return TextOfBytes(start).starts_with("RIFF") && TextOfBytes(start).ends_with("WEBP");
}

void ReadPngMetadata(const ByteSource& file, PhotoMetadata& metadata) {
    Chunk chunk;
    // Of damaged ones too only the first is unpacked: there may be thousands.
    bool profileMet = false, xmpMet = false;
    for (std::uint64_t at = kSignature.size(); NextChunk(file, at, chunk); at = chunk.end) {
        if (chunk.type == "iCCP" && !profileMet) {
            profileMet = true;
            if (!UnpackProfile(ContentOf(file, chunk), metadata.icc)) {
                metadata.lost.emplace_back(L"the colour profile is damaged and was left out");
            }
        } else if (chunk.type == "eXIf" && metadata.exif.empty()) {
            metadata.exif = ContentOf(file, chunk);
        } else if (!xmpMet && IsXmp(file, chunk)) {
            xmpMet = true;
            const std::vector<std::byte> content = ContentOf(file, chunk);
            if (content.empty() || !UnpackXmp(content, metadata.xmp)) {
                metadata.lost.emplace_back(L"the XMP data are damaged and were left out");
            }
        } else if (chunk.type == "IEND") {
            break;
        }
    }
}

void ReadWebpMetadata(const ByteSource& file, PhotoMetadata& metadata) {
    constexpr std::uint64_t kFirstChunk = 12;
    constexpr std::string_view kJpegName = "Exif\0\0"sv;
    std::byte head[8];
    for (std::uint64_t at = kFirstChunk; file.Read(at, head, sizeof head);) {
        const std::string type(TextOfBytes({head, kTypeSize}));
        const std::uint64_t contentAt = at + sizeof head, bytes = Little32(head + 4);
        if (!file.Holds(contentAt, bytes)) return;
        at = contentAt + bytes + bytes % 2;
        if (type == "ICCP" && metadata.icc.empty()) metadata.icc = file.Piece(contentAt, bytes);
        if (type == "XMP " && metadata.xmp.empty()) metadata.xmp = TextOfBytes(file.Piece(contentAt, bytes));
        if (type != "EXIF" || !metadata.exif.empty()) continue;
        metadata.exif = file.Piece(contentAt, bytes);
        // Some programs copy the name along that JPEG files have before the block.
        if (!TextOfBytes(metadata.exif).starts_with(kJpegName)) continue;
        metadata.exif.erase(metadata.exif.begin(), metadata.exif.begin() + kJpegName.size());
    }
}

int ChannelsOfPng(const ByteSource& file) {
    constexpr std::uint64_t kColourTypeAt = 25;
    std::byte type{};
    if (!file.Read(kColourTypeAt, &type, 1)) return 0;
    return (type & std::byte{2}) == std::byte{0} ? 1 : 3;
}

bool WritePngMetadata(const ByteSource& file, const PhotoMetadata& metadata, const ByteSink& sink) {
    const std::vector<std::byte> ours = ChunksOf(metadata);
    Chunk chunk;
    if (!IsPngStart(file) || !NextChunk(file, kSignature.size(), chunk) || chunk.type != "IHDR" ||
        !CopyBytes(file, 0, chunk.end, sink) || !sink(ours.data(), ours.size())) {
        return false;
    }
    // What lies between two chunks that go is copied at once.
    std::uint64_t copied = chunk.end;
    for (std::uint64_t at = chunk.end; NextChunk(file, at, chunk); at = chunk.end) {
        if (!IsReplaced(file, chunk, !metadata.icc.empty())) continue;
        if (!CopyBytes(file, copied, chunk.at, sink)) return false;
        copied = chunk.end;
    }
    return CopyBytes(file, copied, file.size, sink);
}

}  // namespace skyvault
