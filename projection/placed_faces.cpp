#include "projection/placed_faces.h"

#include <algorithm>

#include "projection/face_rows.h"

namespace skyvault {

bool PlacedFaces::Compute(std::uint32_t faceSize, std::uint32_t size, EdgeSpread spread) {
    size_ = size;
    const std::int32_t count = static_cast<std::int32_t>(size);
    if (!forward_.Resize(count, false) || !turned_.Resize(count, false) || !mirrored_.Resize(count, false)) {
        return false;
    }
    const std::int32_t n = static_cast<std::int32_t>(faceSize);
    hasGrid_ = n > 0;
    const EdgeScale scale(n);
    for (std::int32_t i = 0; i < count; ++i) {
        std::int64_t pixel = 0;
        if (spread == EdgeSpread::Repeat) {
            pixel = std::int64_t{n} * i / count;
        } else if (count > 1) {
            pixel = (std::int64_t{n} - 1) * i / (count - 1);
        }
        forward_[i] = mirrored_[count - 1 - i] = scale(pixel);
        turned_[i] = scale(n - 1 - pixel);
    }
    return true;
}

LayoutGrid PlacedFaces::Grid(std::uint32_t width, std::uint32_t height) const {
    return {width, height,
            [this](std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block,
                   std::uint8_t* inside) { return Directions(row, first, count, block, inside); },
            true};
}

Coverage PlacedFaces::Directions(std::uint32_t row, std::uint32_t first, int count, DirectionBlock& block,
                                 std::uint8_t* inside) const {
    const std::uint32_t end = first + static_cast<std::uint32_t>(count);
    int covered = 0;
    std::fill_n(inside, count, std::uint8_t{0});
    for (const PlacedFace& place : places) {
        if (row < place.top || row - place.top >= size_) continue;
        const std::uint32_t from = std::max(first, place.left);
        const std::uint32_t to = std::min(end, place.left + size_);
        if (from >= to) continue;
        const int length = static_cast<int>(to - from);
        const std::uint32_t at = from - first;
        FillRun(place, from - place.left, row - place.top, length, block.x + at, block.y + at, block.z + at);
        std::fill_n(inside + at, length, std::uint8_t{1});
        covered += length;
    }
    if (covered == count) return Coverage::All;
    if (covered == 0) return Coverage::None;
    for (int i = 0; i < count; ++i) {
        if (inside[i]) continue;
        block.x[i] = block.y[i] = 0.0f;
        block.z[i] = 1.0f;
    }
    return Coverage::Some;
}

void PlacedFaces::FillRun(const PlacedFace& place, std::uint32_t column, std::uint32_t row, int count,
                          float* x, float* y, float* z) const {
    if (!hasGrid_) {
        for (float* component : {x, y, z}) std::fill_n(component, count, 0.0f);
        return;
    }
    const MVector<float>& across = place.turn == FaceTurn::HalfTurn              ? turned_
                                   : place.turn == FaceTurn::MirroredLeftToRight ? mirrored_
                                                                                 : forward_;
    const MVector<float>& down = place.turn == FaceTurn::HalfTurn ? turned_ : forward_;
    FaceRowVectors(place.face, across.Data() + column, down.Data()[row], count, x, y, z);
}

}  // namespace skyvault
