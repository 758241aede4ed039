// Pixels gathered from anywhere into a row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace skyvault {

/// Copies one pixel of kBytes bytes from each address.
template <int kBytes>
void CopyPixels(const std::byte* const* addresses, int count, std::byte* destination) {
    for (int i = 0; i < count; ++i) {
        std::memcpy(destination, addresses[i], kBytes);
        destination += kBytes;
    }
}

/// bytesPerPixel: of one of the nine pixel formats.
inline void CopyPixels(const std::byte* const* addresses, int count, std::uint32_t bytesPerPixel,
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
