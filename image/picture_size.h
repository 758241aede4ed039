// Sizes of pictures, and fitting one into another.
#pragma once

#include <cstdint>

namespace skyvault {

/// Pixels.
struct PictureSize {
    std::uint32_t width = 0, height = 0;
    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// The size, at least 1 × 1, made smaller or larger to fit inside the target, aspect ratio kept and
/// fractions dropped: a very thin picture may come to nothing (0 on one side).
PictureSize FitInto(const PictureSize& size, const PictureSize& target);

}  // namespace skyvault
