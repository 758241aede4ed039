// The row engine's sampler: blocks of directions in, rows of pixels out.
//
// Gives the pixels SamplePanorama defines, converted to the destination format, through the passes of
// row_kernels.h:
//
//   normalise, flips and mirrors -> logo disc -> horizon curve -> orientation -> source pixel -> fetch
//
// Where neither the logo nor a curved horizon is in the way, estimates (estimate_kernels.h) find most pixels,
// and only those near a pixel's edge go through all passes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/memory.h"
#include "projection/estimate_kernels.h"
#include "projection/panorama.h"
#include "projection/row_kernels.h"
#include "projection/sample_panorama.h"

namespace skyvault {

class ViewSampler {
  public:
    struct Options {
        PixelFormat format = PixelFormat::None;  ///< of the pixels written
        Color8 emptyColour;                      ///< of a logo disc without a picture
        bool applyOrientation = true;
        bool toUnitLength = false;  ///< directions are defined as unit vectors, but come before they are any
    };

    /// Looks at the panorama as it is now (its pictures must stay until the sampler is gone) and loads the
    /// logo when it is needed.
    ViewSampler(const Panorama& panorama, const Options& options);

    /// A block of directions, and what they look at.
    struct Lookup {
        DirectionBlock directions;
        int count = 0;
        bool someMissing = false;
        int logoHits = 0;
        alignas(64) std::uintptr_t addresses[kBlockSize];  ///< of pixels; a missing one's is some other's
        bool missing[kBlockSize];                          ///< meaningful only with someMissing
        std::int16_t logoLanes[kBlockSize];
        LogoHit logoPoints[kBlockSize];
        int blocksWithoutEstimate = 0;  ///< the next ones, since too many lanes of the last were near edges
    };

    /// Finds the pixels seen along the lookup's directions 0 .. count − 1 (count ≤ kBlockSize), which are
    /// changed, and asks the memory for them: with other work before the Fetch they arrive meanwhile. Both
    /// may be called from several threads at once, each with a lookup of its own.
    void Find(Lookup& lookup, int count) const;

    /// Writes the colours found, at destination.
    void Fetch(const Lookup& lookup, std::byte* destination) const;

    std::uint32_t BytesPerPixel() const { return bytesPerPixel_; }

  private:
    /// A block's components. Those of a panorama that is flipped are exchanged by exchanging pointers.
    struct Components {
        float *x, *y, *z;
    };

    void PrepareEstimates();
    void PrepareLogo();
    /// The steps of the exact lookup: unit length, flips and mirrors; the logo disc; everything from the
    /// horizon curve to the source's pixel, whose addresses are kNoPixel where there is none. True when some
    /// are.
    Components Mirror(DirectionBlock& directions, int count) const;
    void FindLogo(const Components& d, Lookup& lookup) const;
    bool Locate(const Components& d, int count, std::uintptr_t* addresses) const;
    /// Finds all addresses by estimates. False when they are no help.
    bool Estimate(Lookup& lookup) const;
    void SettleNearEdges(const LanesNearEdges& nearEdges, Lookup& lookup) const;
    void LookAtFlatLogo(Lookup& lookup) const;
    /// Whether nothing of the source's pixels shows through: the blend is the logo's colour then.
    bool CoversFully(const PixelValue& logo) const;
    void FixRarePixels(const Lookup& lookup, std::byte* destination) const;

    const Panorama& panorama_;
    const RowKernels& kernels_;
    PixelFormat sourceFormat_ = PixelFormat::None;
    PixelFormat format_;
    Color8 emptyColour_;
    std::uint32_t bytesPerPixel_;
    bool applyOrientation_;
    bool toUnitLength_;
    bool curved_ = false;  ///< the horizon
    bool uniform_ = true;  ///< all valid faces have one size and format; else pixel by pixel
    EquirectGrid equirect_;
    CubeGrid cube_;
    std::array<std::uintptr_t, kFaceCount> bases_{};  ///< first bytes of the source's pictures; 0: missing
    std::uintptr_t present_ = 0;                      ///< any of them that is there
    bool allPresent_ = true;
    enum class Estimated { Nothing, Equirect, Faces } estimated_ = Estimated::Nothing;
    EstimateTurn estimateTurn_;
    FacesInMemory facesInMemory_;
    bool flatLogo_ = false;  ///< every pixel of the logo is this one, to be fetched like the source's
    std::byte flatLogoPixel_[8 + kReadableBehind] = {};
};

}  // namespace skyvault
