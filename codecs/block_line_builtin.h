// A block of 4 × 4 pixels as points along a line between two end points, in sixteen steps: what BC7's mode 6
// and BC6H's modes of one region have in common.
#pragma once

#include <array>
#include <cstdint>

namespace skyvault {

/// The pixels of a block by channel, whole numbers.
struct BlockSamples {
    int channels = 4;  ///< 3: the last one has no part in anything
    alignas(16) float channel[4][16];
};

/// The two ends of a line, by channel.
struct BlockLine {
    std::array<float, 4> ends[2];
};

/// Which of the sixteen steps from the first end to the second each pixel is.
struct BlockSteps {
    alignas(16) int index[16];
    float error = 0;  ///< squared, of all pixels and channels, as the block decodes
};

/// The line on which the pixels differ most, from the first to the last of them along it.
BlockLine PrincipalLine(const BlockSamples& samples);

/// The step of each pixel. The ends are whole numbers from 0 to 65535.
BlockSteps NearestSteps(const BlockSamples& samples, const BlockLine& line);

/// The ends that suit the steps best, by least squares; false where the steps do not fix two.
bool RefineLine(const BlockSamples& samples, const BlockSteps& steps, BlockLine& line);

/// The steps as a block's last 63 bits: four bits each, the first pixel in the lowest and without its
/// highest, which has to be clear.
std::uint64_t PackedSteps(const BlockSteps& steps);

/// Counts the steps from the other end where the first pixel's step needs its highest bit; true when it does,
/// and the ends have to change places.
bool OrderSteps(BlockSteps& steps);

}  // namespace skyvault
