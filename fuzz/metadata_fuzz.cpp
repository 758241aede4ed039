// Files as they carry metadata, and what becomes of it on its way into a JPEG, a PNG and a TIFF file.

#include "codecs/photo_metadata.h"

#include "codecs/exif_block.h"
#include "codecs/icc_profile.h"
#include "codecs/xmp_packet.h"
#include "fuzz/require.h"

using namespace skyvault;

namespace {

void CarryOn(const ByteSource& file, PictureContainer container, const PhotoMetadata& metadata) {
    std::vector<std::byte> written;
    std::vector<std::wstring> lost;
    const ByteSink sink = [&](const void* bytes, std::size_t n) {
        Append(written, {static_cast<const std::byte*>(bytes), n});
        return true;
    };
    if (!WriteWithMetadata(file, container, metadata, sink, lost)) return;
    // What was put into a file is read from it, and is sound.
    const PhotoMetadata read = ReadPhotoMetadata(SourceOf(written));
    Require(read.icc.empty() || read.icc == metadata.icc);
    Require(read.xmp.size() <= metadata.xmp.size() + 1000);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteSource file = SourceOf(BytesOf(data, size));
    PhotoMetadata metadata = ReadPhotoMetadata(file);
    // The bytes as a block and a packet of their own, too.
    if (IsSoundExif(BytesOf(data, size))) metadata.exif = file.Piece(0, size);
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (IsSoundXmp(text)) metadata.xmp = text;
    static_cast<void>(NameOfProfile(BytesOf(data, size)));
    static_cast<void>(FactsOfExif(metadata.exif));

    const PictureSize picture{70000, 35000};
    if (!metadata.exif.empty()) {
        metadata.exif = CorrectedExif(std::move(metadata.exif), picture, "Skyvault");
        static_cast<void>(OrientationOf(metadata.exif));
    }
    if (!metadata.xmp.empty()) {
        const SphereTags tags = ReadSphereTags(metadata.xmp);
        const std::string without = CorrectedXmp(metadata.xmp, picture, {});
        Require(!IsSoundXmp(without) || ReadSphereTags(without).empty());
        metadata.xmp = CorrectedXmp(metadata.xmp, picture, tags);
        const SplitXmp split = SplitXmpPacket(metadata.xmp, 500);
        Require(split.main.size() <= 500);
        std::string merged = split.main;
        static_cast<void>(MergeExtendedXmp(merged, split.extended));
    }
    for (const PictureContainer container :
         {PictureContainer::Jpeg, PictureContainer::Png, PictureContainer::Tiff}) {
        CarryOn(file, container, metadata);
    }
    return 0;
}
