#include "projection/view_sampler.h"

#include <cassert>
#include <utility>

#include "image/pixel_convert.h"
#include "projection/copy_pixels.h"
#include "projection/fast_math.h"
#include "projection/sample_panorama.h"

namespace skyvault {

namespace {

void Prefetch([[maybe_unused]] const std::byte* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
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
        equirect_ = {source.width, source.height, source.stride, BytesPerPixel(source.format)};
        bases_[0] = source.pixels.get();
        return;
    }
    const std::uint32_t size = FaceGridSize(panorama.faces);
    uniform_ = size > 0;
    for (std::size_t f = 0; f < panorama.faces.size(); ++f) {
        const Image& face = panorama.faces[f];
        if (!face.IsValid()) continue;
        if (sourceFormat_ == PixelFormat::None) sourceFormat_ = face.format;
        if (face.width != size || face.height != size || face.format != sourceFormat_) uniform_ = false;
        bases_[f] = face.pixels.get();
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

    alignas(64) std::uint64_t offsets[kBlockSize];
    if (equirect_.width > 0) {
        lookup.someMissing = kernels_.equirectOffsets(x, y, z, count, equirect_, offsets);
        for (int i = 0; i < count; ++i) {
            lookup.addresses[i] = bases_[0] + (offsets[i] == kNoPixel ? 0 : offsets[i]);
            Prefetch(lookup.addresses[i]);
        }
        if (lookup.someMissing) {
            for (int i = 0; i < count; ++i) lookup.missing[i] = offsets[i] == kNoPixel;
        }
        return;
    }
    alignas(64) std::int32_t faces[kBlockSize];
    lookup.someMissing = kernels_.cubeOffsets(x, y, z, count, cube_, faces, offsets);
    const std::byte* present = nullptr;
    bool allPresent = true;
    for (const std::byte* base : bases_) {
        if (base) present = base;
        allPresent = allPresent && base;
    }
    assert(present && "a sampler without any face works pixel by pixel");
    if (allPresent && !lookup.someMissing) {
        for (int i = 0; i < count; ++i) {
            lookup.addresses[i] = bases_[static_cast<std::size_t>(faces[i])] + offsets[i];
            Prefetch(lookup.addresses[i]);
        }
        return;
    }
    lookup.someMissing = true;
    for (int i = 0; i < count; ++i) {
        const std::byte* base = bases_[static_cast<std::size_t>(faces[i])];
        lookup.missing[i] = offsets[i] == kNoPixel || !base;
        lookup.addresses[i] = lookup.missing[i] ? present : base + offsets[i];
    }
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
        const PixelValue under = missing ? white : ReadPixel(sourceFormat_, lookup.addresses[i]);
        const PixelValue logo = LogoColour(panorama_, lookup.logoPoints[hit]);
        WritePixel(format_, destination + i * std::size_t{bytesPerPixel_}, BlendLogo(logo, under));
    }
}

}  // namespace skyvault
