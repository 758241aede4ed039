#include "projection/face_rows.h"

namespace skyvault {

void FaceRowVectors(CubeFace face, const float* across, float down, int count, float* x, float* y, float* z) {
    Kernels().faceVectors(face, across, down, count, x, y, z);
}

void FaceRowDirections(CubeFace face, const float* across, float down, int count, float* x, float* y,
                       float* z) {
    FaceRowVectors(face, across, down, count, x, y, z);
    Kernels().normalize(x, y, z, count);
}

void FaceBlockDirections(CubeFace face, const EdgeScale& scale, std::uint32_t row, std::uint32_t first,
                         int count, DirectionBlock& block) {
    float across[kBlockSize];
    for (int i = 0; i < count; ++i) across[i] = scale(std::int64_t{first} + i);
    FaceRowDirections(face, across, scale(row), count, block.x, block.y, block.z);
}

}  // namespace skyvault
