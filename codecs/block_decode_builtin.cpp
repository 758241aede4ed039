#include "codecs/block_decode_builtin.h"

#include <cassert>
#include <cstring>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

/// value of `steps` steps in eight bits, rounded to nearest, halves up.
std::uint8_t ToByte(std::uint32_t value, std::uint32_t steps) {
    return static_cast<std::uint8_t>((2 * 255 * value + steps) / (2 * steps));
}

/// The colours between two end points are computed from their 5 or 6 bits, not from the rounded bytes.
///
///   bytes 0..1  first end point, 5 bits red at the top, 6 green, 5 blue
///         2..3  second end point
///         4..7  two bits for each pixel, the first pixel in the lowest ones
///
/// With the first end point not above the second the third colour lies half-way and the fourth is
/// transparent black; in BC2 and BC3 there are always two thirds.
void DecodeColours(const std::byte* block, bool maybeTransparent, BlockPixels& pixels) {
    const std::uint32_t ends[] = {Little16(block), Little16(block + 2)};
    constexpr struct {
        int shift;
        std::uint32_t most;
    } kChannels[] = {{11, 31}, {5, 63}, {0, 31}};

    std::uint8_t palette[4][4];
    for (std::size_t c = 0; c < 3; ++c) {
        const std::uint32_t most = kChannels[c].most;
        const std::uint32_t a = ends[0] >> kChannels[c].shift & most,
                            b = ends[1] >> kChannels[c].shift & most;
        palette[0][c] = ToByte(a, most);
        palette[1][c] = ToByte(b, most);
        if (maybeTransparent && ends[0] <= ends[1]) {
            palette[2][c] = ToByte(a + b, 2 * most);
            palette[3][c] = 0;
        } else {
            palette[2][c] = ToByte(2 * a + b, 3 * most);
            palette[3][c] = ToByte(a + 2 * b, 3 * most);
        }
    }
    palette[0][3] = palette[1][3] = palette[2][3] = 255;
    palette[3][3] = maybeTransparent && ends[0] <= ends[1] ? 0 : 255;

    std::uint32_t indices = Little32(block + 4);
    for (std::size_t i = 0; i < 16; ++i, indices >>= 2)
        std::memcpy(pixels.data() + 4 * i, palette[indices & 3], 4);
}

/// One channel of its own: BC3's alpha, BC4, and each half of BC5.
///
///   byte  0     first end value
///         1     second end value
///         2..7  three bits for each pixel, the first pixel in the lowest ones
///
/// With the first end value above the second six values lie between them; otherwise four, then 0 and 255.
void DecodeChannel(const std::byte* block, std::size_t channel, BlockPixels& pixels) {
    const auto a = std::to_integer<std::uint32_t>(block[0]), b = std::to_integer<std::uint32_t>(block[1]);
    const std::uint32_t steps = a > b ? 7 : 5;
    std::uint8_t values[8];
    values[0] = static_cast<std::uint8_t>(a);
    values[1] = static_cast<std::uint8_t>(b);
    for (std::uint32_t i = 1; i < steps; ++i)
        values[i + 1] = static_cast<std::uint8_t>((2 * ((steps - i) * a + i * b) + steps) / (2 * steps));
    if (a <= b) {
        values[6] = 0;
        values[7] = 255;
    }
    std::uint64_t indices = Little64(block) >> 16;
    for (std::size_t i = 0; i < 16; ++i, indices >>= 3) pixels[4 * i + channel] = values[indices & 7];
}

/// BC2: four bits of alpha for each pixel.
void DecodeAlphaBits(const std::byte* block, BlockPixels& pixels) {
    std::uint64_t alpha = Little64(block);
    for (std::size_t i = 0; i < 16; ++i, alpha >>= 4)
        pixels[4 * i + 3] = static_cast<std::uint8_t>((alpha & 15) * 17);
}

}  // namespace

void DecodeBlock(DdsFormat format, const std::byte* block, BlockPixels& pixels) {
    switch (format) {
        case DdsFormat::Bc1:
            DecodeColours(block, true, pixels);
            break;
        case DdsFormat::Bc2:
            DecodeColours(block + 8, false, pixels);
            DecodeAlphaBits(block, pixels);
            break;
        case DdsFormat::Bc3:
            DecodeColours(block + 8, false, pixels);
            DecodeChannel(block, 3, pixels);
            break;
        case DdsFormat::Bc4:
            pixels.fill(255);
            for (std::size_t c = 0; c < 3; ++c) DecodeChannel(block, c, pixels);
            break;
        case DdsFormat::Bc5:
            for (std::size_t i = 0; i < 16; ++i) {
                pixels[4 * i + 2] = 0;
                pixels[4 * i + 3] = 255;
            }
            DecodeChannel(block, 0, pixels);
            DecodeChannel(block + 8, 1, pixels);
            break;
        case DdsFormat::Bc7:
            DecodeBc7Block(block, pixels);
            break;
        default:
            assert(false);
    }
}

}  // namespace skyvault
