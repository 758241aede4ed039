// The header of the cubic movies the program writes: everything before the six JPEG files.
//
// A movie is the header and the six JPEG files, nothing else:
//
//      0  moov   track 1: the panorama's node; track 2: the panorama, its pan, tilt and zoom; track 3: the
//                faces, six video frames; user data
//   2177  free
//   2201  wide
//   2209  mdat   the one sample of track 1 (2233), that of track 2 (2313), then (2505) the JPEG files
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "projection/cube_face.h"

namespace skyvault {

inline constexpr std::size_t kMovieHeaderSize = 2505;

using MovieHeader = std::array<std::byte, kMovieHeaderSize>;

/// faceEdge: pixels; the two 16-bit fields among those that hold it keep its low 16 bits.
/// jpegSizes: bytes of the files behind the header, in the order of the faces; their sum and the header
/// must stay below 4 GB. A missing face has size 0.
MovieHeader MakeMovieHeader(std::uint32_t faceEdge, const std::array<std::uint32_t, kFaceCount>& jpegSizes);

}  // namespace skyvault
