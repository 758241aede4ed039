// The row engine's sampler: blocks of directions in, rows of pixels out.
//
// Gives the pixels SamplePanorama defines, converted to the destination format, through the passes of
// row_kernels.h:
//
//   normalise, flips and mirrors -> logo disc -> horizon curve -> orientation -> source pixel -> fetch
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "projection/panorama.h"
#include "projection/row_kernels.h"
#include "projection/sample_panorama.h"

namespace skyvault {

class ViewSampler {
  public:
    /// Looks at the panorama as it is now (its pictures must stay until the sampler is gone) and loads the
    /// logo when it is needed. format: of the pixels written.
    ViewSampler(Panorama& panorama, PixelFormat format, bool applyOrientation = true);

    /// What a block's directions look at.
    struct Lookup {
        int count = 0;
        bool someMissing = false;
        int logoHits = 0;
        alignas(64) std::uintptr_t addresses[kBlockSize];  ///< of pixels; a missing one's is some other's
        bool missing[kBlockSize];                          ///< meaningful only with someMissing
        std::int16_t logoLanes[kBlockSize];
        LogoHit logoPoints[kBlockSize];
        DirectionBlock directions;  ///< only of panoramas that are looked up pixel by pixel
    };

    /// Finds the pixels seen along directions 0 .. count − 1 (count ≤ kBlockSize) and asks the memory for
    /// them: with other work before the Fetch they arrive meanwhile. The directions are changed. Both steps
    /// may be called from several threads at once.
    void Find(DirectionBlock& directions, int count, Lookup& lookup) const;

    /// Writes the colours at destination.
    void Fetch(const Lookup& lookup, std::byte* destination) const;

    /// Both.
    void Sample(DirectionBlock& directions, int count, std::byte* destination) const;

  private:
    void FixRarePixels(const Lookup& lookup, std::byte* destination) const;

    const Panorama& panorama_;
    const RowKernels& kernels_;
    PixelFormat sourceFormat_ = PixelFormat::None;
    PixelFormat format_;
    std::uint32_t bytesPerPixel_;
    bool applyOrientation_;
    bool uniform_ = true;  ///< all valid faces have one size and format; else pixel by pixel
    EquirectGrid equirect_;
    CubeGrid cube_;
    std::array<std::uintptr_t, kFaceCount> bases_{};  ///< first bytes of the source's pictures; 0: missing
    std::uintptr_t present_ = 0;                      ///< any of them that is there
    bool allPresent_ = true;
};

}  // namespace skyvault
