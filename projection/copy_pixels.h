// Pixels gathered from anywhere into a row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "image/memory.h"

namespace skyvault {

/// Copies one pixel of kBytes bytes from each address of a picture in memory.
template <int kBytes>
void CopyPixels(const std::uintptr_t* addresses, int count, std::byte* destination) {
    // Three and six bytes are moved in one piece with what follows, which the next pixel overwrites; behind
    // the picture there is always something to read. Only the last one has to stop where it ends.
    constexpr std::size_t kMoved = kBytes % 3 == 0 ? kBytes / 3 * 4 : kBytes;
    static_assert(kMoved - kBytes <= kReadableBehind);
    for (int i = 0; i < count - 1; ++i) {
        std::memcpy(destination, reinterpret_cast<const std::byte*>(addresses[i]), kMoved);
        destination += kBytes;
    }
    if (count > 0) std::memcpy(destination, reinterpret_cast<const std::byte*>(addresses[count - 1]), kBytes);
}

/// bytesPerPixel: of one of the nine pixel formats.
inline void CopyPixels(const std::uintptr_t* addresses, int count, std::uint32_t bytesPerPixel,
                       std::byte* destination) {
    switch (bytesPerPixel) {
        case 1:
            return CopyPixels<1>(addresses, count, destination);
        case 2:
            return CopyPixels<2>(addresses, count, destination);
        case 3:
            return CopyPixels<3>(addresses, count, destination);
        case 4:
            return CopyPixels<4>(addresses, count, destination);
        case 6:
            return CopyPixels<6>(addresses, count, destination);
        case 8:
            return CopyPixels<8>(addresses, count, destination);
        default:
            return;
    }
}

/// Copies a row of pixels to an address each.
template <int kBytes>
void ScatterPixels(const std::byte* pixels, int count, std::byte* const* targets) {
    for (int i = 0; i < count; ++i) std::memcpy(targets[i], pixels + i * kBytes, kBytes);
}

inline void ScatterPixels(const std::byte* pixels, int count, std::uint32_t bytesPerPixel,
                          std::byte* const* targets) {
    switch (bytesPerPixel) {
        case 1:
            return ScatterPixels<1>(pixels, count, targets);
        case 2:
            return ScatterPixels<2>(pixels, count, targets);
        case 3:
            return ScatterPixels<3>(pixels, count, targets);
        case 4:
            return ScatterPixels<4>(pixels, count, targets);
        case 6:
            return ScatterPixels<6>(pixels, count, targets);
        case 8:
            return ScatterPixels<8>(pixels, count, targets);
        default:
            return;
    }
}

}  // namespace skyvault
