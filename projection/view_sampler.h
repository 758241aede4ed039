// The row engine's sampler: blocks of directions in, rows of pixels out.
//
// Gives the pixels SamplePanorama defines, converted to the destination format, through the passes of
// row_kernels.h:
//
//   normalise, flips and mirrors -> logo disc -> horizon curve -> orientation -> source pixel -> fetch
//
// Where the logo is not in the way, estimates (estimate_kernels.h) find most pixels, and only the doubtful
// ones go through all passes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "image/memory.h"
#include "projection/estimate_kernels.h"
#include "projection/panorama.h"
#include "projection/row_kernels.h"
#include "projection/sample_panorama.h"

namespace skyvault {

class ViewSampler {
  public:
    struct Options {
        PixelFormat format = PixelFormat::None;  ///< of the pixels written
        bool applyOrientation = true;
        bool toUnitLength = false;  ///< directions are defined as unit vectors, but come before they are any
    };

    /// Looks at the panorama as it is now (its pictures must stay until the sampler is gone) and loads the
    /// logo when it is needed.
    ViewSampler(Panorama& panorama, const Options& options);

    /// What a block's directions look at.
    struct Lookup {
        int count = 0;
        bool someMissing = false;
        int logoHits = 0;
        alignas(64) std::uintptr_t addresses[kBlockSize];  ///< of pixels; a missing one's is some other's
        bool missing[kBlockSize];                          ///< meaningful only with someMissing
        std::int16_t logoLanes[kBlockSize];
        LogoHit logoPoints[kBlockSize];
        DirectionBlock directions;      ///< of doubtful lanes, in their order; of all, pixel by pixel
        DoubtfulLanes doubtful;         ///< lanes whose pixels Fetch writes wrong: see FindFully
        int blocksWithoutEstimate = 0;  ///< the next ones, since the last had too many doubtful lanes
    };

    /// Finds the pixels seen along directions 0 .. count − 1 (count ≤ kBlockSize) and asks the memory for
    /// them: with other work before the Fetch they arrive meanwhile. The directions are changed. All steps
    /// may be called from several threads at once, each with a lookup of its own.
    void Find(DirectionBlock& directions, int count, Lookup& lookup) const;

    /// The same without doubtful lanes, at twice the cost.
    void FindFully(DirectionBlock& directions, int count, Lookup& lookup) const;

    /// Writes the colours at destination; at doubtful lanes, any colour.
    void Fetch(const Lookup& lookup, std::byte* destination) const;

    std::uint32_t BytesPerPixel() const { return bytesPerPixel_; }

  private:
    void PrepareEstimates();
    void PrepareLogo();
    void LookAtFlatLogo(Lookup& lookup) const;
    /// Whether nothing of the source's pixels shows through: the blend is the logo's colour then.
    bool CoversFully(const PixelValue& logo) const;
    bool FindQuickly(const DirectionBlock& directions, int count, Lookup& lookup) const;
    void FixRarePixels(const Lookup& lookup, std::byte* destination) const;

    const Panorama& panorama_;
    const RowKernels& kernels_;
    PixelFormat sourceFormat_ = PixelFormat::None;
    PixelFormat format_;
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
    enum class Estimate { None, Equirect, Faces } estimate_ = Estimate::None;
    EstimateTurn estimateTurn_;
    FacesInMemory facesInMemory_;
    bool flatLogo_ = false;  ///< every pixel of the logo is this one, to be fetched like the source's
    std::byte flatLogoPixel_[8 + kReadableBehind] = {};
};

/// Doubtful pixels, gathered until a block of them is worth the whole way.
class DoubtfulPixels {
  public:
    explicit DoubtfulPixels(const ViewSampler& sampler) : sampler_(sampler) {}

    /// After the lookup's pixels were written at destination. inside: which pixels count; null: all.
    void Add(const ViewSampler::Lookup& lookup, std::byte* destination, const std::uint8_t* inside);

    /// Writes those not written yet.
    void Finish();

  private:
    const ViewSampler& sampler_;
    int count_ = 0;
    DirectionBlock directions_{};
    std::byte* targets_[kBlockSize] = {};
    ViewSampler::Lookup lookup_{};
};

}  // namespace skyvault
