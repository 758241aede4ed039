// The one sampler: which colour is seen along a direction.
#pragma once

#include "image/pixel.h"
#include "projection/direction.h"
#include "projection/panorama.h"

namespace skyvault {

/// The colour seen along the output direction d (any length): flip and mirrors, the logo disc at the
/// nadir, the horizon curve, the orientation, then one pixel of the equirectangular source or of the cube
/// faces, and the logo over it. emptyColour: of a logo disc without a picture (EmptyColour). applyOrientation
/// false leaves out the curve and the orientation.
/// This is the definition; pictures are made by ViewSampler, which gives the same pixels by the row.
PixelValue SamplePanorama(const Panorama& panorama, Direction d, const Color8& emptyColour,
                          bool applyOrientation = true);

/// Which pixel of the logo disc a direction meets, before orientation.
struct LogoHit {
    bool onDisc = false;
    float u = 0, w = 0;  ///< tangent plane of the nadir, towards left and towards the back
};
LogoHit HitLogoDisc(const Direction& d, float logoSize);

/// The logo's colour at a point of the disc: a pixel of the logo picture, or without one the empty colour.
PixelValue LogoColour(const Panorama& panorama, const LogoHit& hit, const Color8& emptyColour);

/// Blends the logo over a sampled colour, in the sampled colour's channel type; its alpha stays.
PixelValue BlendLogo(const PixelValue& logo, const PixelValue& under);

}  // namespace skyvault
