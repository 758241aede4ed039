#include "projection/cube_face.h"

#include <cmath>

#include "projection/face_rows.h"

namespace skyvault {

namespace {

/// The vector from the middle of the cube to a face pixel, before it is given unit length.
Direction FacePixelVector(int faceSize, CubeFace face, int column, int row) {
    const EdgeScale scale(faceSize);
    const float a = scale(column);
    const float b = scale(row);
    switch (face) {
        case CubeFace::Front:
            return {a, -b, 1.0f};
        case CubeFace::Right:
            return {1.0f, -b, -a};
        case CubeFace::Back:
            return {-a, -b, -1.0f};
        case CubeFace::Left:
            return {-1.0f, -b, a};
        case CubeFace::Top:
            return {a, 1.0f, b};
        case CubeFace::Bottom:
            return {a, -1.0f, -b};
    }
    return {};
}

}  // namespace

Direction FacePixelToDirection(int faceSize, CubeFace face, int column, int row) {
    if (faceSize <= 0) return {};
    Direction d = FacePixelVector(faceSize, face, column, row);
    Normalize(d);
    return d;
}

FacePixel DirectionToFacePixel(const Direction& d, std::uint32_t faceSize) {
    const std::int32_t last = static_cast<std::int32_t>(faceSize) - 1;
    const float h = static_cast<float>(last * 0.5);
    const float X = h * d.x, Y = h * d.y, Z = h * d.z;
    const float ax = std::fabs(d.x), ay = std::fabs(d.y), az = std::fabs(d.z);
    FacePixel pixel;
    float column = 0.0f, row = 0.0f;
    if (az >= ax && az >= ay) {
        pixel.face = d.z > 0.0f ? CubeFace::Front : CubeFace::Back;
        pixel.found = d.z != 0.0f;
        column = X / d.z + h;
        row = d.z > 0.0f ? h - Y / d.z : Y / d.z + h;
    } else if (ax >= ay && ax >= az) {
        pixel.face = d.x > 0.0f ? CubeFace::Right : CubeFace::Left;
        pixel.found = true;
        column = h - Z / d.x;
        row = d.x > 0.0f ? h - Y / d.x : Y / d.x + h;
    } else if (ay >= ax && ay >= az) {
        pixel.face = d.y > 0.0f ? CubeFace::Top : CubeFace::Bottom;
        pixel.found = true;
        column = d.y > 0.0f ? X / d.y + h : h - X / d.y;
        row = Z / d.y + h;
    }
    // Infinite components leave NaN here; they are as little a direction as NaN itself.
    if (!pixel.found || column != column || row != row) return {};
    const auto clampToFace = [last](float v) {
        const std::int32_t whole = static_cast<std::int32_t>(v);
        return whole < 0 ? 0 : whole > last ? last : whole;
    };
    pixel.column = clampToFace(column);
    pixel.row = clampToFace(row);
    return pixel;
}

std::uint32_t FaceGridSize(const CubeFaces& faces) {
    for (const Image& face : faces) {
        if (face.IsValid()) return face.width;
    }
    return 0;
}

PixelValue SampleCubeFaces(const CubeFaces& faces, const Direction& d) {
    const PixelValue white(kOpaqueWhite);
    const FacePixel pixel = DirectionToFacePixel(d, FaceGridSize(faces));
    if (!pixel.found) return white;
    const Image& face = faces[static_cast<std::size_t>(pixel.face)];
    if (!face.IsValid()) return white;
    return face.GetPixel(pixel.column, pixel.row);
}

}  // namespace skyvault
