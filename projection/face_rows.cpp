#include "projection/face_rows.h"

namespace skyvault {

void FaceRowVectors(CubeFace face, const float* across, float down, int count, float* x, float* y, float* z) {
    const auto fill = [count](float* v, float value) {
        for (int i = 0; i < count; ++i) v[i] = value;
    };
    const auto along = [across, count](float* v) {
        for (int i = 0; i < count; ++i) v[i] = across[i];
    };
    const auto against = [across, count](float* v) {
        for (int i = 0; i < count; ++i) v[i] = -across[i];
    };
    switch (face) {
        case CubeFace::Front:
            along(x), fill(y, -down), fill(z, 1.0f);
            break;
        case CubeFace::Right:
            fill(x, 1.0f), fill(y, -down), against(z);
            break;
        case CubeFace::Back:
            against(x), fill(y, -down), fill(z, -1.0f);
            break;
        case CubeFace::Left:
            fill(x, -1.0f), fill(y, -down), along(z);
            break;
        case CubeFace::Top:
            along(x), fill(y, 1.0f), fill(z, down);
            break;
        case CubeFace::Bottom:
            along(x), fill(y, -1.0f), fill(z, -down);
            break;
    }
}

void FaceRowDirections(CubeFace face, const float* across, float down, int count, float* x, float* y,
                       float* z) {
    FaceRowVectors(face, across, down, count, x, y, z);
    Kernels().normalize(x, y, z, count);
}

}  // namespace skyvault
