// What a codec's file is asked before the codec gets it: its header, whether a JPEG reaches its end, and a
// GIF's frames.

#include <algorithm>

#include "codecs/gif_frames.h"
#include "codecs/picture_header.h"
#include "fuzz/require.h"

using namespace skyvault;

namespace {

/// The files that reach their end are those from one length on.
void CheckJpegEnd(std::span<const std::byte> file) {
    const bool whole = ReadJpegStructure(file).whole;
    std::size_t cut = 0, enough = file.size();
    while (whole && enough - cut > 1) {
        const std::size_t middle = cut + (enough - cut) / 2;
        (ReadJpegStructure(file.first(middle)).whole ? enough : cut) = middle;
    }
    Require(!whole ||
            (enough >= 4 && file[enough - 2] == std::byte{0xff} && file[enough - 1] == std::byte{0xd9}));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::byte> file = BytesOf(data, size);
    const PictureHeader header = ReadPictureHeader(file.first(std::min(size, kPictureHeaderSize)));
    Require(header.kind != PictureKind::Unknown ||
            (!header.sound && header.width == 0 && header.height == 0));
    constexpr std::uint32_t kLargest = 0x7fffffff;
    Require(!header.sound || (header.width <= kLargest && header.height <= kLargest));
    if (PlausibleSize(header.width, header.height, size)) {
        // What is allocated for it stays in proportion to the file.
        const std::uint64_t bytes = std::uint64_t{4} * header.width * header.height;
        Require(bytes <= (std::uint64_t{256} << 20) + std::uint64_t{4096} * size);
    }
    CheckJpegEnd(file);
    GifFrame frame;
    const std::uint32_t frames = ReadGifFrames(file, 1, frame);
    // A frame takes some bytes, and only GIF files have any.
    Require(frames <= size / 10 && (frames == 0 || header.kind == PictureKind::Gif));
    return 0;
}
