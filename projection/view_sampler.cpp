#include "projection/view_sampler.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "image/pixel_convert.h"
#include "projection/copy_pixels.h"
#include "projection/fast_math.h"
#include "projection/sample_panorama.h"

namespace skyvault {

namespace {

std::uintptr_t AddressOf(const Image& picture) {
    return reinterpret_cast<std::uintptr_t>(picture.pixels.get());
}

void Prefetch([[maybe_unused]] const std::uintptr_t* addresses, [[maybe_unused]] int count) {
#if defined(__GNUC__)
    for (int i = 0; i < count; ++i) __builtin_prefetch(reinterpret_cast<const void*>(addresses[i]));
#endif
}

}  // namespace

ViewSampler::ViewSampler(Panorama& panorama, const Options& options)
    : panorama_(panorama),
      kernels_(Kernels()),
      format_(options.format),
      bytesPerPixel_(skyvault::BytesPerPixel(options.format)),
      applyOrientation_(options.applyOrientation),
      toUnitLength_(options.toUnitLength) {
    if (panorama.modifications.logoSize != 0.0f) LoadLogo(panorama);
    const Image& source = panorama.equirectSource;
    if (source.IsValid()) {
        sourceFormat_ = source.format;
        present_ = AddressOf(source);
        equirect_ = {source.width, source.height, source.stride, skyvault::BytesPerPixel(source.format),
                     present_};
        PrepareEstimates();
        PrepareLogo();
        return;
    }
    const std::uint32_t size = FaceGridSize(panorama.faces);
    uniform_ = size > 0;
    for (std::size_t f = 0; f < panorama.faces.size(); ++f) {
        const Image& face = panorama.faces[f];
        if (!face.IsValid()) {
            allPresent_ = false;
            continue;
        }
        if (sourceFormat_ == PixelFormat::None) sourceFormat_ = face.format;
        if (face.width != size || face.height != size || face.format != sourceFormat_) uniform_ = false;
        bases_[f] = present_ = AddressOf(face);
        cube_ = {size, face.stride, skyvault::BytesPerPixel(face.format)};
    }
    PrepareEstimates();
    PrepareLogo();
}

void ViewSampler::PrepareLogo() {
    const bool hasPicture = !panorama_.settings.logo.empty() && panorama_.logoPicture.IsValid();
    if (panorama_.modifications.logoSize == 0.0f || hasPicture) return;
    const PixelValue colour = LogoColour(panorama_, {});
    flatLogo_ = format_ == sourceFormat_ && CoversFully(colour);
    if (flatLogo_) WritePixel(format_, flatLogoPixel_, colour);
}

void ViewSampler::PrepareEstimates() {
    const Modifications& m = panorama_.modifications;
    curved_ = applyOrientation_ && m.horizonPower > 0.0f && m.horizonPower != 1.0f;
    if (!uniform_) return;
    estimateTurn_.exchangeXz = m.flipHorizontal;
    estimateTurn_.absoluteY = m.mirrorTopToBottom && !curved_;
    estimateTurn_.absoluteZ = m.mirrorFrontToBack;
    if (applyOrientation_ && !m.orientation.isIdentity) {
        estimateTurn_.turned = true;
        for (int i = 0; i < 3; ++i) std::copy_n(m.orientation.m[i], 3, estimateTurn_.m[i]);
    }
    constexpr std::uint64_t kReach = std::uint64_t{1} << 32;
    if (equirect_.width > 0) {
        const bool near = std::uint64_t{equirect_.stride} * equirect_.height <= kReach;
        if (near && equirect_.width < kReach / 4) estimate_ = Estimate::Equirect;
        return;
    }
    const std::uint64_t faceBytes = std::uint64_t{cube_.stride} * cube_.size;
    const auto [lowest, highest] = std::minmax_element(bases_.begin(), bases_.end());
    if (!allPresent_ || *highest - *lowest + faceBytes > kReach) return;
    facesInMemory_.grid = cube_;
    facesInMemory_.origin = *lowest;
    for (std::size_t f = 0; f < bases_.size(); ++f) {
        if ((bases_[f] - *lowest) % 8 != 0) return;  // no allocator does that
        facesInMemory_.bases[f] = static_cast<std::uint32_t>(bases_[f] - *lowest);
    }
    estimate_ = Estimate::Faces;
}

void ViewSampler::Find(DirectionBlock& directions, int count, Lookup& lookup) const {
    if (!FindQuickly(directions, count, lookup)) FindFully(directions, count, lookup);
}

bool ViewSampler::FindQuickly(const DirectionBlock& directions, int count, Lookup& lookup) const {
    if (estimate_ == Estimate::None) return false;
    if (lookup.blocksWithoutEstimate > 0) {
        --lookup.blocksWithoutEstimate;
        return false;
    }
    const Modifications& m = panorama_.modifications;
    if (m.logoSize != 0.0f && !m.mirrorTopToBottom && Estimates().nearNadir(directions, count, m.logoSize))
        return false;
    const DirectionBlock* from = &directions;
    DirectionBlock curved;
    if (curved_) {
        // The curve bends what is straight to an estimate and comes first; y is the only one it touches.
        curved = directions;
        if (toUnitLength_) kernels_.normalize(curved.x, curved.y, curved.z, count);
        kernels_.normalize(curved.x, curved.y, curved.z, count);
        if (m.mirrorTopToBottom) kernels_.absolute(curved.y, count);
        kernels_.horizonCurve(curved.y, count, m.horizonPower);
        from = &curved;
    }
    DoubtfulLanes& doubtful = lookup.doubtful;
    if (estimate_ == Estimate::Equirect) {
        Estimates().equirect(*from, count, equirect_, estimateTurn_, lookup.addresses, doubtful);
    } else {
        Estimates().faces(*from, count, facesInMemory_, estimateTurn_, lookup.addresses, doubtful);
    }
    // Near the poles, and where the output's pixels fall right between the source's. It goes on for a while.
    if (doubtful.count > count / 8) {
        lookup.blocksWithoutEstimate = 15;
        return false;
    }
    for (int i = 0; i < doubtful.count; ++i) {
        const std::size_t lane = doubtful.lanes[i];
        lookup.directions.x[i] = directions.x[lane];
        lookup.directions.y[i] = directions.y[lane];
        lookup.directions.z[i] = directions.z[lane];
        lookup.addresses[lane] = present_;
    }
    lookup.count = count;
    lookup.someMissing = false;
    lookup.logoHits = 0;
    Prefetch(lookup.addresses, count);
    return true;
}

void ViewSampler::FindFully(DirectionBlock& directions, int count, Lookup& lookup) const {
    float* x = directions.x;
    float* y = directions.y;
    float* z = directions.z;
    if (toUnitLength_) kernels_.normalize(x, y, z, count);
    lookup.count = count;
    lookup.doubtful.count = 0;
    if (!uniform_) {
        lookup.directions = directions;
        return;
    }
    lookup.someMissing = false;
    lookup.logoHits = 0;
    const Modifications& m = panorama_.modifications;
    kernels_.normalize(x, y, z, count);
    if (m.flipHorizontal) std::swap(x, z);
    if (m.mirrorTopToBottom) kernels_.absolute(y, count);
    if (m.mirrorFrontToBack) kernels_.absolute(z, count);
    if (m.logoSize != 0.0f) {
        std::uint32_t onDisc[kBlockSize];
        kernels_.logoDisc(x, y, z, count, m.logoSize, onDisc);
        for (int i = 0; i < count; ++i) {
            if (onDisc[i] == 0) continue;
            lookup.logoLanes[lookup.logoHits] = static_cast<std::int16_t>(i);
            if (!flatLogo_) lookup.logoPoints[lookup.logoHits] = HitLogoDisc({x[i], y[i], z[i]}, m.logoSize);
            ++lookup.logoHits;
        }
    }
    if (applyOrientation_) {
        if (curved_) kernels_.horizonCurve(y, count, m.horizonPower);
        if (!m.orientation.isIdentity) kernels_.transform(x, y, z, count, m.orientation);
    }

    std::uintptr_t* const addresses = lookup.addresses;
    if (equirect_.width > 0) {
        lookup.someMissing = kernels_.equirectOffsets(x, y, z, count, equirect_, addresses);
        for (int i = 0; lookup.someMissing && i < count; ++i) {
            lookup.missing[i] = addresses[i] == kNoPixel;
            if (lookup.missing[i]) addresses[i] = present_;
        }
        if (flatLogo_) LookAtFlatLogo(lookup);
        Prefetch(addresses, count);
        return;
    }
    assert(present_ && "a sampler without any face works pixel by pixel");
    alignas(64) std::int32_t faces[kBlockSize];
    lookup.someMissing = kernels_.cubeOffsets(x, y, z, count, cube_, faces, addresses);
    if (allPresent_ && !lookup.someMissing) {
        for (int i = 0; i < count; ++i) addresses[i] += bases_[static_cast<std::size_t>(faces[i])];
    } else {
        lookup.someMissing = true;
        for (int i = 0; i < count; ++i) {
            const std::uintptr_t base = bases_[static_cast<std::size_t>(faces[i])];
            lookup.missing[i] = addresses[i] == kNoPixel || !base;
            addresses[i] = lookup.missing[i] ? present_ : base + addresses[i];
        }
    }
    if (flatLogo_) LookAtFlatLogo(lookup);
    Prefetch(addresses, count);
}

void ViewSampler::LookAtFlatLogo(Lookup& lookup) const {
    for (int hit = 0; hit < lookup.logoHits; ++hit) {
        const int i = lookup.logoLanes[hit];
        lookup.addresses[i] = reinterpret_cast<std::uintptr_t>(flatLogoPixel_);
        lookup.missing[i] = false;
    }
    lookup.logoHits = 0;
}

void ViewSampler::Fetch(const Lookup& lookup, std::byte* destination) const {
    if (!uniform_) {
        for (int i = 0; i < lookup.count; ++i) {
            const Direction d{lookup.directions.x[i], lookup.directions.y[i], lookup.directions.z[i]};
            WritePixel(format_, destination + i * std::size_t{bytesPerPixel_},
                       SampleWithLoadedLogo(panorama_, d, applyOrientation_));
        }
        return;
    }
    if (sourceFormat_ == format_) {
        CopyPixels(lookup.addresses, lookup.count, bytesPerPixel_, destination);
    } else {
        std::byte gathered[kBlockSize * 8];
        CopyPixels(lookup.addresses, lookup.count, skyvault::BytesPerPixel(sourceFormat_), gathered);
        ConvertRow(sourceFormat_, gathered, format_, destination, static_cast<std::size_t>(lookup.count));
    }
    if (lookup.someMissing || lookup.logoHits > 0) FixRarePixels(lookup, destination);
}

void ViewSampler::FixRarePixels(const Lookup& lookup, std::byte* destination) const {
    const PixelValue white(kOpaqueWhite);
    if (lookup.someMissing) {
        for (int i = 0; i < lookup.count; ++i) {
            if (lookup.missing[i]) WritePixel(format_, destination + i * std::size_t{bytesPerPixel_}, white);
        }
    }
    for (int hit = 0; hit < lookup.logoHits; ++hit) {
        const int i = lookup.logoLanes[hit];
        std::byte* const target = destination + i * std::size_t{bytesPerPixel_};
        const PixelValue logo = LogoColour(panorama_, lookup.logoPoints[hit]);
        if (CoversFully(logo)) {
            WritePixel(format_, target, logo);
            continue;
        }
        const bool missing = lookup.someMissing && lookup.missing[i];
        const PixelValue under =
            missing ? white
                    : ReadPixel(sourceFormat_, reinterpret_cast<const std::byte*>(lookup.addresses[i]));
        WritePixel(format_, target, BlendLogo(logo, under));
    }
}

bool ViewSampler::CoversFully(const PixelValue& logo) const {
    if (HasAlpha(sourceFormat_) || ChannelType(logo.format) != ChannelType(sourceFormat_)) return false;
    if (ChannelType(logo.format) == ChannelKind::Int8) return logo.color8.alpha == 255;
    return ChannelType(logo.format) == ChannelKind::Int16 && logo.color16.alpha == 65535;
}

void DoubtfulPixels::Add(const ViewSampler::Lookup& lookup, std::byte* destination,
                         const std::uint8_t* inside) {
    for (int i = 0; i < lookup.doubtful.count; ++i) {
        const std::size_t lane = lookup.doubtful.lanes[i];
        if (inside && !inside[lane]) continue;
        directions_.x[count_] = lookup.directions.x[i];
        directions_.y[count_] = lookup.directions.y[i];
        directions_.z[count_] = lookup.directions.z[i];
        targets_[count_] = destination + lane * sampler_.BytesPerPixel();
        if (++count_ == kBlockSize) Finish();
    }
}

void DoubtfulPixels::Finish() {
    if (count_ == 0) return;
    sampler_.FindFully(directions_, count_, lookup_);
    std::byte pixels[kBlockSize * 8];
    sampler_.Fetch(lookup_, pixels);
    ScatterPixels(pixels, count_, sampler_.BytesPerPixel(), targets_);
    count_ = 0;
}

}  // namespace skyvault
