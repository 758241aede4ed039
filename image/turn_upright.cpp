#include "image/turn_upright.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/parallel_rows.h"

namespace skyvault {
namespace {

void MirrorRows(Image& image) {
    const std::size_t size = BytesPerPixel(image.format);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::byte* left = image.Row(y);
        std::byte* right = left + size * (image.width - 1);
        for (; left < right; left += size, right -= size) std::swap_ranges(left, left + size, right);
    }
}

/// Row x of the picture becomes column x of the result. The squares are small enough for a cache to hold the
/// rows of both.
template <std::size_t size>
void ExchangeSides(const Image& from, Image& to) {
    constexpr std::uint32_t kSquare = 64;
    const auto bands = static_cast<int>((to.height + kSquare - 1) / kSquare);
    ParallelBands(bands, std::uint64_t{to.width} * to.height >= (1u << 20), [&](int band) {
        const std::uint32_t firstRow = static_cast<std::uint32_t>(band) * kSquare;
        const std::uint32_t endRow = std::min(firstRow + kSquare, to.height);
        for (std::uint32_t firstColumn = 0; firstColumn < to.width; firstColumn += kSquare) {
            const std::uint32_t endColumn = std::min(firstColumn + kSquare, to.width);
            for (std::uint32_t y = firstRow; y < endRow; ++y) {
                std::byte* out = to.Row(y) + size * firstColumn;
                for (std::uint32_t x = firstColumn; x < endColumn; ++x, out += size) {
                    std::memcpy(out, from.Row(x) + size * y, size);
                }
            }
        }
    });
}

bool Transpose(Image& image) {
    Image turned(image.height, image.width, image.format);
    if (!turned.IsValid()) return false;
    switch (BytesPerPixel(image.format)) {
        case 1:
            ExchangeSides<1>(image, turned);
            break;
        case 2:
            ExchangeSides<2>(image, turned);
            break;
        case 3:
            ExchangeSides<3>(image, turned);
            break;
        case 4:
            ExchangeSides<4>(image, turned);
            break;
        case 6:
            ExchangeSides<6>(image, turned);
            break;
        case 8:
            ExchangeSides<8>(image, turned);
            break;
        default:
            return false;
    }
    std::swap(image.pixels, turned.pixels);
    std::swap(image.width, image.height);
    image.stride = turned.stride;
    return true;
}

void MirrorColumns(Image& image) {
    for (std::uint32_t top = 0, bottom = image.height - 1; top < bottom; ++top, --bottom) {
        std::swap_ranges(image.Row(top), image.Row(top) + image.stride, image.Row(bottom));
    }
}

}  // namespace

bool TurnUpright(int orientation, Image& image) {
    if (!image.IsValid()) return false;
    if (SwapsSides(orientation) && !Transpose(image)) return false;
    // What is left to do once the sides are exchanged.
    const bool mirrorRows = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
    const bool mirrorColumns = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
    if (mirrorRows) MirrorRows(image);
    if (mirrorColumns) MirrorColumns(image);
    return true;
}

}  // namespace skyvault
