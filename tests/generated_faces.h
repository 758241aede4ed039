// What the generators' tests share.
#pragma once

#include <cstdint>

#include "image/random.h"
#include "tests/test_panorama.h"

namespace skyvault::test {

/// SeedRandom() takes this seed, until the end of the block.
struct FixedSeed {
    explicit FixedSeed(std::uint32_t seed) { SetFixedSeed(seed); }
    ~FixedSeed() { ClearFixedSeed(); }
    FixedSeed(const FixedSeed&) = delete;
    FixedSeed& operator=(const FixedSeed&) = delete;
};

/// FNV-1a over the bytes of all six faces.
inline std::uint32_t FacesChecksum(const Panorama& panorama) {
    std::uint32_t sum = 2166136261u;
    for (const Image& face : panorama.faces) {
        for (std::size_t i = 0; i < face.ByteCount(); ++i) {
            sum = (sum ^ std::to_integer<std::uint32_t>(face.pixels[i])) * 16777619u;
        }
    }
    return sum;
}

}  // namespace skyvault::test
