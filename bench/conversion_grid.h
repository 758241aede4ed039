// An export's directions without the export, for benchmarks.
#pragma once

#include <memory>
#include <vector>

#include "bench/bench_panorama.h"
#include "platform/parallel_rows.h"
#include "projection/fast_math.h"
#include "projection/render_layout.h"

namespace skyvault::bench {

/// The directions of an equirectangular export, as projection/equirectangular.cpp makes them.
inline LayoutGrid EquirectangularGrid(std::uint32_t width, std::uint32_t height) {
    struct Angles {
        std::vector<float> sinLongitude, cosLongitude, sinLatitude, cosLatitude;
    };
    auto angles = std::make_shared<Angles>();
    for (std::uint32_t i = 0; i < width; ++i) {
        const float longitude = 2.0f * static_cast<float>(i) * kPi / static_cast<float>(width) + kPi;
        angles->sinLongitude.push_back(Sin(longitude));
        angles->cosLongitude.push_back(Cos(longitude));
    }
    for (std::uint32_t row = 0; row < height; ++row) {
        const float latitude = static_cast<float>((height - 1 - row) * kPiWide / height - kHalfPiWide);
        angles->sinLatitude.push_back(Sin(latitude));
        angles->cosLatitude.push_back(Cos(latitude));
    }
    return {width, height,
            [angles](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& b, std::uint8_t*) {
                Kernels().equirectDirections(angles->sinLongitude.data() + first,
                                             angles->cosLongitude.data() + first, angles->sinLatitude[row],
                                             angles->cosLatitude[row], b.x, b.y, b.z, count);
                return Coverage::All;
            }};
}

}  // namespace skyvault::bench
