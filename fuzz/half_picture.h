// Bytes as a picture that is read into halves.
#pragma once

#include <algorithm>

#include "codecs/half_values.h"
#include "codecs/picture_codec.h"
#include "fuzz/require.h"

namespace skyvault {

/// Inspects and reads the bytes. What is read must be what the header told, and hold nothing but finite
/// halves.
template <typename Inspect, typename Read>
void ReadHalfPicture(std::span<const std::byte> file, std::size_t headerLimit, Inspect inspect, Read read) {
    constexpr std::uint64_t kMostMemory = std::uint64_t{64} << 20;
    PictureFacts facts;
    const bool told = inspect(file.first(std::min(file.size(), headerLimit)), file.size(), facts).IsDone();
    if (told && facts.memory > kMostMemory) return;
    Image image;
    HalfLosses losses;
    const bool done = read(file, image, losses).IsDone();
    Require(done ? told && image.IsValid() : !image.IsValid());
    if (!done) return;
    Require(image.width == facts.size.width && image.height == facts.size.height &&
            image.format == facts.format && image.ByteCount() <= facts.memory);
    for (std::size_t i = 0; i < image.ByteCount(); i += 2) {
        const std::byte high = image.pixels.get()[i + 1];
        Require((high & std::byte{0x7c}) != std::byte{0x7c});
    }
}

}  // namespace skyvault
