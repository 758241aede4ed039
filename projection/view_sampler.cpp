#include "projection/view_sampler.h"

#include <cassert>
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

ViewSampler::ViewSampler(Panorama& panorama, PixelFormat format, bool applyOrientation)
    : panorama_(panorama),
      kernels_(Kernels()),
      format_(format),
      bytesPerPixel_(BytesPerPixel(format)),
      applyOrientation_(applyOrientation) {
    if (panorama.modifications.logoSize != 0.0f) LoadLogo(panorama);
    const Image& source = panorama.equirectSource;
    if (source.IsValid()) {
        sourceFormat_ = source.format;
        present_ = AddressOf(source);
        equirect_ = {source.width, source.height, source.stride, BytesPerPixel(source.format), present_};
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
        cube_ = {size, face.stride, BytesPerPixel(face.format)};
    }
}

void ViewSampler::Sample(DirectionBlock& directions, int count, std::byte* destination) const {
    Lookup lookup;
    Find(directions, count, lookup);
    Fetch(lookup, destination);
}

void ViewSampler::Find(DirectionBlock& directions, int count, Lookup& lookup) const {
    lookup.count = count;
    if (!uniform_) {
        lookup.directions = directions;
        return;
    }
    lookup.someMissing = false;
    lookup.logoHits = 0;
    const Modifications& m = panorama_.modifications;
    float* x = directions.x;
    float* y = directions.y;
    float* z = directions.z;
    kernels_.normalize(x, y, z, count);
    if (m.flipHorizontal) std::swap(x, z);
    if (m.mirrorTopToBottom) kernels_.absolute(y, count);
    if (m.mirrorFrontToBack) kernels_.absolute(z, count);
    if (m.logoSize != 0.0f) {
        for (int i = 0; i < count; ++i) {
            const LogoHit hit = HitLogoDisc({x[i], y[i], z[i]}, m.logoSize);
            if (!hit.onDisc) continue;
            lookup.logoLanes[lookup.logoHits] = static_cast<std::int16_t>(i);
            lookup.logoPoints[lookup.logoHits++] = hit;
        }
    }
    if (applyOrientation_) {
        if (m.horizonPower > 0.0f && m.horizonPower != 1.0f) kernels_.horizonCurve(y, count, m.horizonPower);
        if (!m.orientation.isIdentity) kernels_.transform(x, y, z, count, m.orientation);
    }

    std::uintptr_t* const addresses = lookup.addresses;
    if (equirect_.width > 0) {
        lookup.someMissing = kernels_.equirectOffsets(x, y, z, count, equirect_, addresses);
        for (int i = 0; lookup.someMissing && i < count; ++i) {
            lookup.missing[i] = addresses[i] == kNoPixel;
            if (lookup.missing[i]) addresses[i] = present_;
        }
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
    Prefetch(addresses, count);
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
        CopyPixels(lookup.addresses, lookup.count, BytesPerPixel(sourceFormat_), gathered);
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
        const bool missing = lookup.someMissing && lookup.missing[i];
        const PixelValue under =
            missing ? white
                    : ReadPixel(sourceFormat_, reinterpret_cast<const std::byte*>(lookup.addresses[i]));
        const PixelValue logo = LogoColour(panorama_, lookup.logoPoints[hit]);
        WritePixel(format_, destination + i * std::size_t{bytesPerPixel_}, BlendLogo(logo, under));
    }
}

}  // namespace skyvault
