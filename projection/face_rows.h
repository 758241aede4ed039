// Rows of a cube face as directions, for everything that walks over faces pixel by pixel.
#pragma once

#include <cstdint>

#include "projection/cube_face.h"
#include "projection/row_kernels.h"

namespace skyvault {

/// Where the pixels of a face's edge lie, from −1 to 1: pixel p at p · step − offset. The outermost of N
/// pixels sit at ±(N − 2)/(N − 1), so that exported and re-imported faces line up. Fewer than two pixels
/// give no numbers.
struct EdgeScale {
    float step = 0, offset = 0;

    explicit EdgeScale(std::int32_t faceSize)
        : offset(static_cast<float>(faceSize - 2) / static_cast<float>(faceSize - 1)) {
        step = 2.0f * offset / static_cast<float>(faceSize - 1);
    }
    float operator()(std::int64_t pixel) const { return static_cast<float>(pixel) * step - offset; }
};

/// Unit directions of the pixels first .. first + count − 1 (count ≤ kBlockSize) of a row of a face.
void FaceBlockDirections(CubeFace face, const EdgeScale& scale, std::uint32_t row, std::uint32_t first,
                         int count, DirectionBlock& block);

/// Unit directions of `count` pixels of one row of a face, written at x, y and z: the pixels' positions
/// across the face and the row's position down it.
void FaceRowDirections(CubeFace face, const float* across, float down, int count, float* x, float* y,
                       float* z);

/// The same before the directions are given unit length, for callers that do it for several rows at once.
void FaceRowVectors(CubeFace face, const float* across, float down, int count, float* x, float* y, float* z);

}  // namespace skyvault
