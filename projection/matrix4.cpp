#include "projection/matrix4.h"

#include <cmath>

#include "projection/fast_math.h"

namespace skyvault {

void UpdateIdentityFlag(Matrix4& matrix) {
    constexpr float kTolerance = 1e-6f;
    matrix.isIdentity = true;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            const float expected = row == column ? 1.0f : 0.0f;
            // Written so that NaN is no identity.
            if (!(std::fabs(matrix.m[row][column] - expected) <= kTolerance)) matrix.isIdentity = false;
        }
    }
}

Matrix4 operator*(const Matrix4& a, const Matrix4& b) {
    if (b.isIdentity) return a;
    if (a.isIdentity) return b;
    Matrix4 product;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            float sum = 0.0f;
            for (int k = 0; k < 4; ++k) sum += a.m[row][k] * b.m[k][column];
            product.m[row][column] = sum;
        }
    }
    UpdateIdentityFlag(product);
    return product;
}

Matrix4 InverseOfRotation(const Matrix4& rotation) {
    Matrix4 inverse = rotation;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) inverse.m[row][column] = rotation.m[column][row];
    }
    UpdateIdentityFlag(inverse);
    return inverse;
}

Direction Transform(const Direction& d, const Matrix4& matrix) {
    if (matrix.isIdentity) return d;
    const auto& m = matrix.m;
    return {d.x * m[0][0] + d.y * m[1][0] + d.z * m[2][0] + m[3][0],
            d.x * m[0][1] + d.y * m[1][1] + d.z * m[2][1] + m[3][1],
            d.x * m[0][2] + d.y * m[1][2] + d.z * m[2][2] + m[3][2]};
}

Matrix4 YawPitchRollMatrix(float yaw, float pitch, float roll) {
    const float sa = Sin(yaw), ca = Cos(yaw);
    const float sb = Sin(pitch), cb = Cos(pitch);
    const float sc = Sin(roll), cc = Cos(roll);
    Matrix4 r;
    r.m[0][0] = sb * sa * sc + cc * ca;
    r.m[0][1] = sc * cb;
    r.m[0][2] = sb * ca * sc - cc * sa;
    r.m[1][0] = sb * sa * cc - sc * ca;
    r.m[1][1] = cc * cb;
    r.m[1][2] = sb * ca * cc + sc * sa;
    r.m[2][0] = cb * sa;
    r.m[2][1] = -sb;
    r.m[2][2] = cb * ca;
    UpdateIdentityFlag(r);
    return r;
}

}  // namespace skyvault
