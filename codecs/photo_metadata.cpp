#include "codecs/photo_metadata.h"

#include "codecs/exif_block.h"
#include "codecs/icc_profile.h"
#include "codecs/jpeg_metadata.h"
#include "codecs/png_metadata.h"
#include "codecs/tiff_metadata.h"
#include "codecs/xmp_packet.h"
#include "platform/files.h"

namespace skyvault {
namespace {

/// What the file carries, damaged or not.
PhotoMetadata ReadContainer(const ByteSource& file) {
    PhotoMetadata metadata;
    if (IsJpegStart(file)) {
        ReadJpegMetadata(file, metadata);
    } else if (IsPngStart(file)) {
        ReadPngMetadata(file, metadata);
    } else if (IsWebpStart(file)) {
        ReadWebpMetadata(file, metadata);
    } else if (IsTiffStart(file)) {
        ReadTiffMetadata(file, metadata);
    }
    return metadata;
}

void DropDamaged(PhotoMetadata& metadata) {
    while (metadata.xmp.ends_with('\0')) metadata.xmp.pop_back();
    if (!metadata.icc.empty() && ColoursOfProfile(metadata.icc) == ProfileColours::None) {
        metadata.icc.clear();
        metadata.lost.emplace_back(L"the colour profile is damaged and was left out");
    }
    if (!metadata.exif.empty() && !IsSoundExif(metadata.exif)) {
        metadata.exif.clear();
        metadata.lost.emplace_back(L"the EXIF data are damaged and were left out");
    }
    if (!metadata.xmp.empty() && !IsSoundXmp(metadata.xmp)) {
        const bool large = metadata.xmp.size() > kMostXmpBytes;
        metadata.xmp.clear();
        metadata.lost.emplace_back(large ? L"the XMP data are too large and were left out"
                                         : L"the XMP data are damaged and were left out");
    }
}

/// A profile says what colours the numbers of a picture are: one for other numbers would say wrong things.
void DropMisfit(int channels, PhotoMetadata& metadata, std::vector<std::wstring>& lost) {
    if (metadata.icc.empty()) return;
    const ProfileColours colours = ColoursOfProfile(metadata.icc);
    const bool fits = (colours == ProfileColours::Rgb && channels == 3) ||
                      (colours == ProfileColours::Grey && channels == 1);
    if (fits) return;
    metadata.icc.clear();
    lost.emplace_back(channels == 1 ? L"the colour profile is not one for grey and was left out"
                                    : L"the colour profile is not one for RGB and was left out");
}

}  // namespace

PhotoMetadata ReadPhotoMetadata(const ByteSource& file) {
    PhotoMetadata metadata = ReadContainer(file);
    DropDamaged(metadata);
    return metadata;
}

PhotoMetadata ReadPhotoMetadata(const std::wstring& path) {
    // A pipe has no size, and would keep us waiting.
    if (FileSizeOf(path) == 0) return {};
    FileStream file(path, FileUse::ReadShared);
    return file.IsOpen() ? ReadPhotoMetadata(SourceOf(file)) : PhotoMetadata{};
}

int ReadOrientation(const std::wstring& path, std::uint32_t frame) {
    if (FileSizeOf(path) == 0) return 1;
    FileStream file(path, FileUse::ReadShared);
    if (!file.IsOpen()) return 1;
    const ByteSource source = SourceOf(file);
    return IsTiffStart(source) ? OrientationOfTiff(source, frame) : OrientationOf(ReadContainer(source).exif);
}

bool CarriesMetadata(PictureContainer container) {
    return container == PictureContainer::Jpeg || container == PictureContainer::Png ||
           container == PictureContainer::Tiff;
}

bool WriteWithMetadata(const ByteSource& file, PictureContainer container, PhotoMetadata metadata,
                       const ByteSink& sink, std::vector<std::wstring>& lost) {
    switch (container) {
        case PictureContainer::Jpeg:
            DropMisfit(ChannelsOfJpeg(file), metadata, lost);
            FitIntoJpeg(metadata, lost);
            return WriteJpegMetadata(file, metadata, sink);
        case PictureContainer::Png:
            DropMisfit(ChannelsOfPng(file), metadata, lost);
            return WritePngMetadata(file, metadata, sink);
        case PictureContainer::Tiff:
            DropMisfit(ChannelsOfTiff(file), metadata, lost);
            if (TakesTiffMetadata(file, metadata)) return WriteTiffMetadata(file, metadata, sink);
            lost.emplace_back(
                L"colour profile, EXIF and XMP data were left out: the file would be larger than 4 GB");
            return CopyBytes(file, 0, file.size, sink);
        default:
            return false;
    }
}

}  // namespace skyvault
