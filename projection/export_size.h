// How large an export becomes: the options' resolution lists, never more than the source can fill.
#pragma once

#include <cstdint>

#include "projection/panorama.h"

namespace skyvault {

enum class SizeKind {
    CubeMap = 0,          ///< "Resolution0"; "6 x 1024 x 1024"
    Equirectangular = 1,  ///< "Resolution1"; "4096 x 2048"
    Square = 2,           ///< "Resolution2": sphere map, mirror ball, heart, interior square; "2048 x 2048"
    Generator = 3,        ///< "Resolution0", no source size
};

/// Edge length of list entry 0..6: 256, 512 … 16384; 256 for any other index.
std::int32_t ResolutionOfIndex(std::int32_t index);

/// The edge (width for Equirectangular) to export at. sourceSize < 1 means there is no source to limit it.
/// showMessages: tell the user when the source is too small or the size was made a power of two.
std::int32_t ChooseExportSize(const Panorama& panorama, SizeKind kind, std::int32_t sourceSize,
                              bool powerOfTwo, bool showMessages);

}  // namespace skyvault
