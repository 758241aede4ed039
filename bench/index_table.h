// The same pixels through a ready-made index table: the least a conversion can take, read an index, copy a
// pixel.
#pragma once

#include <cstring>
#include <vector>

#include "bench/conversion_grid.h"
#include "projection/face_rows.h"

namespace skyvault::bench {

/// Which pixel of an equirectangular source, width × width/2, each pixel of its six faces of width/4 reads.
inline std::vector<std::uint32_t> EquirectangularToFacesTable(std::uint32_t width,
                                                              const Modifications& modifications) {
    const std::uint32_t size = width / 4;
    const EdgeScale scale(static_cast<std::int32_t>(size));
    std::vector<float> across(size);
    for (std::uint32_t i = 0; i < size; ++i) across[i] = scale(i);
    std::vector<std::uint32_t> table;
    table.reserve(std::size_t{kFaceCount} * size * size);
    DirectionBlock b;
    std::uint64_t offsets[kBlockSize];
    for (int face = 0; face < kFaceCount; ++face) {
        for (std::uint32_t row = 0; row < size; ++row) {
            for (std::uint32_t first = 0; first < size; first += kBlockSize) {
                FaceRowDirections(static_cast<CubeFace>(face), across.data() + first, across[row], kBlockSize,
                                  b.x, b.y, b.z);
                Kernels().transform(b.x, b.y, b.z, kBlockSize, modifications.orientation);
                Kernels().equirectOffsets(b.x, b.y, b.z, kBlockSize, {width, width / 2, width, 1}, offsets);
                for (const std::uint64_t offset : offsets)
                    table.push_back(static_cast<std::uint32_t>(offset));
            }
        }
    }
    return table;
}

/// Which pixel each one of an equirectangular picture, width × width/2, reads: of another, or (sixFaces) of
/// six faces of width/4 below each other.
inline std::vector<std::uint32_t> EquirectangularTable(std::uint32_t width,
                                                       const Modifications& modifications, bool sixFaces) {
    const std::uint32_t height = width / 2, size = width / 4;
    const LayoutGrid grid = EquirectangularGrid(width, height);
    std::vector<std::uint32_t> table;
    table.reserve(std::size_t{width} * height);
    DirectionBlock b;
    std::uint64_t offsets[kBlockSize];
    std::int32_t faces[kBlockSize] = {};
    for (std::uint32_t row = 0; row < height; ++row) {
        for (std::uint32_t first = 0; first < width; first += kBlockSize) {
            grid.directions(row, first, kBlockSize, b, nullptr);
            Kernels().normalize(b.x, b.y, b.z, kBlockSize);
            Kernels().transform(b.x, b.y, b.z, kBlockSize, modifications.orientation);
            if (sixFaces) {
                Kernels().cubeOffsets(b.x, b.y, b.z, kBlockSize, {size, size, 1}, faces, offsets);
            } else {
                Kernels().equirectOffsets(b.x, b.y, b.z, kBlockSize, {width, height, width, 1}, offsets);
            }
            for (int i = 0; i < kBlockSize; ++i) {
                table.push_back(static_cast<std::uint32_t>(offsets[i]) +
                                static_cast<std::uint32_t>(faces[i]) * size * size);
            }
        }
    }
    return table;
}

/// Pixels of three bytes.
inline void FetchByTable(const Image& source, const std::vector<std::uint32_t>& table,
                         std::vector<std::byte>& result) {
    const std::byte* const from = source.pixels.get();
    std::byte* to = result.data();
    for (const std::uint32_t index : table) {
        std::memcpy(to, from + std::size_t{index} * 3, 3);
        to += 3;
    }
}

}  // namespace skyvault::bench
