#include "codecs/dds_storage_builtin.h"

#include <cassert>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

struct Rgba {
    std::uint32_t red, green, blue, alpha;
};

std::uint32_t Byte(const std::byte* bytes, std::size_t at = 0) {
    return std::to_integer<std::uint32_t>(bytes[at]);
}

/// A value of few bits to eight: its bits repeated.
std::uint32_t Widen2(std::uint32_t value) {
    return value * 0x55;
}
std::uint32_t Widen3(std::uint32_t value) {
    return value << 5 | value << 2 | value >> 1;
}
std::uint32_t Widen5(std::uint32_t value) {
    return value << 3 | value >> 2;
}
std::uint32_t Widen6(std::uint32_t value) {
    return value << 2 | value >> 4;
}

/// work: the stored pixel to Rgba.
template <std::size_t bytesPerPixel, typename Work>
void Expand(const std::byte* stored, std::uint32_t width, std::byte* pixels, Work work) {
    for (std::uint32_t x = 0; x < width; ++x, stored += bytesPerPixel, pixels += 4) {
        const Rgba pixel = work(stored);
        pixels[0] = static_cast<std::byte>(pixel.red);
        pixels[1] = static_cast<std::byte>(pixel.green);
        pixels[2] = static_cast<std::byte>(pixel.blue);
        pixels[3] = static_cast<std::byte>(pixel.alpha);
    }
}

}  // namespace

void ExpandDdsRow(DdsStorage storage, const std::array<std::byte, kDdsPaletteBytes>& palette,
                  const std::byte* stored, std::uint32_t width, std::byte* pixels) {
    switch (storage) {
        case DdsStorage::Plain:
            assert(false);
            return;
        case DdsStorage::Xbgr8:
            return Expand<4>(stored, width, pixels, [](const std::byte* p) {
                return Rgba{Byte(p), Byte(p, 1), Byte(p, 2), 255};
            });
        case DdsStorage::Bgr8:
            return Expand<3>(stored, width, pixels, [](const std::byte* p) {
                return Rgba{Byte(p, 2), Byte(p, 1), Byte(p), 255};
            });
        case DdsStorage::A8R3G3B2:
            return Expand<2>(stored, width, pixels, [](const std::byte* p) {
                const std::uint32_t v = Little16(p);
                return Rgba{Widen3(v >> 5 & 7), Widen3(v >> 2 & 7), Widen2(v & 3), v >> 8};
            });
        case DdsStorage::Palette:
            return Expand<1>(stored, width, pixels, [&](const std::byte* p) {
                const std::byte* entry = palette.data() + 4 * Byte(p);
                return Rgba{Byte(entry), Byte(entry, 1), Byte(entry, 2), Byte(entry, 3)};
            });
        case DdsStorage::A8Palette:
            return Expand<2>(stored, width, pixels, [&](const std::byte* p) {
                // The entry's own alpha is 0 in such files; were it not, its bits would join.
                const std::byte* entry = palette.data() + 4 * Byte(p);
                return Rgba{Byte(entry), Byte(entry, 1), Byte(entry, 2), Byte(entry, 3) | Byte(p, 1)};
            });
        case DdsStorage::L6V5U5:
            // Signed fields become unsigned by moving their zero to the middle: the top bit turns over.
            return Expand<2>(stored, width, pixels, [](const std::byte* p) {
                const std::uint32_t v = Little16(p);
                return Rgba{Widen6(v >> 10), Widen5((v & 31) ^ 16), Widen5((v >> 5 & 31) ^ 16), 255};
            });
        case DdsStorage::X8L8V8U8:
            return Expand<4>(stored, width, pixels, [](const std::byte* p) {
                return Rgba{Byte(p, 2), Byte(p) ^ 128, Byte(p, 1) ^ 128, 255};
            });
    }
}

}  // namespace skyvault
