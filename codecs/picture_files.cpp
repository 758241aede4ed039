#include "codecs/picture_files.h"

#include <array>

#include "codecs/dds_container.h"
#include "codecs/dds_cube_map.h"
#include "codecs/picture_codec.h"
#include "codecs/tga_reader.h"
#include "image/bleed_alpha.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/output_file.h"
#include "platform/path_text.h"

namespace skyvault {
namespace {

bool ReadTgaFile(const std::wstring& path, Image& image) {
    constexpr std::uint64_t kLargestFile = std::uint64_t{1} << 32;
    if (path.empty()) return false;
    FileStream file(path, FileUse::Read);
    if (!file.IsOpen() || file.Size() > kLargestFile) return false;
    const auto next = [&](void* to, std::size_t n) { return file.Read(to, n); };
    return ReadTga(next, static_cast<std::size_t>(file.Size()), FileNamePart(path), image);
}

// The extension chooses the reader and the writer here, and nowhere else.

bool ReadByExtension(const std::wstring& path, std::uint32_t frame, const PictureSize& target, Image& image) {
    const std::wstring extension = UpperExtension(path);
    if (extension == L"TGA") return ReadTgaFile(path, image);
    if (extension == L"DDS") return ReadDdsPicture(path, image);
    return DecodePicture(path, frame, target.width, target.height, image);
}

bool MeasureTga(const std::wstring& path, PictureSize& size) {
    std::array<std::byte, kTgaHeaderSize> header;
    FileStream file(path, FileUse::Read);
    return file.IsOpen() && file.Read(header.data(), header.size()) && ReadTgaSize(header, size);
}

bool MeasureDds(const std::wstring& path, PictureSize& size) {
    DdsMetadata metadata;
    if (!ReadDdsMetadata(path, metadata)) return false;
    size = {metadata.width, metadata.height};
    return true;
}

bool MeasureByExtension(const std::wstring& path, PictureSize& size) {
    const std::wstring extension = UpperExtension(path);
    if (extension == L"TGA") return MeasureTga(path, size);
    if (extension == L"DDS") return MeasureDds(path, size);
    return MeasurePicture(path, size);
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
    if (ReadByExtension(path, request.frame, request.target, image)) return {};
    image.Clear();
    return Failure(Reason::CannotOpen, path);
}

PictureSize ReadPictureSize(const std::wstring& path) {
    PictureSize size;
    return MeasureByExtension(path, size) ? size : PictureSize{};
}

Outcome SavePicture(Image& image, const std::wstring& path, PixelFormat format, bool bleed) {
    const PixelFormat written = format == PixelFormat::None ? image.format : format;
    if (path.empty()) return Failure(Reason::CannotWrite);
    if (bleed && HasAlpha(written)) BleedAlpha(image);
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
