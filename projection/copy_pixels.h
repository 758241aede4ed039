// Pixels gathered from anywhere into a row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/memory.h"

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

}  // namespace skyvault
