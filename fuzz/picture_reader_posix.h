// Bytes as a picture file, read from memory by one of the program's own readers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "codecs/file_source_posix.h"
#include "codecs/picture_codec.h"
#include "fuzz/require.h"

namespace skyvault {

/// What is read must be what the header told, take no more than it told, and be the file's to its last byte:
/// memory that nobody wrote to would be seen when reading twice.
template <typename File>
void ReadWith(std::span<const std::byte> bytes) {
    constexpr std::uint64_t kMostMemory = std::uint64_t{32} << 20;
    const FileSource source(bytes);
    File file(source);
    if (!file.Select(0)) return;
    const PictureFacts facts = file.Facts();
    const std::uint64_t pixels = std::uint64_t{facts.size.width} * facts.size.height;
    Require(pixels > 0 && facts.memory >= BytesPerPixel(facts.format) * pixels);
    Image image, again;
    if (facts.memory > kMostMemory || !file.Read(image)) return;
    Require(image.width == facts.size.width && image.height == facts.size.height &&
            image.format == facts.format);
    File another(source);
    Require(another.Select(0) && another.Read(again) &&
            std::equal(image.pixels.get(), image.pixels.get() + image.ByteCount(), again.pixels.get()));
}

}  // namespace skyvault
