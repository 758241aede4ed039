// 4 × 4 matrices for row vectors.
#pragma once

#include "projection/direction.h"

namespace skyvault {

struct Matrix4 {
    float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    bool isIdentity = true;  ///< kept by every function here; a flagged matrix leaves directions alone
    friend bool operator==(const Matrix4&, const Matrix4&) = default;
};

/// Sets isIdentity: the diagonal is 1 and the rest 0, each within 1e-6.
void UpdateIdentityFlag(Matrix4& matrix);

/// The ordinary row-by-column product; a flagged identity on either side returns the other as it is.
Matrix4 operator*(const Matrix4& a, const Matrix4& b);

/// The inverse of a rotation: its transpose.
Matrix4 InverseOfRotation(const Matrix4& rotation);

/// x' = x·m[0][0] + y·m[1][0] + z·m[2][0] + m[3][0], and so on for y' and z'.
Direction Transform(const Direction& d, const Matrix4& matrix);

/// Roll c about +Z, then pitch b about +X, then yaw a about +Y, for row vectors; radians.
Matrix4 YawPitchRollMatrix(float yaw, float pitch, float roll);

}  // namespace skyvault
