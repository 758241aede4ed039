#include "codecs/dds_container_builtin.h"
#include "fuzz/require.h"

using namespace skyvault;

namespace {

void LookAtItems(const DdsTexture& texture) {
    for (std::uint32_t i = 0; i < texture.Metadata().arraySize; ++i) {
        const DdsItem item = texture.Item(i);
        Require(item.pixels && item.width > 0 && item.height > 0);
        LookAt({item.pixels, item.slicePitch});
    }
}

/// The file's bytes as colours: encoded, every pixel keeps which side of the threshold its alpha is on.
void EncodeAndBack(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return;
    DdsMetadata metadata;
    metadata.format = DdsFormat::Rgba8Unorm;
    metadata.width = 1 + data[0] % 9;
    const std::size_t rowPitch = std::size_t{4} * metadata.width;
    metadata.height = static_cast<std::uint32_t>(size / rowPitch);
    if (metadata.height == 0) return;
    const DdsItem item = {BytesOf(data, size).data(), metadata.width, metadata.height, rowPitch,
                          rowPitch * metadata.height};
    DdsTexture compressed, decoded;
    Require(CompressToBc1(metadata, {&item, 1}, compressed) && DecompressDds(compressed, decoded));
    const std::byte* pixels = decoded.Item(0).pixels;
    for (std::size_t at = 3; at < item.slicePitch; at += 4)
        Require(std::to_integer<int>(pixels[at]) == (data[at] >= 128 ? 255 : 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    DdsTexture texture, decompressed;
    if (ParseDds(BytesOf(data, size), texture)) {
        LookAtItems(texture);
        if (IsBlockCompressed(texture.Metadata().format)) {
            Require(DecompressDds(texture, decompressed));
            LookAtItems(decompressed);
        }
    }
    EncodeAndBack(data, size);
    return 0;
}
