// BC7 blocks written, in two of the eight modes (bc7_decode_builtin.cpp has the fields of all):
//
//   mode 6  one pair of end points of four channels, 7 bits each and a lowest bit in common; sixteen steps
//   mode 5  for blocks of one colour, which it holds exactly: 7 bits for red, green and blue, 8 for alpha,
//   four
//           steps
#include <algorithm>
#include <utility>

#include "codecs/block_bits_builtin.h"
#include "codecs/block_encode_builtin.h"
#include "codecs/block_line_builtin.h"

namespace skyvault {
namespace {

/// One colour. Of the four steps the second is taken, 43 parts of the first end point and 21 of the second,
/// which meets every value between two neighbours of 7 bits.
void EncodeOneColour(const std::uint8_t* pixel, std::byte* block) {
    BlockBits bits;
    bits.Put(1 << 5, 6 + 2);  // the mode, no rotation
    for (int c = 0; c < 3; ++c) {
        const std::uint32_t value = pixel[c];
        bits.Put(value >> 1, 7);
        bits.Put((value < 128 ? value + 1 : value - 1) >> 1, 7);
    }
    bits.Put(pixel[3], 8);
    bits.Put(pixel[3], 8);
    std::uint64_t steps = 1;
    for (int i = 1; i < 16; ++i) steps |= std::uint64_t{1} << (2 * i - 1);
    bits.Put(steps, 31);
    bits.Put(0, 31);
    bits.Store(block);
}

/// The nearest end point there is: in 7 bits and a lowest one that all channels share. opaque: alpha has to
/// be 255, for which that bit is set.
std::array<float, 4> NearestEnd(const std::array<float, 4>& end, bool opaque) {
    std::array<float, 4> best{};
    float bestError = 0;
    for (int lowest = 1; lowest >= (opaque ? 1 : 0); --lowest) {
        std::array<float, 4> tried;
        float error = 0;
        for (std::size_t c = 0; c < 4; ++c) {
            const float half = std::clamp((end[c] - static_cast<float>(lowest)) * 0.5f + 0.5f, 0.0f, 127.0f);
            tried[c] = static_cast<float>(2 * static_cast<int>(half) + lowest);
            error += (tried[c] - end[c]) * (tried[c] - end[c]);
        }
        if (lowest == 1 || error < bestError) {
            best = tried;
            bestError = error;
        }
    }
    if (opaque) best[3] = 255;
    return best;
}

}  // namespace

void EncodeBc7Block(const BlockPixels& pixels, std::byte* block) {
    BlockSamples samples;
    for (std::size_t c = 0; c < 4; ++c)
        for (std::size_t i = 0; i < 16; ++i) samples.channel[c][i] = static_cast<float>(pixels[4 * i + c]);
    bool oneColour = true, opaque = true;
    for (std::size_t i = 0; i < 64; ++i) oneColour &= pixels[i] == pixels[i % 4];
    for (std::size_t i = 3; i < 64; i += 4) opaque &= pixels[i] == 255;
    if (oneColour) return EncodeOneColour(pixels.data(), block);
    samples.channels = opaque ? 3 : 4;

    BlockLine line = PrincipalLine(samples), best;
    BlockSteps bestSteps;
    for (int round = 0; round < 3; ++round) {
        const BlockLine rounded = {{NearestEnd(line.ends[0], opaque), NearestEnd(line.ends[1], opaque)}};
        const BlockSteps steps = NearestSteps(samples, rounded);
        if (round > 0 && steps.error >= bestSteps.error) break;
        best = rounded;
        bestSteps = steps;
        if (steps.error == 0 || !RefineLine(samples, steps, line)) break;
    }
    if (OrderSteps(bestSteps)) std::swap(best.ends[0], best.ends[1]);

    BlockBits bits;
    bits.Put(1 << 6, 7);
    for (std::size_t c = 0; c < 4; ++c)
        for (const auto& end : best.ends) bits.Put(static_cast<std::uint64_t>(end[c]) >> 1, 7);
    for (const auto& end : best.ends) bits.Put(static_cast<std::uint64_t>(end[0]) & 1, 1);
    bits.Put(PackedSteps(bestSteps), 63);
    bits.Store(block);
}

}  // namespace skyvault
