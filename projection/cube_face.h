// Cube faces, and the directions their pixels look along.
//
// +X right, +Y up, +Z front (the centre of an equirectangular picture). Row 0 of a face is its top row as
// seen from the middle of the cube:
//
//              +-------+
//              |  Top  |            the four sides are upright, their columns run to the viewer's right;
//      +-------+-------+-------+-------+    Top's last row and Bottom's first row touch Front
//      | Left  | Front | Right | Back  |
//      +-------+-------+-------+-------+
//              | Bottom|
//              +-------+
#pragma once

#include <array>
#include <cstdint>

#include "image/image.h"
#include "projection/direction.h"

namespace skyvault {

/// Storage order of the six faces: arrays, files and progress all count this way.
enum class CubeFace : std::uint32_t { Front, Right, Back, Left, Top, Bottom };

inline constexpr int kFaceCount = 6;
using CubeFaces = std::array<Image, kFaceCount>;

/// The direction a face pixel looks along, a unit vector.
/// faceSize: edge N of the grid in pixels, N ≥ 2; column, row: 0 .. N − 1.
/// The outermost pixels sit at ±(N − 2)/(N − 1) of the face, so that exported and re-imported faces line
/// up. N ≤ 0 gives the zero vector.
Direction FacePixelToDirection(int faceSize, CubeFace face, int column, int row);

/// Which pixel of which face a direction meets.
struct FacePixel {
    CubeFace face = CubeFace::Front;
    std::int32_t column = 0, row = 0;
    bool found = false;  ///< false for the zero vector and NaN
};

/// faceSize: edge of the faces, ≥ 1. Ties go to Front/Back, then Right/Left.
FacePixel DirectionToFacePixel(const Direction& d, std::uint32_t faceSize);

/// Edge of the grid that lookups use: the width of the Front face, or of the first face that is valid.
std::uint32_t FaceGridSize(const CubeFaces& faces);

/// The one pixel seen along d, in its face's own format. Opaque white (Rgba8)
/// for the zero vector, NaN and faces that are not valid.
PixelValue SampleCubeFaces(const CubeFaces& faces, const Direction& d);

}  // namespace skyvault
