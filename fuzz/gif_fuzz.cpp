#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "codecs/gif_frames.h"
#include "codecs/picture_header.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::byte> file(reinterpret_cast<const std::byte*>(data), size);
    const PictureHeader header = ReadPictureHeader(file.first(std::min(size, kPictureHeaderSize)));
    GifFrame frame;
    const std::uint32_t count = ReadGifFrames(file, 1, frame);
    // A frame takes some bytes, and only GIF files have any.
    if (count > size / 10) std::abort();
    if (count > 0 && header.kind != PictureKind::Gif) std::abort();
    return 0;
}
