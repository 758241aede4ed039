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

namespace skyvault {

class ViewSampler {
  public:
    /// Looks at the panorama as it is now (its pictures must stay until the sampler is gone) and loads the
    /// logo when it is needed. format: of the pixels written.
    ViewSampler(Panorama& panorama, PixelFormat format, bool applyOrientation = true);

    /// The colours seen along directions 0 .. count − 1 (count ≤ kBlockSize), written at destination. The
    /// block is changed. Callable from several threads at once.
    void Sample(DirectionBlock& directions, int count, std::byte* destination) const;

  private:
    struct Lookup;

    void FindPixels(DirectionBlock& directions, int count, Lookup& lookup) const;
    void Fetch(const Lookup& lookup, int count, std::byte* destination) const;
    void FixRarePixels(const Lookup& lookup, int count, std::byte* destination) const;

    const Panorama& panorama_;
    const RowKernels& kernels_;
    PixelFormat sourceFormat_ = PixelFormat::None;
    PixelFormat format_;
    std::uint32_t bytesPerPixel_;
    bool applyOrientation_;
    bool uniform_ = true;  ///< all valid faces have one size and format; else pixel by pixel
    EquirectGrid equirect_;
    CubeGrid cube_;
    std::array<const std::byte*, kFaceCount>
        bases_{};  ///< first bytes of the source's pictures; null: missing
};

}  // namespace skyvault
