#include "projection/view_sampler.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "image/pixel_rows.h"
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

ViewSampler::ViewSampler(const Panorama& panorama, const Options& options)
    : panorama_(panorama),
      kernels_(Kernels()),
      format_(options.format),
      emptyColour_(options.emptyColour),
      bytesPerPixel_(skyvault::BytesPerPixel(options.format)),
      applyOrientation_(options.applyOrientation),
      toUnitLength_(options.toUnitLength) {
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
    if (panorama_.modifications.logoSize == 0.0f || panorama_.logoPicture.IsValid()) return;
    const PixelValue colour(emptyColour_);
    flatLogo_ = format_ == sourceFormat_ && CoversFully(colour);
    if (flatLogo_) WritePixel(format_, flatLogoPixel_, colour);
}

void ViewSampler::PrepareEstimates() {
    const Modifications& m = panorama_.modifications;
    curved_ = applyOrientation_ && m.horizonPower > 0.0f && m.horizonPower != 1.0f;
    if (!uniform_ || curved_) return;
    estimateTurn_.exchangeXz = m.flipHorizontal;
    estimateTurn_.absoluteY = m.mirrorTopToBottom;
    estimateTurn_.absoluteZ = m.mirrorFrontToBack;
    if (applyOrientation_ && !m.orientation.isIdentity) {
        estimateTurn_.turned = true;
        for (int i = 0; i < 3; ++i) std::copy_n(m.orientation.m[i], 3, estimateTurn_.m[i]);
    }
    constexpr std::uint64_t kReach = std::uint64_t{1} << 32;
    if (equirect_.width > 0) {
        const bool near = std::uint64_t{equirect_.stride} * equirect_.height <= kReach;
        if (near && equirect_.width < kReach / 4) estimated_ = Estimated::Equirect;
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
    estimated_ = Estimated::Faces;
}

void ViewSampler::Find(Lookup& lookup, int count) const {
    assert(count <= kBlockSize);
    lookup.count = count;
    lookup.someMissing = false;
    lookup.logoHits = 0;
    if (!uniform_) {
        DirectionBlock& d = lookup.directions;
        if (toUnitLength_) kernels_.normalize(d.x, d.y, d.z, count);
        return;
    }
    std::uintptr_t* const addresses = lookup.addresses;
    if (!Estimate(lookup)) {
        const Components d = Mirror(lookup.directions, count);
        if (panorama_.modifications.logoSize != 0.0f) FindLogo(d, lookup);
        lookup.someMissing = Locate(d, count, addresses);
        Prefetch(addresses, count);
    }
    for (int i = 0; lookup.someMissing && i < count; ++i) {
        lookup.missing[i] = addresses[i] == kNoPixel;
        if (lookup.missing[i]) addresses[i] = present_;
    }
    if (flatLogo_) LookAtFlatLogo(lookup);
}

bool ViewSampler::Estimate(Lookup& lookup) const {
    if (estimated_ == Estimated::Nothing) return false;
    if (lookup.blocksWithoutEstimate > 0) {
        --lookup.blocksWithoutEstimate;
        return false;
    }
    const DirectionBlock& directions = lookup.directions;
    const int count = lookup.count;
    const Modifications& m = panorama_.modifications;
    if (m.logoSize != 0.0f && !m.mirrorTopToBottom && Estimates().nearNadir(directions, count, m.logoSize))
        return false;
    LanesNearEdges nearEdges;
    if (estimated_ == Estimated::Equirect) {
        Estimates().equirect(directions, count, equirect_, estimateTurn_, lookup.addresses, nearEdges);
    } else {
        Estimates().faces(directions, count, facesInMemory_, estimateTurn_, lookup.addresses, nearEdges);
    }
    // At the poles, and where the output's pixels fall right between the source's. It goes on for a while.
    if (nearEdges.count > count / 8) {
        lookup.blocksWithoutEstimate = 15;
        return false;
    }
    SettleNearEdges(nearEdges, lookup);
    return true;
}

void ViewSampler::SettleNearEdges(const LanesNearEdges& nearEdges, Lookup& lookup) const {
    // Whole vectors, filled with lanes of the block: what comes after the last is the slow part of a loop.
    constexpr int kVector = 8;
    const int count = (nearEdges.count + kVector - 1) / kVector * kVector;
    DirectionBlock few;
    for (int i = 0; i < count; ++i) {
        const std::size_t lane = i < nearEdges.count ? nearEdges.lanes[i] : nearEdges.lanes[0];
        few.x[i] = lookup.directions.x[lane];
        few.y[i] = lookup.directions.y[lane];
        few.z[i] = lookup.directions.z[lane];
    }
    // Now, for vectors are slow to read what was just written in pieces.
    Prefetch(lookup.addresses, lookup.count);
    if (count == 0) return;
    std::uintptr_t exact[kBlockSize];
    lookup.someMissing = Locate(Mirror(few, count), count, exact);
    for (int i = 0; i < nearEdges.count; ++i) lookup.addresses[nearEdges.lanes[i]] = exact[i];
}

ViewSampler::Components ViewSampler::Mirror(DirectionBlock& directions, int count) const {
    const Modifications& m = panorama_.modifications;
    Components d{directions.x, directions.y, directions.z};
    if (toUnitLength_) kernels_.normalize(d.x, d.y, d.z, count);
    kernels_.normalize(d.x, d.y, d.z, count);
    if (m.flipHorizontal) std::swap(d.x, d.z);
    if (m.mirrorTopToBottom) kernels_.absolute(d.y, count);
    if (m.mirrorFrontToBack) kernels_.absolute(d.z, count);
    return d;
}

void ViewSampler::FindLogo(const Components& d, Lookup& lookup) const {
    const float size = panorama_.modifications.logoSize;
    std::uint32_t onDisc[kBlockSize];
    kernels_.logoDisc(d.x, d.y, d.z, lookup.count, size, onDisc);
    for (int i = 0; i < lookup.count; ++i) {
        if (onDisc[i] == 0) continue;
        lookup.logoLanes[lookup.logoHits] = static_cast<std::int16_t>(i);
        if (!flatLogo_) lookup.logoPoints[lookup.logoHits] = HitLogoDisc({d.x[i], d.y[i], d.z[i]}, size);
        ++lookup.logoHits;
    }
}

bool ViewSampler::Locate(const Components& d, int count, std::uintptr_t* addresses) const {
    const Modifications& m = panorama_.modifications;
    if (curved_) kernels_.horizonCurve(d.y, count, m.horizonPower);
    if (applyOrientation_ && !m.orientation.isIdentity) {
        kernels_.transform(d.x, d.y, d.z, count, m.orientation);
    }
    if (equirect_.width > 0) return kernels_.equirectOffsets(d.x, d.y, d.z, count, equirect_, addresses);
    assert(present_ && "a sampler without any face works pixel by pixel");
    alignas(64) std::int32_t faces[kBlockSize];
    const bool someMissing = kernels_.cubeOffsets(d.x, d.y, d.z, count, cube_, faces, addresses);
    if (allPresent_ && !someMissing) {
        for (int i = 0; i < count; ++i) addresses[i] += bases_[static_cast<std::size_t>(faces[i])];
        return false;
    }
    for (int i = 0; i < count; ++i) {
        const std::uintptr_t base = bases_[static_cast<std::size_t>(faces[i])];
        addresses[i] = addresses[i] == kNoPixel || !base ? kNoPixel : base + addresses[i];
    }
    return true;
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
                       SamplePanorama(panorama_, d, emptyColour_, applyOrientation_));
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
        const PixelValue logo = LogoColour(panorama_, lookup.logoPoints[hit], emptyColour_);
        // What stands for a missing face has 8 bits, and so has the logo over it.
        const bool missing = lookup.someMissing && lookup.missing[i];
        if (!missing && CoversFully(logo)) {
            WritePixel(format_, target, logo);
            continue;
        }
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

}  // namespace skyvault
