// Quick estimates of which pixel a direction looks at, built twice like the passes of row_kernels.h and
// chosen together with them.
//
// The pixel a direction reads is defined by a chain of single-precision steps, each with its rounding. An
// estimate takes a shorter way to the same position on the picture: no unit length, one division for two, and
// the turn on the way. It is off by less than a margin that both ways' roundings add up to; where the
// position lies farther than that from the next pixel, the estimated pixel is the defined one. Everywhere
// else, at some two pixels in a hundred, the direction is doubtful and has to take the whole way.
#pragma once

#include <cstdint>

#include "projection/row_kernels.h"

namespace skyvault {

/// What happens to a direction before it is looked up.
struct EstimateTurn {
    bool exchangeXz = false, absoluteY = false, absoluteZ = false;  ///< in this order
    bool turned = false;
    float m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};  ///< x' = x·m[0][0] + y·m[1][0] + z·m[2][0], …
};

/// Six faces of one size and format.
struct FacesInMemory {
    CubeGrid grid;
    std::uint64_t origin = 0;     ///< the address of the lowest face's first pixel
    std::uint32_t bases[6] = {};  ///< from there to the first pixel of each; multiples of 8
};

/// The lanes of a block that are to be looked up the whole way, in no order.
struct DoubtfulLanes {
    int count = 0;
    std::uint8_t lanes[kBlockSize];
};

/// Both give the address of the pixel each direction reads; at doubtful lanes it is anything. All pixels lie
/// within 4 GiB.
struct EstimateKernels {
    void (*equirect)(const DirectionBlock& block, int n, const EquirectGrid& grid, const EstimateTurn& turn,
                     std::uint64_t* addresses, DoubtfulLanes& doubtful);
    void (*faces)(const DirectionBlock& block, int n, const FacesInMemory& faces, const EstimateTurn& turn,
                  std::uint64_t* addresses, DoubtfulLanes& doubtful);
    /// Whether any direction may meet the nadir disc of that radius in the tangent plane; none does at false.
    bool (*nearNadir)(const DirectionBlock& block, int n, float radius);
};

/// Of the set Kernels() gives.
const EstimateKernels& Estimates();

}  // namespace skyvault
