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

}  // namespace skyvault
