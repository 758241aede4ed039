// The inner loops of the blobs, the dots of light and the rectangles: plain loops over blocks of up to
// kBlockSize directions, one table of them for every set of kernels (projection/kernel_choice.h).
#pragma once

#include <cstdint>

#include "generators/random.h"
#include "projection/direction.h"
#include "projection/row_kernels.h"

namespace skyvault {

/// A light infinitely far away; colour 0..255 a channel.
struct Light {
    Direction direction;
    float red = 0, green = 0, blue = 0;
};

/// How far a light spreads from its centre: brightness s = 1 − (1 − cos θ) / spread, below 0 none.
struct LightSpread {
    double spread = 0;   ///< 0: the plain cosine
    float darkUpTo = 0;  ///< no light at this cosine, and at none below it
    bool plain = true;   ///< spread is not used
};

inline constexpr int kMostRectangles = 200;

/// Rectangles as they are seen from the centre: a direction meets one when it lies on the inner side of the
/// four planes through the centre and the rectangle's edges. Unit normals, pointing inwards.
struct RectanglePlanes {
    int count = 0;
    float x[4][kMostRectangles], y[4][kMostRectangles], z[4][kMostRectangles];
};

struct FieldKernels {
    /// sums := Σ max(0, power / q − 1) over the points, q being the squared distance; a point at no distance
    /// adds 1000.
    void (*pull)(const DirectionBlock& directions, int n, const RandomXyz* points, int pointCount,
                 float power, float* sums);
    /// v := the contrast ramp of v / 255, for v ≥ 0 and contrast 0..1. Lowers lowest and raises highest to
    /// what came out; the results are 0..1.
    void (*ramp)(float* v, int n, float contrast, float& lowest, float& highest);
    /// Number of the palette entry (0 .. entries − 1) for v: first spread from lowest..highest to 0..1,
    /// unless these are the same.
    void (*paletteEntries)(const float* v, int n, float lowest, float highest, int entries,
                           std::int32_t* numbers);

    /// Adds a light's share to every direction's sums.
    void (*addLight)(const DirectionBlock& directions, int n, const Light& light, const LightSpread& spread,
                     float* red, float* green, float* blue);
    /// Sums (≥ 0) truncated to 0..255 and packed as an opaque Color8.
    void (*packColours)(const float* red, const float* green, const float* blue, int n,
                        std::uint32_t* colours);

    /// seen[k] := whether a row of pixels from one direction to another may meet rectangle k.
    void (*rectanglesInRun)(const RectanglePlanes& planes, const Direction& from, const Direction& to,
                            std::int32_t* seen);
    /// Gives rectangle k every direction it covers whose owner is still negative. True while owners are left
    /// to be found.
    bool (*coverRectangle)(const DirectionBlock& directions, int n, const RectanglePlanes& planes, int k,
                           std::int32_t* owners);
};

SKYVAULT_KERNEL_TABLE(FieldKernels, FieldPasses)

}  // namespace skyvault
