#include "codecs/block_line_builtin.h"

#include <cassert>
#include <cmath>

namespace skyvault {
namespace {

constexpr int kPixels = 16;

/// Share of the second end in sixty-fourths, which is what a decoder's table of weights holds.
float WeightOfStep(int step) {
    return static_cast<float>(static_cast<int>((static_cast<float>(step) * 64 + 7.5f) * (1.0f / 15)));
}

/// Four sums side by side, which a vector of four holds.
float Sum(const float (&values)[kPixels]) {
    float sums[4] = {};
    for (int i = 0; i < kPixels; i += 4)
        for (int k = 0; k < 4; ++k) sums[k] += values[i + k];
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

float SumOfProducts(const float (&a)[kPixels], const float (&b)[kPixels]) {
    float sums[4] = {};
    for (int i = 0; i < kPixels; i += 4)
        for (int k = 0; k < 4; ++k) sums[k] += a[i + k] * b[i + k];
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

template <int kChannels>
BlockLine LineThrough(const BlockSamples& samples) {
    float mean[kChannels];
    BlockSamples centred;
    for (int c = 0; c < kChannels; ++c) {
        mean[c] = Sum(samples.channel[c]) / kPixels;
        for (int i = 0; i < kPixels; ++i) centred.channel[c][i] = samples.channel[c][i] - mean[c];
    }
    float covariance[kChannels][kChannels];
    for (int a = 0; a < kChannels; ++a) {
        for (int b = a; b < kChannels; ++b) {
            covariance[a][b] = SumOfProducts(centred.channel[a], centred.channel[b]);
            covariance[b][a] = covariance[a][b];
        }
    }
    // Power iteration, from the covariance's longest row: it cannot stand at right angles to the axis.
    int longest = 0;
    for (int c = 1; c < kChannels; ++c)
        if (covariance[c][c] > covariance[longest][longest]) longest = c;
    float axis[kChannels];
    const float scale = covariance[longest][longest] > 0 ? 1 / covariance[longest][longest] : 0.0f;
    for (int c = 0; c < kChannels; ++c) axis[c] = covariance[longest][c] * scale;
    for (int round = 0; round < 4; ++round) {
        float next[kChannels], most = 0;
        for (int c = 0; c < kChannels; ++c) {
            next[c] = 0;
            for (int k = 0; k < kChannels; ++k) next[c] += covariance[k][c] * axis[k];
            most = std::fabs(next[c]) > most ? std::fabs(next[c]) : most;
        }
        if (!(most > 0)) break;
        for (int c = 0; c < kChannels; ++c) axis[c] = next[c] / most;
    }

    alignas(16) float along[kPixels];
    float squared = 0;
    for (const float part : axis) squared += part * part;
    const float inverse = squared > 0 ? 1 / squared : 0.0f;
    for (int i = 0; i < kPixels; ++i) {
        float sum = 0;
        for (int c = 0; c < kChannels; ++c) sum += centred.channel[c][i] * axis[c];
        along[i] = sum * inverse;
    }
    float low = along[0], high = along[0];
    for (int i = 1; i < kPixels; ++i) {
        low = along[i] < low ? along[i] : low;
        high = along[i] > high ? along[i] : high;
    }
    BlockLine line{};
    for (std::size_t c = 0; c < kChannels; ++c) {
        line.ends[0][c] = mean[c] + low * axis[c];
        line.ends[1][c] = mean[c] + high * axis[c];
    }
    return line;
}

template <int kChannels>
BlockSteps StepsAlong(const BlockSamples& samples, const BlockLine& line) {
    float from[kChannels], across[kChannels], squared = 0;
    for (std::size_t c = 0; c < kChannels; ++c) {
        from[c] = line.ends[0][c];
        across[c] = line.ends[1][c] - from[c];
        squared += across[c] * across[c];
    }
    const float scale = squared > 0 ? 15 / squared : 0.0f;
    float slope[kChannels];
    for (int c = 0; c < kChannels; ++c) slope[c] = across[c] * scale;
    BlockSteps steps;
    alignas(16) float weights[kPixels], errors[kPixels] = {};
    for (int i = 0; i < kPixels; ++i) {
        float step = 0.5f;
        for (int c = 0; c < kChannels; ++c) step += (samples.channel[c][i] - from[c]) * slope[c];
        step = step > 0 ? step : 0.0f;
        step = step < 15 ? step : 15.0f;
        steps.index[i] = static_cast<int>(step);
        weights[i] = WeightOfStep(steps.index[i]);
    }
    // What a decoder makes of it: ((64 − w) · a + w · b + 32) / 64, rounded down.
    for (int c = 0; c < kChannels; ++c) {
        for (int i = 0; i < kPixels; ++i) {
            const float mixed = static_cast<float>(
                static_cast<int>((from[c] * 64 + across[c] * weights[i] + 32) * (1.0f / 64)));
            const float error = mixed - samples.channel[c][i];
            errors[i] += error * error;
        }
    }
    steps.error = Sum(errors);
    return steps;
}

template <int kChannels>
bool Refine(const BlockSamples& samples, const BlockSteps& steps, BlockLine& line) {
    alignas(16) float first[kPixels], second[kPixels];
    for (int i = 0; i < kPixels; ++i) {
        second[i] = WeightOfStep(steps.index[i]) * (1.0f / 64);
        first[i] = 1 - second[i];
    }
    const float aa = SumOfProducts(first, first), ab = SumOfProducts(first, second),
                bb = SumOfProducts(second, second);
    const float determinant = aa * bb - ab * ab;
    if (determinant < 1e-3f) return false;
    const float inverse = 1 / determinant;
    for (std::size_t c = 0; c < kChannels; ++c) {
        const float ax = SumOfProducts(first, samples.channel[c]),
                    bx = SumOfProducts(second, samples.channel[c]);
        line.ends[0][c] = (bb * ax - ab * bx) * inverse;
        line.ends[1][c] = (aa * bx - ab * ax) * inverse;
    }
    return true;
}

}  // namespace

BlockLine PrincipalLine(const BlockSamples& samples) {
    return samples.channels == 3 ? LineThrough<3>(samples) : LineThrough<4>(samples);
}

BlockSteps NearestSteps(const BlockSamples& samples, const BlockLine& line) {
    return samples.channels == 3 ? StepsAlong<3>(samples, line) : StepsAlong<4>(samples, line);
}

bool RefineLine(const BlockSamples& samples, const BlockSteps& steps, BlockLine& line) {
    return samples.channels == 3 ? Refine<3>(samples, steps, line) : Refine<4>(samples, steps, line);
}

bool OrderSteps(BlockSteps& steps) {
    if (steps.index[0] < 8) return false;
    for (int& index : steps.index) index = 15 - index;
    return true;
}

std::uint64_t PackedSteps(const BlockSteps& steps) {
    assert(steps.index[0] < 8);
    std::uint64_t bits = 0;
    for (int i = kPixels - 1; i > 0; --i) bits = bits << 4 | static_cast<std::uint64_t>(steps.index[i]);
    return bits << 3 | static_cast<std::uint64_t>(steps.index[0]);
}

}  // namespace skyvault
