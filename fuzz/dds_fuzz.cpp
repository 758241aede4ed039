#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "codecs/dds_container_builtin.h"

using namespace skyvault;

namespace {

/// Every pixel can be looked at, and none is uninitialised.
void LookAt(const DdsTexture& texture) {
    std::size_t sum = 0;
    for (std::uint32_t i = 0; i < texture.Metadata().arraySize; ++i) {
        const DdsItem item = texture.Item(i);
        if (!item.pixels || item.width == 0 || item.height == 0) std::abort();
        for (std::size_t at = 0; at < item.slicePitch; ++at)
            sum += std::to_integer<std::size_t>(item.pixels[at]);
    }
    volatile std::size_t sink = sum;
    static_cast<void>(sink);
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
    const DdsItem item = {reinterpret_cast<const std::byte*>(data), metadata.width, metadata.height, rowPitch,
                          rowPitch * metadata.height};
    DdsTexture compressed, decoded;
    if (!CompressToBc1(metadata, {&item, 1}, compressed) || !DecompressDds(compressed, decoded)) std::abort();
    const std::byte* pixels = decoded.Item(0).pixels;
    for (std::size_t at = 3; at < item.slicePitch; at += 4)
        if (std::to_integer<int>(pixels[at]) != (data[at] >= 128 ? 255 : 0)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    DdsTexture texture, decompressed;
    if (ParseDds({reinterpret_cast<const std::byte*>(data), size}, texture)) {
        LookAt(texture);
        if (IsBlockCompressed(texture.Metadata().format)) {
            if (!DecompressDds(texture, decompressed)) std::abort();
            LookAt(decompressed);
        }
    }
    EncodeAndBack(data, size);
    return 0;
}
