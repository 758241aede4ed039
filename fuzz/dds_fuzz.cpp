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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    DdsTexture texture, decompressed;
    if (ParseDds(BytesOf(data, size), texture)) {
        LookAtItems(texture);
        if (IsDecompressed(texture.Metadata().format)) {
            Require(DecompressDds(texture, decompressed));
            LookAtItems(decompressed);
        }
    }
    return 0;
}
