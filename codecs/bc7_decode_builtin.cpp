// BC7 blocks. From the lowest bit of the 128 upwards:
//
//   mode        its number of zeros, then a one
//   partition   which pixel belongs to which pair of end points ("subset")
//   rotation    the channel whose place alpha takes
//   selector    which of two index sets is the colour's
//   end points  red of every end point, then green, blue, alpha
//   p-bits      lowest bit of an end point's channels, for each end point or each pair
//   indices     of each pixel; of the first pixel of each subset (the "anchor") without the highest bit
#include <array>
#include <bit>
#include <utility>

#include "codecs/block_decode_builtin.h"
#include "codecs/bytes.h"

namespace skyvault {
namespace {

struct Mode {
    int subsets;
    int partitionBits, rotationBits, selectorBits;
    int colourBits, alphaBits;
    int pBits;  ///< in all
    int indexBits, secondIndexBits;
};

constexpr Mode kModes[8] = {
    {3, 4, 0, 0, 4, 0, 6, 3, 0}, {2, 6, 0, 0, 6, 0, 2, 3, 0}, {3, 6, 0, 0, 5, 0, 0, 2, 0},
    {2, 6, 0, 0, 7, 0, 4, 2, 0}, {1, 0, 2, 1, 5, 6, 0, 2, 3}, {1, 0, 2, 0, 7, 8, 0, 2, 2},
    {1, 0, 0, 0, 7, 7, 2, 4, 0}, {2, 6, 0, 0, 5, 5, 4, 2, 0},
};

// One bit for each pixel, the first pixel in the lowest one.
constexpr std::uint16_t kTwoSubsets[64] = {
    0xcccc, 0x8888, 0xeeee, 0xecc8, 0xc880, 0xfeec, 0xfec8, 0xec80, 0xc800, 0xffec, 0xfe80, 0xe800, 0xffe8,
    0xff00, 0xfff0, 0xf000, 0xf710, 0x008e, 0x7100, 0x08ce, 0x008c, 0x7310, 0x3100, 0x8cce, 0x088c, 0x3110,
    0x6666, 0x366c, 0x17e8, 0x0ff0, 0x718e, 0x399c, 0xaaaa, 0xf0f0, 0x5a5a, 0x33cc, 0x3c3c, 0x55aa, 0x9696,
    0xa55a, 0x73ce, 0x13c8, 0x324c, 0x3bdc, 0x6996, 0xc33c, 0x9966, 0x0660, 0x0272, 0x04e4, 0x4e40, 0x2720,
    0xc936, 0x936c, 0x39c6, 0x639c, 0x9336, 0x9cc6, 0x817e, 0xe718, 0xccf0, 0x0fcc, 0x7744, 0xee22,
};

// Two bits for each pixel.
constexpr std::uint32_t kThreeSubsets[64] = {
    0xaa685050, 0x6a5a5040, 0x5a5a4200, 0x5450a0a8, 0xa5a50000, 0xa0a05050, 0x5555a0a0, 0x5a5a5050,
    0xaa550000, 0xaa555500, 0xaaaa5500, 0x90909090, 0x94949494, 0xa4a4a4a4, 0xa9a59450, 0x2a0a4250,
    0xa5945040, 0x0a425054, 0xa5a5a500, 0x55a0a0a0, 0xa8a85454, 0x6a6a4040, 0xa4a45000, 0x1a1a0500,
    0x0050a4a4, 0xaaa59090, 0x14696914, 0x69691400, 0xa08585a0, 0xaa821414, 0x50a4a450, 0x6a5a0200,
    0xa9a58000, 0x5090a0a8, 0xa8a09050, 0x24242424, 0x00aa5500, 0x24924924, 0x24499224, 0x50a50a50,
    0x500aa550, 0xaaaa4444, 0x66660000, 0xa5a0a5a0, 0x50a050a0, 0x69286928, 0x44aaaa44, 0x66666600,
    0xaa444444, 0x54a854a8, 0x95809580, 0x96969600, 0xa85454a8, 0x80959580, 0xaa141414, 0x96960000,
    0xaaaa1414, 0xa05050a0, 0xa0a5a5a0, 0x96000000, 0x40804080, 0xa9a8a9a8, 0xaaaaaa44, 0x2a4a5254,
};

// The anchor of the first subset is pixel 0; of the second one of two:
constexpr std::uint8_t kSecondAnchorOfTwo[64] = {
    15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 2,  8, 2,  2, 8,
    8,  15, 2,  8,  2,  2,  8,  8,  2,  2,  15, 15, 6,  8,  2,  8,  15, 15, 2, 8,  2, 2,
    2,  15, 15, 6,  6,  2,  6,  8,  15, 15, 2,  2,  15, 15, 15, 15, 15, 2,  2, 15,
};
// and of the second and third of three.
constexpr std::uint8_t kSecondAnchorOfThree[64] = {
    3,  3,  15, 15, 8, 3,  15, 15, 8,  8,  6, 6,  6, 5,  3, 3,  3,  3,  8,  15, 3,  3,
    6,  10, 5,  8,  8, 6,  8,  5,  15, 15, 8, 15, 3, 5,  6, 10, 8,  15, 15, 3,  15, 5,
    15, 15, 15, 15, 3, 15, 5,  5,  5,  8,  5, 10, 5, 10, 8, 13, 15, 12, 3,  3,
};
constexpr std::uint8_t kThirdAnchorOfThree[64] = {
    15, 8, 8, 3,  15, 15, 3,  8,  15, 15, 15, 15, 15, 15, 15, 8,  15, 8,  15, 3,  15, 8,
    15, 8, 3, 15, 6,  10, 15, 15, 10, 8,  15, 3,  15, 10, 10, 8,  9,  10, 6,  15, 8,  15,
    3,  6, 6, 8,  15, 3,  15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 3,  15, 15, 8,
};

/// Share of the second end point in sixty-fourths, for indices of 2, 3 and 4 bits.
constexpr int kWeights[5][16] = {
    {},
    {},
    {0, 21, 43, 64},
    {0, 9, 18, 27, 37, 46, 55, 64},
    {0, 4, 9, 13, 17, 21, 26, 30, 34, 38, 43, 47, 51, 55, 60, 64},
};

class BitReader {
  public:
    explicit BitReader(const std::byte* block) : low_(Little64(block)), high_(Little64(block + 8)) {}
    /// At most eight bits; every mode's fields add up to the block's 128.
    int Take(int count) {
        const std::uint64_t bits = low_ & ((std::uint64_t{1} << count) - 1);
        if (count > 0) {
            low_ = low_ >> count | high_ << (64 - count);
            high_ >>= count;
        }
        return static_cast<int>(bits);
    }

  private:
    std::uint64_t low_, high_;
};

struct Partition {
    std::array<std::uint8_t, 16> subset{};
    std::array<std::uint8_t, 3> anchor{};
};

Partition MakePartition(int subsets, std::size_t number) {
    Partition partition;
    for (std::size_t i = 0; i < 16; ++i) {
        if (subsets == 2) partition.subset[i] = kTwoSubsets[number] >> i & 1;
        if (subsets == 3) partition.subset[i] = kThreeSubsets[number] >> 2 * i & 3;
    }
    if (subsets == 2) partition.anchor = {0, kSecondAnchorOfTwo[number], 0};
    if (subsets == 3) partition.anchor = {0, kSecondAnchorOfThree[number], kThirdAnchorOfThree[number]};
    return partition;
}

using EndPoints = std::array<std::array<int, 4>, 6>;

/// The end points' channels in eight bits: the highest bits repeat below the lowest.
EndPoints ReadEndPoints(BitReader& bits, const Mode& mode) {
    EndPoints ends{};
    const int count = 2 * mode.subsets;
    for (std::size_t c = 0; c < 4; ++c)
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
            ends[i][c] = bits.Take(c < 3 ? mode.colourBits : mode.alphaBits);
    int p[6] = {};
    for (int i = 0; i < mode.pBits; ++i) p[i] = bits.Take(1);
    for (int i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < 4; ++c) {
            int& value = ends[static_cast<std::size_t>(i)][c];
            int width = c < 3 ? mode.colourBits : mode.alphaBits;
            if (width == 0) {
                value = 255;
                continue;
            }
            if (mode.pBits > 0) {
                value = value << 1 | p[i * mode.pBits / count];
                ++width;
            }
            value <<= 8 - width;
            value |= value >> width;
        }
    }
    return ends;
}

int Mix(int a, int b, int weight) {
    return ((64 - weight) * a + weight * b + 32) >> 6;
}

}  // namespace

void DecodeBc7Block(const std::byte* block, BlockPixels& pixels) {
    const auto modeByte = std::to_integer<std::uint8_t>(block[0]);
    if (modeByte == 0) {
        pixels.fill(0);
        return;
    }
    const int number = std::countr_zero(modeByte);
    const Mode& mode = kModes[number];
    BitReader bits(block);
    bits.Take(number + 1);
    const Partition partition =
        MakePartition(mode.subsets, static_cast<std::size_t>(bits.Take(mode.partitionBits)));
    const auto rotation = static_cast<std::size_t>(bits.Take(mode.rotationBits));
    const bool secondIsColour = bits.Take(mode.selectorBits) != 0;
    const EndPoints ends = ReadEndPoints(bits, mode);

    int first[16], second[16];
    for (std::size_t i = 0; i < 16; ++i)
        first[i] = bits.Take(mode.indexBits - (i == partition.anchor[partition.subset[i]]));
    for (std::size_t i = 0; i < 16; ++i)
        second[i] = mode.secondIndexBits > 0 ? bits.Take(mode.secondIndexBits - (i == 0)) : first[i];
    const int secondBits = mode.secondIndexBits > 0 ? mode.secondIndexBits : mode.indexBits;

    for (std::size_t i = 0; i < 16; ++i) {
        const auto& a = ends[2 * std::size_t{partition.subset[i]}];
        const auto& b = ends[2 * std::size_t{partition.subset[i]} + 1];
        const int firstWeight = kWeights[mode.indexBits][first[i]];
        const int secondWeight = kWeights[secondBits][second[i]];
        const int colourWeight = secondIsColour ? secondWeight : firstWeight;
        const int alphaWeight = secondIsColour ? firstWeight : secondWeight;
        std::uint8_t* pixel = pixels.data() + 4 * i;
        for (std::size_t c = 0; c < 4; ++c)
            pixel[c] = static_cast<std::uint8_t>(Mix(a[c], b[c], c < 3 ? colourWeight : alphaWeight));
        if (rotation > 0) std::swap(pixel[rotation - 1], pixel[3]);
    }
}

}  // namespace skyvault
