// Estimates of which pixel a direction looks at.
//
// A pixel is defined by a chain of rounded steps, the exact lookup (row_kernels.h). A cheaper chain (no unit
// length, one division for two, the turn on the way) finds the same pixel unless it lies within a margin of a
// pixel's edge. Those two lanes in a hundred take the exact lookup, so the bytes are those of the exact
// lookup.
//
// A margin is no less than the sum of all roundings, each at its worst and all to one side. In u = 2^-24 =
// 6e-8, half a unit in the last place of 1:
//
//     margin of a position, as a share of    is    exact lookup  estimate  direction and turn   worst seen
//     column: the width                      10.9u      5.1u       3.9u    1.8u / cos(latitude)    0.3
//       and near the poles: width · tan       2.5u                                                 0.2
//     row: the height                        11.7u      3.6u       4.4u    3.6u                    0.3
//     pixel of a face: the face's edge       21.0u      2.0u       2.0u    13.9u                   0.2
//
// Exact lookup: of a column, 2 units of the arc tangent (1.3u of the width), π and the sum with it (0.8u),
// the product, the quotient and the half that rounds (1u each). Estimate: the polynomial's error (1.3u), its
// own roundings (0.5u), the quotient's seven (1.1u at most), the sum (1u). Direction and turn: each component
// off by 5u of the length in the one chain, 3u in the other. Worst seen: the largest difference between the
// two chains, as a share of the margin, of 12 million lanes aimed at edges. The border between two faces is
// an edge of the pixels on either side, and needs no margin of its own.
#pragma once

#include <cstdint>

#include "projection/row_kernels.h"

namespace skyvault {

/// The shares of the table above.
inline constexpr float kColumnMargin = 6.5e-7f, kPoleMargin = 1.5e-7f, kRowMargin = 7e-7f;
inline constexpr float kFacePixelMargin = 1.25e-6f;

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

/// The lanes of a block that look within a margin of an edge, in no order.
struct LanesNearEdges {
    int count = 0;
    std::uint8_t lanes[kBlockSize];
};

/// Both give the address of the pixel each direction reads; at lanes near an edge, and where a direction is
/// none (NaN, the zero vector), which are among them, it is anything. All pixels lie within 4 GiB.
struct EstimateKernels {
    void (*equirect)(const DirectionBlock& block, int n, const EquirectGrid& grid, const EstimateTurn& turn,
                     std::uint64_t* addresses, LanesNearEdges& nearEdges);
    void (*faces)(const DirectionBlock& block, int n, const FacesInMemory& faces, const EstimateTurn& turn,
                  std::uint64_t* addresses, LanesNearEdges& nearEdges);
    /// Whether any direction may meet the nadir disc of that radius in the tangent plane; none does at false.
    bool (*nearNadir)(const DirectionBlock& block, int n, float radius);
};

SKYVAULT_KERNEL_TABLE(EstimateKernels, Estimates)

}  // namespace skyvault
