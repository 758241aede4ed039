// BC6H blocks written (unsigned), in the four modes of one region. From the lowest bit of the 128 upwards:
//
//   mode        5 bits
//   first end   the lowest 10 bits of red, green and blue
//   second end  of red: the difference from the first end (in the mode of 10 bits the value itself), then
//   those
//               bits of the first end's red that are above 10, the highest first; then of green and of blue
//   indices     four bits of each pixel, of the first pixel without the highest
//
// End points are shares of 65536 steps from 0 to the largest half. The more bits they have, the closer they
// must lie: what a picture needs in its plain parts.
#include <algorithm>
#include <cmath>
#include <utility>

#include "codecs/block_bits_builtin.h"
#include "codecs/block_encode_builtin.h"
#include "codecs/block_line_builtin.h"

namespace skyvault {
namespace {

struct Mode {
    int number;
    int endBits;
    int differenceBits;
};

// From fine to coarse. In the last one the second end is no difference.
constexpr Mode kModes[] = {{0x0f, 16, 4}, {0x0b, 12, 8}, {0x07, 11, 9}, {0x03, 10, 10}};
constexpr const Mode& kAnyEnds = kModes[3];

constexpr std::uint16_t kLargestHalf = 0x7bff;

/// The step of a half: a decoder makes v · 31 / 64 of it, rounded down. Nothing is below 0 or infinite.
float StepOfHalf(std::uint16_t half) {
    const bool number = (half & 0x7fff) <= 0x7c00;
    const int bits = half & 0x8000 || !number ? 0 : std::min(half, kLargestHalf);
    const int step = (bits * 64 + 31) / 31;
    return static_cast<float>(step);
}

/// A step in fewer bits, and what a decoder makes of those.
int Shorten(float step, int bits) {
    const float scaled = std::clamp(step, 0.0f, 65535.0f) / static_cast<float>(1 << (16 - bits));
    return std::min(static_cast<int>(bits == 16 ? scaled + 0.5f : scaled), (1 << bits) - 1);
}
float Lengthen(int value, int bits) {
    if (bits == 16 || value == 0) return static_cast<float>(value);
    if (value == (1 << bits) - 1) return 65535;
    return static_cast<float>(((value << 16) + 0x8000) >> bits);
}

/// The line's ends in the finest mode that holds both.
struct Ends {
    const Mode* mode = nullptr;
    int values[2][3] = {};
    BlockLine line{};  ///< as a decoder sees them
};

Ends NearestEnds(const BlockLine& line) {
    Ends ends;
    for (const Mode& mode : kModes) {
        ends.mode = &mode;
        bool fits = true;
        for (std::size_t c = 0; c < 3; ++c) {
            for (std::size_t e = 0; e < 2; ++e) {
                ends.values[e][c] = Shorten(line.ends[e][c], mode.endBits);
                ends.line.ends[e][c] = Lengthen(ends.values[e][c], mode.endBits);
            }
            // Either way around, for the ends may change places.
            fits &= std::abs(ends.values[1][c] - ends.values[0][c]) < 1 << (mode.differenceBits - 1);
        }
        if (fits) break;
    }
    return ends;
}

}  // namespace

void EncodeBc6hBlock(const BlockHalves& pixels, std::byte* block) {
    BlockSamples samples;
    samples.channels = 3;
    for (std::size_t c = 0; c < 3; ++c)
        for (std::size_t i = 0; i < 16; ++i) samples.channel[c][i] = StepOfHalf(pixels[4 * i + c]);

    BlockLine line = PrincipalLine(samples);
    Ends best;
    BlockSteps bestSteps;
    for (int round = 0; round < 3; ++round) {
        const Ends ends = NearestEnds(line);
        const BlockSteps steps = NearestSteps(samples, ends.line);
        if (round > 0 && steps.error >= bestSteps.error) break;
        best = ends;
        bestSteps = steps;
        if (steps.error == 0 || !RefineLine(samples, steps, line)) break;
    }
    if (OrderSteps(bestSteps)) std::swap(best.values[0], best.values[1]);

    const Mode& mode = *best.mode;
    BlockBits bits;
    bits.Put(static_cast<std::uint64_t>(mode.number), 5);
    for (const int first : best.values[0]) bits.Put(first & 0x3ff, 10);
    for (std::size_t c = 0; c < 3; ++c) {
        const int first = best.values[0][c], second = best.values[1][c];
        const int stored = &mode == &kAnyEnds ? second : second - first;
        bits.Put(stored & ((1 << mode.differenceBits) - 1), mode.differenceBits);
        for (int bit = mode.endBits - 1; bit >= 10; --bit) bits.Put(first >> bit & 1, 1);
    }
    bits.Put(PackedSteps(bestSteps), 63);
    bits.Store(block);
}

}  // namespace skyvault
