#include "codecs/block_encode_builtin.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#define STB_DXT_STATIC
#define STB_DXT_IMPLEMENTATION
#include <stb_dxt.h>

namespace skyvault {
namespace {

using Colour = std::array<float, 3>;  // red, green, blue, 0 .. 255

constexpr float kMost[3] = {31, 63, 31};
constexpr int kShift[3] = {11, 5, 0};

std::uint16_t ToPacked(const Colour& colour) {
    int packed = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const float level = std::clamp(colour[c], 0.0f, 255.0f) * kMost[c] / 255 + 0.5f;
        packed |= static_cast<int>(level) << kShift[c];
    }
    return static_cast<std::uint16_t>(packed);
}

Colour FromPacked(std::uint16_t packed) {
    Colour colour;
    for (std::size_t c = 0; c < 3; ++c)
        colour[c] = static_cast<float>(packed >> kShift[c] & static_cast<int>(kMost[c])) * 255 / kMost[c];
    return colour;
}

float Dot(const Colour& a, const Colour& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

float DistanceSquared(const Colour& a, const Colour& b) {
    const Colour d = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    return Dot(d, d);
}

/// The opaque pixels of a block, and which ones they are.
struct OpaquePixels {
    std::array<Colour, 16> colours;
    std::array<std::size_t, 16> numbers;
    std::size_t count = 0;
};

/// The colours of the pixels lying furthest apart along the axis on which they differ most.
std::array<Colour, 2> Extremes(const OpaquePixels& pixels) {
    Colour mean{};
    for (std::size_t i = 0; i < pixels.count; ++i)
        for (std::size_t c = 0; c < 3; ++c) mean[c] += pixels.colours[i][c];
    for (float& value : mean) value /= static_cast<float>(pixels.count);

    float covariance[3][3] = {};
    for (std::size_t i = 0; i < pixels.count; ++i)
        for (std::size_t a = 0; a < 3; ++a)
            for (std::size_t b = 0; b < 3; ++b)
                covariance[a][b] += (pixels.colours[i][a] - mean[a]) * (pixels.colours[i][b] - mean[b]);

    // Power iteration, from the covariance's longest row: it cannot stand at right angles to the axis.
    std::size_t longest = 0;
    for (std::size_t c = 1; c < 3; ++c)
        if (covariance[c][c] > covariance[longest][longest]) longest = c;
    Colour axis = {covariance[longest][0], covariance[longest][1], covariance[longest][2]};
    for (int step = 0; step < 8; ++step) {
        Colour next;
        for (std::size_t c = 0; c < 3; ++c)
            next[c] = covariance[c][0] * axis[0] + covariance[c][1] * axis[1] + covariance[c][2] * axis[2];
        const float length = std::sqrt(Dot(next, next));
        if (!(length > 0)) break;
        for (std::size_t c = 0; c < 3; ++c) axis[c] = next[c] / length;
    }
    const auto along = [&](const Colour& a, const Colour& b) { return Dot(a, axis) < Dot(b, axis); };
    const auto [low, high] =
        std::minmax_element(pixels.colours.begin(), pixels.colours.begin() + pixels.count, along);
    return {*low, *high};
}

/// A block of three colours: two end points, and the one half-way.
struct ThreeColours {
    std::uint16_t ends[2];
    std::array<std::uint8_t, 16> indices;  ///< of the opaque pixels
    float error;
};

ThreeColours Quantise(const OpaquePixels& pixels, const std::array<Colour, 2>& ends) {
    ThreeColours result{{ToPacked(ends[0]), ToPacked(ends[1])}, {}, 0};
    Colour palette[3] = {FromPacked(result.ends[0]), FromPacked(result.ends[1]), {}};
    for (std::size_t c = 0; c < 3; ++c) palette[2][c] = (palette[0][c] + palette[1][c]) / 2;
    for (std::size_t i = 0; i < pixels.count; ++i) {
        float best = DistanceSquared(pixels.colours[i], palette[0]);
        for (std::uint8_t index = 1; index < 3; ++index) {
            const float error = DistanceSquared(pixels.colours[i], palette[index]);
            if (error < best) {
                best = error;
                result.indices[i] = index;
            }
        }
        result.error += best;
    }
    return result;
}

/// The end points that suit the indices best, by least squares; false when the indices do not fix two.
bool Refine(const OpaquePixels& pixels, const ThreeColours& block, std::array<Colour, 2>& ends) {
    constexpr float kShareOfSecond[3] = {0, 1, 0.5f};
    float aa = 0, ab = 0, bb = 0;
    Colour ax{}, bx{};
    for (std::size_t i = 0; i < pixels.count; ++i) {
        const float b = kShareOfSecond[block.indices[i]], a = 1 - b;
        aa += a * a;
        ab += a * b;
        bb += b * b;
        for (std::size_t c = 0; c < 3; ++c) {
            ax[c] += a * pixels.colours[i][c];
            bx[c] += b * pixels.colours[i][c];
        }
    }
    const float determinant = aa * bb - ab * ab;
    if (determinant < 1e-3f) return false;
    for (std::size_t c = 0; c < 3; ++c) {
        ends[0][c] = (bb * ax[c] - ab * bx[c]) / determinant;
        ends[1][c] = (aa * bx[c] - ab * ax[c]) / determinant;
    }
    return true;
}

void Store(std::uint16_t first, std::uint16_t second, std::uint32_t indices, std::byte* block) {
    const std::uint32_t ends = first | static_cast<std::uint32_t>(second) << 16;
    std::memcpy(block, &ends, 4);
    std::memcpy(block + 4, &indices, 4);
}

/// A block with transparent pixels: index 3, in the mode with the first end point not above the second.
void EncodeThreeColours(const OpaquePixels& pixels, std::byte* block) {
    if (pixels.count == 0) return Store(0, 0xffff, 0xffffffff, block);
    std::array<Colour, 2> ends = Extremes(pixels);
    ThreeColours best = Quantise(pixels, ends);
    ThreeColours last = best;
    for (int step = 0; step < 4 && last.error > 0 && Refine(pixels, last, ends); ++step) {
        last = Quantise(pixels, ends);
        if (last.error >= best.error) break;
        best = last;
    }
    std::uint32_t indices = 0xffffffff;
    const bool swapped = best.ends[0] > best.ends[1];
    for (std::size_t i = 0; i < pixels.count; ++i) {
        const std::uint32_t index = swapped && best.indices[i] < 2 ? 1 - best.indices[i] : best.indices[i];
        indices &= ~((3 - index) << 2 * pixels.numbers[i]);
    }
    Store(best.ends[swapped], best.ends[!swapped], indices, block);
}

}  // namespace

void EncodeBc1Block(const BlockPixels& pixels, std::byte* block) {
    OpaquePixels opaque;
    // For stb_dxt.h, which reads whole pixels and takes their alpha for a fourth colour.
    alignas(4) std::uint8_t colours[64];
    for (std::size_t i = 0; i < 16; ++i) {
        const std::uint8_t* pixel = pixels.data() + 4 * i;
        std::memcpy(colours + 4 * i, pixel, 3);
        colours[4 * i + 3] = 255;
        if (pixel[3] < 128) continue;
        opaque.colours[opaque.count] = {static_cast<float>(pixel[0]), static_cast<float>(pixel[1]),
                                        static_cast<float>(pixel[2])};
        opaque.numbers[opaque.count++] = i;
    }
    if (opaque.count < 16) return EncodeThreeColours(opaque, block);
    stb_compress_dxt_block(reinterpret_cast<unsigned char*>(block), colours, 0, STB_DXT_HIGHQUAL);
}

void EncodeBc3Block(const BlockPixels& pixels, std::byte* block) {
    alignas(4) BlockPixels aligned = pixels;
    stb_compress_dxt_block(reinterpret_cast<unsigned char*>(block), aligned.data(), 1, STB_DXT_HIGHQUAL);
}

}  // namespace skyvault
