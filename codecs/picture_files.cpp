#include "codecs/picture_files.h"

#include <algorithm>
#include <array>
#include <span>

#include "codecs/dds_container.h"
#include "codecs/dds_cube_map.h"
#include "codecs/exif_block.h"
#include "codecs/exr_file.h"
#include "codecs/exr_header.h"
#include "codecs/hdr_file.h"
#include "codecs/picture_codec.h"
#include "codecs/picture_trouble.h"
#include "codecs/tga_reader.h"
#include "image/area_scale.h"
#include "image/bleed_alpha.h"
#include "image/turn_upright.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/memory_budget.h"
#include "platform/output_file.h"
#include "platform/path_text.h"

namespace skyvault {
namespace {

// The extension chooses the reader and the writer here, and nowhere else.

bool InspectTga(const std::wstring& path, PictureFacts& facts) {
    constexpr std::size_t kBitsAt = 16;
    std::array<std::byte, kTgaHeaderSize> header;
    FileStream file(path, FileUse::ReadShared);
    if (!file.IsOpen() || !file.Read(header.data(), header.size()) || !ReadTgaSize(header, facts.size)) {
        return false;
    }
    facts.format = header[kBitsAt] == std::byte{32} ? PixelFormat::Rgba8 : PixelFormat::Rgb8;
    facts.frameCount = 1;
    facts.memory = std::uint64_t{BytesPerPixel(facts.format)} * facts.size.width * facts.size.height;
    return true;
}

/// A kind of picture that is read into halves.
struct HalfKind {
    const wchar_t* extension;
    std::size_t headerLimit;
    Outcome (*inspect)(std::span<const std::byte> start, std::uint64_t fileSize, PictureFacts& facts);
    Outcome (*read)(std::span<const std::byte> file, Image& image, HalfLosses& losses);
    bool (*write)(const Image& image, const std::wstring& path, PixelFormat format);
};
constexpr HalfKind kHalfKinds[] = {
    {L"EXR", kExrHeaderLimit, InspectExr, ReadExr, WriteExr},
    {L"HDR", kHdrHeaderLimit, InspectHdr, ReadHdr, WriteHdr},
};

/// Null for any other extension.
const HalfKind* FindHalfKind(const std::wstring& extension) {
    for (const HalfKind& kind : kHalfKinds) {
        if (extension == kind.extension) return &kind;
    }
    return nullptr;
}

/// The outcome, about the file unless it is a success.
Outcome OfFile(const std::wstring& path, Outcome outcome) {
    if (!outcome.IsDone()) outcome.file = path;
    return outcome;
}

/// Its first bytes, at most `limit`; null when they cannot be read.
ByteBuffer ReadStart(FileStream& file, std::uint64_t limit, std::size_t& count) {
    count = static_cast<std::size_t>(std::min(file.Size(), limit));
    ByteBuffer bytes = AllocateBytes(count);
    if (bytes && !file.Read(bytes.get(), count)) bytes.reset();
    return bytes;
}

Outcome InspectHalfFile(const std::wstring& path, const HalfKind& kind, PictureFacts& facts) {
    FileStream file(path, FileUse::ReadShared);
    std::size_t count = 0;
    const ByteBuffer start = ReadStart(file, kind.headerLimit, count);
    if (!start) return Failure(Reason::CannotOpen, path);
    return OfFile(path, kind.inspect({start.get(), count}, file.Size(), facts));
}

Outcome ReadHalfFile(const std::wstring& path, const HalfKind& kind, const PictureRequest& request,
                     Image& image) {
    PictureFacts facts;
    Outcome done = InspectHalfFile(path, kind, facts);
    if (done.IsDone()) done = WithinMemoryBudget(path, facts.memory);
    if (!done.IsDone()) return done;
    FileStream file(path, FileUse::ReadShared);
    std::size_t count = 0;
    const ByteBuffer bytes = ReadStart(file, file.Size(), count);
    if (!bytes || request.frame != 0) return Failure(Reason::CannotOpen, path);
    HalfLosses losses;
    done = OfFile(path, kind.read({bytes.get(), count}, image, losses));
    if (!done.IsDone()) return done;
    if (!ScaleInto(request.target, image)) return Failure(Reason::CannotOpen, path);
    return {.infoLog = TextOfLosses(path, losses)};
}

Outcome InspectByExtension(const std::wstring& path, PictureFacts& facts) {
    const std::wstring extension = UpperExtension(path);
    if (const HalfKind* const kind = FindHalfKind(extension)) return InspectHalfFile(path, *kind, facts);
    if (extension != L"TGA" && extension != L"DDS") return InspectPicture(path, facts);
    const bool told = extension == L"TGA" ? InspectTga(path, facts) : InspectDds(path, facts);
    return told ? Outcome{} : Failure(Reason::CannotOpen, path);
}

bool ReadTgaFile(const std::wstring& path, Image& image) {
    constexpr std::uint64_t kLargestFile = std::uint64_t{1} << 32;
    FileStream file(path, FileUse::ReadShared);
    if (!file.IsOpen() || file.Size() > kLargestFile) return false;
    const auto next = [&](void* to, std::size_t n) { return file.Read(to, n); };
    return ReadTga(next, static_cast<std::size_t>(file.Size()), FileNamePart(path), image);
}

Outcome ReadByExtension(const std::wstring& path, const PictureRequest& request, Image& image) {
    const std::wstring extension = UpperExtension(path);
    if (const HalfKind* const kind = FindHalfKind(extension)) {
        return ReadHalfFile(path, *kind, request, image);
    }
    if (extension != L"TGA" && extension != L"DDS") {
        return DecodePicture(path, request.frame, request.target.width, request.target.height, image);
    }
    PictureFacts facts;
    Outcome done = InspectByExtension(path, facts);
    if (done.IsDone()) done = WithinMemoryBudget(path, facts.memory);
    if (!done.IsDone()) return done;
    const bool read = extension == L"TGA" ? ReadTgaFile(path, image) : ReadDdsPicture(path, image);
    return read ? Outcome{} : Failure(Reason::CannotOpen, path);
}

/// The program's own kinds have none.
bool HasOrientation(const std::wstring& path) {
    const std::wstring extension = UpperExtension(path);
    return extension != L"TGA" && extension != L"DDS";
}

Outcome ReadUpright(const std::wstring& path, const PictureRequest& request, Image& image) {
    const int orientation = HasOrientation(path) ? ReadOrientation(path, request.frame) : 1;
    PictureRequest stored = request;
    if (SwapsSides(orientation)) std::swap(stored.target.width, stored.target.height);
    Outcome read = ReadByExtension(path, stored, image);
    if (!read.IsDone() || orientation == 1) return read;
    // Sides are exchanged in a copy.
    if (SwapsSides(orientation)) read = WithinMemoryBudget(path, 2 * std::uint64_t{image.ByteCount()});
    if (read.IsDone() && !TurnUpright(orientation, image)) return Failure(Reason::CannotOpen, path);
    return read;
}

/// What a file of the picture is to carry.
PhotoMetadata MetadataOf(const PictureOptions& options, const PictureSize& size) {
    PhotoMetadata metadata = options.metadata != nullptr ? *options.metadata : PhotoMetadata();
    SphereTags sphere;
    if (options.sphere != nullptr) {
        const std::string width = std::to_string(size.width), height = std::to_string(size.height);
        sphere = *options.sphere;
        sphere.insert({{"ProjectionType", "equirectangular"},
                       {"UsePanoramaViewer", "True"},
                       {"CroppedAreaImageWidthPixels", width},
                       {"CroppedAreaImageHeightPixels", height},
                       {"FullPanoWidthPixels", width},
                       {"FullPanoHeightPixels", height},
                       {"CroppedAreaLeftPixels", "0"},
                       {"CroppedAreaTopPixels", "0"}});
    }
    if (!metadata.exif.empty()) {
        metadata.exif = CorrectedExif(std::move(metadata.exif), size, "Skyvault " SKYVAULT_VERSION);
    }
    if (!metadata.xmp.empty()) {
        metadata.xmp = CorrectedXmp(metadata.xmp, size, sphere);
    } else if (!sphere.empty()) {
        metadata.xmp = NewXmp(sphere);
    }
    return metadata;
}

/// Gives the target what the encoder wrote, and the metadata.
Outcome CommitWithMetadata(const std::wstring& encoded, const std::wstring& path, PictureContainer container,
                           PhotoMetadata metadata) {
    OutputFile file(path);
    Outcome outcome;
    FileStream from(encoded, FileUse::ReadShared);
    FileStream to(file.TemporaryPath(), FileUse::Write);
    const ByteSink sink = [&](const void* bytes, std::size_t n) { return to.Write(bytes, n); };
    const bool written =
        from.IsOpen() && to.IsOpen() &&
        WriteWithMetadata(SourceOf(from), container, std::move(metadata), sink, outcome.lost);
    return to.Close() && written && file.Commit() ? std::move(outcome) : file.Failed();
}

Outcome WriteByExtension(const Image& image, const std::wstring& path, PixelFormat format,
                         const PictureOptions& options) {
    const std::wstring extension = UpperExtension(path);
    const bool dds = extension == L"DDS";
    const PictureContainer container = ContainerOfExtension(extension);
    if (!dds && container == PictureContainer::None) return Failure(Reason::CannotWrite, path);
    OutputFile file(path);
    const HalfKind* const half = FindHalfKind(extension);
    const bool written = dds ? WriteDdsPicture(image, file.TemporaryPath(), format)
                         : half
                             ? half->write(image, file.TemporaryPath(), format)
                             : EncodePicture(image, file.TemporaryPath(), container, format, options.quality);
    if (written && CarriesMetadata(container)) {
        PhotoMetadata metadata = MetadataOf(options, {image.width, image.height});
        if (!metadata.IsEmpty()) {
            return CommitWithMetadata(file.TemporaryPath(), path, container, std::move(metadata));
        }
    }
    return written && file.Commit() ? Outcome{} : file.Failed();
}

std::wstring InfoLines(const std::wstring& path, const std::wstring& resolution, const wchar_t* projection,
                       PixelFormat format) {
    return L"Path\t\t" + Printable(path) + L"\n" +                 //
           L"Size\t\t" + FileSizeText(FileSizeOf(path)) + L"\n" +  //
           L"Resolution\t" + resolution + L"\n" +                  //
           projection +                                            //
           L"Format\t\t" + FormatName(format) + L"\n";
}

}  // namespace

Outcome LoadPicture(const std::wstring& path, Image& image, const PictureRequest& request) {
    if (path.empty()) return Failure(Reason::CannotOpen);
    Outcome read = WithCause(ReadUpright(path, request, image));
    if (!read.IsDone()) image.Clear();
    return read;
}

Outcome ReadPictureFacts(const std::wstring& path, PictureFacts& facts) {
    Outcome told = WithCause(InspectByExtension(path, facts));
    if (!told.IsDone() || !HasOrientation(path)) return told;
    if (SwapsSides(ReadOrientation(path, 0))) {
        std::swap(facts.size.width, facts.size.height);
        facts.memory += std::uint64_t{BytesPerPixel(facts.format)} * facts.size.width * facts.size.height;
    }
    return told;
}

PictureSize ReadPictureSize(const std::wstring& path) {
    PictureFacts facts;
    return ReadPictureFacts(path, facts).IsDone() ? facts.size : PictureSize{};
}

Outcome SavePicture(Image& image, const std::wstring& path, const PictureOptions& options) {
    const PixelFormat written = options.format == PixelFormat::None ? image.format : options.format;
    if (path.empty()) return Failure(Reason::CannotWrite);
    if (options.bleed && HasAlpha(written)) BleedAlpha(image);
    if (!image.IsValid()) return Failure(Reason::CannotWrite, path);
    Outcome saved = WriteByExtension(image, path, written, options);
    if (saved.IsDone()) saved.infoLog = PictureInfo(path, image.width, image.height, written);
    return saved;
}

std::wstring FileSizeText(std::uint64_t bytes) {
    if (bytes >= 1073741824) return std::to_wstring(bytes / 1073741824) + L" GB";
    if (bytes >= 1048576) return std::to_wstring(bytes / 1048576) + L" MB";
    if (bytes < 1024) return std::to_wstring(bytes) + L" bytes";
    return std::to_wstring(bytes / 1024) + L" KB";
}

std::wstring PictureInfo(const std::wstring& path, std::uint32_t width, std::uint32_t height,
                         PixelFormat format) {
    return InfoLines(path, std::to_wstring(width) + L" x " + std::to_wstring(height), L"", format);
}

std::wstring CubeMapInfo(const std::wstring& path, std::uint32_t faceSize, PixelFormat format) {
    const std::wstring edge = std::to_wstring(faceSize);
    return InfoLines(path, L"6 x " + edge + L" x " + edge, L"Projection\tCubemap\n", format);
}

}  // namespace skyvault
