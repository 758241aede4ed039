// The passes of the row engine: plain loops over blocks of directions, one table of them for every set of
// kernels (kernel_choice.h).
//
// A block holds up to kBlockSize directions as three arrays. Every pass works in place or from one array
// to another, n elements, no early exits.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "projection/kernel_choice.h"

namespace skyvault {

struct Matrix4;
enum class CubeFace : std::uint32_t;

inline constexpr int kBlockSize = 256;

struct DirectionBlock {
    alignas(64) float x[kBlockSize];
    alignas(64) float y[kBlockSize];
    alignas(64) float z[kBlockSize];
};

/// Walks over rows firstRow .. endRow − 1 of a picture in blocks: calls work(row, first, count) for the
/// pixels first .. first + count − 1 of a row. One block follows the other down the rows, so that those made
/// in succession look at what is near.
template <typename Work>
void ForRowBlocks(std::uint32_t width, std::uint32_t firstRow, std::uint32_t endRow, const Work& work) {
    for (std::uint32_t first = 0; first < width; first += kBlockSize) {
        const int count = static_cast<int>(std::min<std::uint32_t>(kBlockSize, width - first));
        for (std::uint32_t row = firstRow; row < endRow; ++row) work(row, first, count);
    }
}

/// An equirectangular source, as the lookup needs it.
struct EquirectGrid {
    std::uint32_t width = 0, height = 0, stride = 0, bytesPerPixel = 0;
    std::uint64_t origin = 0;  ///< added to every offset: the address of the first pixel makes addresses
};

/// Six faces of one size and format.
struct CubeGrid {
    std::uint32_t size = 0, stride = 0, bytesPerPixel = 0;
};

/// Marks a direction without a pixel (zero vector, NaN) in a lookup's offsets.
inline constexpr std::uint64_t kNoPixel = ~std::uint64_t{0};

struct RowKernels {
    const char* name;  ///< of the set, for messages

    /// Normalize (projection/direction.h) of every direction.
    void (*normalize)(float* x, float* y, float* z, int n);
    /// v := |v|
    void (*absolute)(float* v, int n);
    /// d := d × matrix, without looking at its identity flag.
    void (*transform)(float* x, float* y, float* z, int n, const Matrix4& matrix);
    /// onDisc[i] := 1 where HitLogoDisc (projection/sample_panorama.h) of a unit direction is on the disc,
    /// else 0.
    void (*logoDisc)(const float* x, const float* y, const float* z, int n, float logoSize,
                     std::uint32_t* onDisc);
    /// y := 2 · ((y + 1) / 2)^power − 1
    void (*horizonCurve)(float* y, int n, float power);

    /// Byte offset of the equirectangular pixel each direction reads. True when some are kNoPixel.
    bool (*equirectOffsets)(const float* x, const float* y, const float* z, int n, const EquirectGrid& grid,
                            std::uint64_t* offsets);
    /// Face (0..5) and byte offset in it of the pixel each direction reads. True when some are kNoPixel;
    /// their face is 0.
    bool (*cubeOffsets)(const float* x, const float* y, const float* z, int n, const CubeGrid& grid,
                        std::int32_t* faces, std::uint64_t* offsets);

    /// One row of an equirectangular grid: (cos φ · sin λ, sin φ, cos φ · cos λ).
    void (*equirectDirections)(const float* sinLongitude, const float* cosLongitude, float sinLatitude,
                               float cosLatitude, float* x, float* y, float* z, int n);
    /// The same with a latitude and longitude of its own for every pixel.
    void (*sphericalDirections)(const float* longitude, const float* latitude, float* x, float* y, float* z,
                                int n);
    /// FaceRowVectors (projection/face_rows.h).
    void (*faceVectors)(CubeFace face, const float* across, float down, int n, float* x, float* y, float* z);
};

SKYVAULT_KERNEL_TABLE(RowKernels, Kernels)

}  // namespace skyvault
