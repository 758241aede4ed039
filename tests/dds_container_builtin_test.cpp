#include "image/dds_container_builtin.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "image/block_decode_builtin.h"
#include "image/block_encode_builtin.h"
#include "tests/made_dds.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::Bytes;
using test::DdsFields;
using test::MakeDds;

bool Parse(const Bytes& file, DdsTexture& texture) {
    return ParseDds({reinterpret_cast<const std::byte*>(file.data()), file.size()}, texture);
}

class OutOfMemory {
  public:
    explicit OutOfMemory(int allowed) { FailAllocationsAfter(allowed); }
    ~OutOfMemory() { FailAllocationsAfter(-1); }
};

TEST(DdsBuiltin, EveryCutIsRefusedAndNeedsNoMemory) {
    const DdsFields cases[] = {
        {.mipLevels = 3, .caps2 = 0xfe00},
        {.formatFlags = 0x20, .bits = 8, .masks = {}},
        test::Coded(test::FourCc("DXT5"), {.width = 9}),
        test::Dx10({.format = 98, .arraySize = 3}),
    };
    const std::size_t sizes[] = {504, 1040, 48, 48};
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const Bytes whole = MakeDds(cases[i], Bytes(sizes[i], 1));
        DdsTexture texture;
        ASSERT_TRUE(Parse(whole, texture)) << i;
        const OutOfMemory none(0);
        for (std::size_t size = 0; size < whole.size(); ++size)
            ASSERT_FALSE(
                Parse(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), texture))
                << "case " << i << " of " << size << " bytes";
        EXPECT_NE(texture.Item(0).pixels, nullptr) << "what was loaded before stays";
    }
}

TEST(DdsBuiltin, WithoutMemoryNothingIsLoadedOrConverted) {
    DdsTexture texture, result;
    // 24-bit rows need a row of their own besides the picture.
    const Bytes file =
        MakeDds({.formatFlags = 0x40, .bits = 24, .masks = {0xff0000, 0xff00, 0xff, 0}}, Bytes(48));
    for (const int allowed : {0, 1}) {
        const OutOfMemory none(allowed);
        EXPECT_FALSE(Parse(file, texture));
    }
    ASSERT_TRUE(Parse(file, texture));
    const DdsItem item = texture.Item(0);
    {
        const OutOfMemory none(0);
        EXPECT_FALSE(CompressToBc1(texture.Metadata(), {&item, 1}, result));
    }
    ASSERT_TRUE(CompressToBc1(texture.Metadata(), {&item, 1}, result));
    const OutOfMemory none(0);
    EXPECT_FALSE(DecompressDds(result, texture));
}

TEST(DdsBuiltin, EndPointsGoWhereMostPixelsAre) {
    // One transparent pixel, one of 40, seven each of 80 and 200: the best ends are near 75 and 200, not at
    // the extremes 40 and 200, which leave the 80s 40 away from any colour.
    BlockPixels pixels;
    for (std::size_t i = 0; i < 16; ++i) {
        std::fill_n(pixels.begin() + 4 * i, 3, static_cast<std::uint8_t>(i < 2 ? 40 : i % 2 ? 80 : 200));
        pixels[4 * i + 3] = i == 0 ? 0 : 255;
    }
    std::byte block[8];
    EncodeBc1Block(pixels, block);
    BlockPixels decoded;
    DecodeBlock(DdsFormat::Bc1, block, decoded);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(decoded[4 * i + 3], pixels[4 * i + 3]);
        if (i < 2) continue;
        EXPECT_NEAR(decoded[4 * i], pixels[4 * i], 8) << i;
    }
}

}  // namespace
}  // namespace skyvault
