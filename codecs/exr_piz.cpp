// OpenEXR's wavelet compression ("PIZ"): the words of 16 bits that occur are numbered, the numbers of each
// channel go through a wavelet transform in both directions, and what comes of it is entropy coded.

#include <algorithm>
#include <array>
#include <cstring>

#include "codecs/bytes.h"
#include "codecs/exr_blocks.h"
#include "codecs/exr_huffman.h"

namespace skyvault {
namespace {

constexpr std::size_t kWords = 65536;

struct PizTables {
    ExrHuffmanTables huffman;
    std::array<std::uint16_t, kWords> wordOf;  ///< by its number
};

/// From the bytes first..last of a set of 65536 bits; word 0 always counts as in use. The largest number.
std::uint32_t NumberWords(std::span<const std::byte> bits, std::size_t first,
                          std::array<std::uint16_t, kWords>& wordOf) {
    std::size_t count = 0;
    wordOf[count++] = 0;
    for (std::size_t i = 0; i < 8 * bits.size(); ++i) {
        const std::size_t word = 8 * first + i;
        const bool used = (std::to_integer<unsigned>(bits[i / 8]) >> i % 8 & 1) != 0;
        if (used && word != 0) wordOf[count++] = static_cast<std::uint16_t>(word);
    }
    std::fill(wordOf.begin() + static_cast<std::ptrdiff_t>(count), wordOf.end(), std::uint16_t{0});
    return static_cast<std::uint32_t>(count - 1);
}

struct Pair {
    std::uint16_t first, second;
};

/// A mean and a difference back into two numbers, of at most 14 bits.
struct Narrow {
    static Pair Split(std::uint16_t mean, std::uint16_t difference) {
        const int d = static_cast<std::int16_t>(difference);
        const int a = static_cast<std::int16_t>(mean) + (d & 1) + (d >> 1);
        return {static_cast<std::uint16_t>(a), static_cast<std::uint16_t>(a - d)};
    }
};

/// The same of numbers of 16 bits, which wrap around.
struct Wide {
    static Pair Split(std::uint16_t mean, std::uint16_t difference) {
        constexpr int kMiddle = 1 << 15;
        const int b = mean - (difference >> 1);
        return {static_cast<std::uint16_t>(b + difference - kMiddle), static_cast<std::uint16_t>(b)};
    }
};

/// A plane of numbers that lie `across` apart in a line and `down` from line to line.
struct Plane {
    std::uint16_t* start;
    std::size_t width, height, across, down;

    std::uint16_t& At(std::size_t x, std::size_t y) const { return start[x * across + y * down]; }
};

/// One level: numbers at multiples of 2 · step hold the means, those between them the differences.
template <typename Kind>
void UndoLevel(const Plane& plane, std::size_t step) {
    const std::size_t wholeX = plane.width / (2 * step) * 2 * step,
                      wholeY = plane.height / (2 * step) * 2 * step;
    const bool restX = (plane.width & step) != 0, restY = (plane.height & step) != 0;
    for (std::size_t y = 0; y < wholeY; y += 2 * step) {
        for (std::size_t x = 0; x < wholeX; x += 2 * step) {
            std::uint16_t &a = plane.At(x, y), &b = plane.At(x + step, y);
            std::uint16_t &c = plane.At(x, y + step), &d = plane.At(x + step, y + step);
            const Pair left = Kind::Split(a, c), right = Kind::Split(b, d);
            const Pair top = Kind::Split(left.first, right.first);
            const Pair bottom = Kind::Split(left.second, right.second);
            a = top.first, b = top.second, c = bottom.first, d = bottom.second;
        }
        if (restX) {
            std::uint16_t &a = plane.At(wholeX, y), &c = plane.At(wholeX, y + step);
            const Pair pair = Kind::Split(a, c);
            a = pair.first, c = pair.second;
        }
    }
    if (!restY) return;
    for (std::size_t x = 0; x < wholeX; x += 2 * step) {
        std::uint16_t &a = plane.At(x, wholeY), &b = plane.At(x + step, wholeY);
        const Pair pair = Kind::Split(a, b);
        a = pair.first, b = pair.second;
    }
}

void UndoWavelet(const Plane& plane, std::uint32_t largest) {
    const std::size_t side = std::min(plane.width, plane.height);
    std::size_t step = 1;
    while (2 * step <= side) step *= 2;
    for (step /= 2; step > 0; step /= 2) {
        if (largest < 1 << 14) {
            UndoLevel<Narrow>(plane, step);
        } else {
            UndoLevel<Wide>(plane, step);
        }
    }
}

}  // namespace

const std::size_t kPizTables = sizeof(PizTables);

bool UnpackPiz(const ExrHeader& header, std::span<const std::byte> packed, std::uint32_t width,
               std::uint32_t height, std::span<std::uint16_t> words, std::byte* tables) {
    constexpr std::size_t kBitsBytes = kWords / 8;
    PizTables& own = *reinterpret_cast<PizTables*>(tables);
    if (packed.size() < 4) return false;
    const std::size_t first = Little16(&packed[0]), last = Little16(&packed[2]);
    packed = packed.subspan(4);
    const std::size_t count = first <= last ? last + 1 - first : 0;
    if (last >= kBitsBytes || packed.size() < count + 4) return false;
    const std::uint32_t largest = NumberWords(packed.first(count), first, own.wordOf);
    const std::size_t length = Little32(&packed[count]);
    packed = packed.subspan(count + 4);
    if (length > packed.size() || !DecodeExrHuffman(packed.first(length), words, own.huffman)) return false;

    std::size_t at = 0;
    for (const ExrChannel& channel : header.channels) {
        // Both halves of a wider value are planes of their own.
        const std::size_t halves = BytesOf(channel.type) / 2;
        for (std::size_t half = 0; half < halves; ++half) {
            UndoWavelet({words.data() + at + half, width, height, halves, halves * width}, largest);
        }
        at += halves * width * height;
    }
    for (std::uint16_t& word : words) word = own.wordOf[word];
    return true;
}

}  // namespace skyvault
