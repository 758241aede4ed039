#include "codecs/picture_files.h"

#include <array>

#include "codecs/dds_container.h"
#include "codecs/dds_cube_map.h"
#include "codecs/picture_codec.h"
#include "codecs/picture_trouble.h"
#include "codecs/tga_reader.h"
#include "image/bleed_alpha.h"
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

Outcome InspectByExtension(const std::wstring& path, PictureFacts& facts) {
    const std::wstring extension = UpperExtension(path);
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

Outcome WriteByExtension(const Image& image, const std::wstring& path, PixelFormat format) {
    const std::wstring extension = UpperExtension(path);
    const bool dds = extension == L"DDS";
    const PictureContainer container = ContainerOfExtension(extension);
    if (!dds && container == PictureContainer::None) return Failure(Reason::CannotWrite, path);
    OutputFile file(path);
    const bool written = dds ? WriteDdsPicture(image, file.TemporaryPath(), format)
                             : EncodePicture(image, file.TemporaryPath(), container, format);
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
    Outcome read = WithCause(ReadByExtension(path, request, image));
    if (!read.IsDone()) image.Clear();
    return read;
}

Outcome ReadPictureFacts(const std::wstring& path, PictureFacts& facts) {
    return WithCause(InspectByExtension(path, facts));
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
    Outcome saved = WriteByExtension(image, path, written);
    if (!saved.IsDone()) return saved;
    return {.infoLog = PictureInfo(path, image.width, image.height, written)};
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
