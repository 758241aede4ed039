#include "codecs/picture_trouble.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "codecs/bytes.h"
#include "codecs/dds_container.h"
#include "codecs/dds_cube_map.h"
#include "codecs/gif_frames.h"
#include "codecs/picture_header.h"
#include "codecs/tga_reader.h"
#include "codecs/tiff_directories.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/path_text.h"

namespace skyvault {
namespace {

using namespace std::string_view_literals;
using Bytes = std::span<const std::byte>;

bool Has(Bytes start, std::size_t at, std::string_view text) {
    return start.size() >= at + text.size() &&
           std::equal(text.begin(), text.end(), start.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char a, std::byte b) { return static_cast<std::byte>(a) == b; });
}

/// Pictures and films of kinds that nothing here reads.
bool IsOtherPicture(Bytes start) {
    static constexpr struct {
        std::size_t at;
        std::string_view text;
    } kSignatures[] = {
        {0, "8BPS"sv},
        {0, "\0\0\1\0"sv},
        {0, "\0\0\2\0"sv},
        {4, "jP  \r\n\x87\n"sv},
        {4, "JXL \r\n\x87\n"sv},
        {0, "\xff\x0a"sv},
        {0, "gimp xcf"sv},
        {0, "qoif"sv},
        {0, "IIU\0"sv},
        {0, "IIRO"sv},
        {0, "FUJIFILMCCD"},
        {0, "\xff\x4f\xff\x51"sv},
        {0, "<svg"sv},
        {8, "CDR"sv},
        {0, "%!PS"sv},
        {0, "%PDF"sv},
        {0, "DDS "sv},
        {4, "ftyp"sv},
        {0, "\x1a\x45\xdf\xa3"sv},
    };
    const bool portable = start.size() > 2 && start[0] == std::byte{'P'} && start[1] >= std::byte{'1'} &&
                          start[1] <= std::byte{'7'} && start[2] <= std::byte{' '};
    return portable || std::any_of(std::begin(kSignatures), std::end(kSignatures),
                                   [&](const auto& row) { return Has(start, row.at, row.text); });
}

/// An open file and how it begins.
struct Looked {
    FileStream& file;
    std::uint64_t size;
    Bytes start;

    bool ReadAt(std::uint64_t at, void* to, std::size_t n) const {
        return at <= size && n <= size - at && file.Seek(at) && file.Read(to, n);
    }
};

/// The whole file, for kinds that must be walked from front to back; empty for one too large for that.
std::vector<std::byte> AllOf(const Looked& looked) {
    constexpr std::uint64_t kLargest = std::uint64_t{1} << 28;
    std::vector<std::byte> bytes(looked.size <= kLargest ? static_cast<std::size_t>(looked.size) : 0);
    if (!looked.ReadAt(0, bytes.data(), bytes.size())) bytes.clear();
    return bytes;
}

/// Chunks led by their length, up to the one that ends the file.
bool IsPngCut(const Looked& looked) {
    constexpr std::uint64_t kSignature = 8, kAround = 12;  // length, name and checksum
    std::array<std::byte, 8> chunk{};
    std::uint64_t steps = std::uint64_t{1} << 20;  // lest hostile files take for ever
    for (std::uint64_t at = kSignature; looked.ReadAt(at, chunk.data(), chunk.size());) {
        if (--steps == 0) return false;
        at += kAround + Big32(chunk.data());
        if (at > looked.size) break;
        if (Has(chunk, 4, "IEND"sv)) return false;
    }
    return true;
}

bool IsCutShort(const Looked& looked, const PictureHeader& header) {
    switch (header.kind) {
        case PictureKind::Bmp:
            return looked.size < 26 || header.leastBytes > looked.size;
        case PictureKind::Png:
            return IsPngCut(looked);
        case PictureKind::Jpeg: {
            const std::vector<std::byte> bytes = AllOf(looked);
            return !bytes.empty() && !ReadJpegStructure(bytes).whole;
        }
        case PictureKind::Gif: {
            const std::vector<std::byte> bytes = AllOf(looked);
            return !bytes.empty() && !GifReachesItsEnd(bytes);
        }
        case PictureKind::Tiff:
            return IsTiffCutShort(
                [&](std::uint64_t at, void* to, std::size_t n) { return looked.ReadAt(at, to, n); },
                looked.size);
        case PictureKind::Webp:
            return looked.start.size() < 12 || std::uint64_t{8} + Little32(&looked.start[4]) > looked.size;
        case PictureKind::Heif:
        case PictureKind::Unknown:
            break;
    }
    return false;
}

Cause TroubleOfTga(const Looked& looked) {
    constexpr std::size_t kMapType = 1, kType = 2, kBits = 16;
    if (looked.start.size() < kTgaHeaderSize) return Cause::CutShort;
    const auto byte = [&](std::size_t at) { return std::to_integer<unsigned>(looked.start[at]); };
    const unsigned type = byte(kType), bits = byte(kBits);
    if (byte(kMapType) > 1 || (type & 7) < 1 || (type & 7) > 3 || type > 11) return Cause::NotAPicture;
    PictureSize size;
    const bool read = ReadTgaSize(looked.start.first(kTgaHeaderSize), size) && (type == 2) == (bits != 8);
    if (!read) return Cause::KindNotRead;
    const std::uint64_t pixels = std::uint64_t{size.width} * size.height * bits / 8;
    return kTgaHeaderSize + pixels > looked.size ? Cause::CutShort : Cause::Damaged;
}

Cause TroubleOfDds(const std::wstring& path, const Looked& looked) {
    constexpr std::uint64_t kHeader = 128;
    if (!Has(looked.start, 0, "DDS "sv)) return Cause::NotAPicture;
    if (looked.size < kHeader) return Cause::CutShort;
    PictureFacts facts;
    const DdsKind kind = GetDdsKind(path);
    DdsMetadata metadata;
    if (!InspectDds(path, facts) || (kind != DdsKind::Picture && kind != DdsKind::CubeMap) ||
        !ReadDdsMetadata(path, metadata)) {
        return Cause::KindNotRead;
    }
    const DdsFormat format = metadata.format;
    const bool half = format == DdsFormat::Bc1 || format == DdsFormat::Bc4;  // a byte for two pixels
    const std::uint64_t bits = half ? 4 : IsBlockCompressed(format) ? 8 : 8 * BytesPerPixel(facts.format);
    const std::uint64_t pixels = std::uint64_t{metadata.width} * metadata.height * metadata.arraySize;
    return kHeader + pixels * bits / 8 > looked.size ? Cause::CutShort : Cause::Damaged;
}

Cause TroubleOf(const std::wstring& path, const Looked& looked) {
    const PictureHeader header = ReadPictureHeader(looked.start);
    const std::wstring extension = UpperExtension(path);
    const bool misnamed = header.kind != PictureKind::Unknown && header.sound;
    if (extension == L"TGA" || extension == L"DDS") {
        // These names are believed before the file is.
        if (misnamed) return Cause::MisnamedPicture;
        return extension == L"TGA" ? TroubleOfTga(looked) : TroubleOfDds(path, looked);
    }
    if (extension == L"EXR" || extension == L"HDR") {
        if (misnamed) return Cause::MisnamedPicture;
        const bool own = Has(looked.start, 0, extension == L"EXR" ? "v/1\1"sv : "#?"sv);
        return own ? Cause::Damaged : Cause::NotAPicture;
    }
    if (header.kind == PictureKind::Unknown) {
        for (const std::string_view named : {"DDS "sv, "v/1\1"sv, "#?"sv}) {
            if (Has(looked.start, 0, named)) return Cause::MisnamedPicture;
        }
        return IsOtherPicture(looked.start) ? Cause::KindNotRead : Cause::NotAPicture;
    }
    return IsCutShort(looked, header) ? Cause::CutShort : Cause::Damaged;
}

}  // namespace

Cause WhyNotRead(const std::wstring& path) {
    const Cause told = WhyNotOpened(path);
    if (told != Cause::Unknown) return told;
    try {
        FileStream file(path, FileUse::ReadShared);
        if (!file.IsOpen()) return Cause::InUse;
        std::array<std::byte, kPictureHeaderSize> start{};
        const std::uint64_t size = file.Size();
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(start.size(), size));
        if (count == 0) return Cause::Empty;
        if (!file.Read(start.data(), count)) return Cause::Unknown;
        return TroubleOf(path, {file, size, Bytes(start).first(count)});
    } catch (const std::exception&) {
        return Cause::Unknown;  // without memory to look further
    }
}

Outcome WithCause(Outcome read) {
    if (read.reason == Reason::CannotOpen && read.cause == Cause::Unknown && !read.file.empty()) {
        read.cause = WhyNotRead(read.file);
    }
    return read;
}

}  // namespace skyvault
