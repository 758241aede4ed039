// How large an export becomes: the options' resolution lists, never more than the source can fill.
#pragma once

#include <cstdint>

#include "projection/layout_requests.h"

namespace skyvault {

enum class SizeKind {
    CubeMap = 0,          ///< "Resolution0"; "6 x 1024 x 1024"
    Equirectangular = 1,  ///< "Resolution1"; "4096 x 2048"
    Square = 2,           ///< "Resolution2": sphere map, mirror ball, heart, interior square; "2048 x 2048"
};

/// Edge length of list entry 0..6: 256, 512 … 16384; 256 for any other index.
std::int32_t ResolutionOfIndex(std::int32_t index);

/// The panorama's face size as an int, at most the largest there is.
std::int32_t SourceFaceSize(const Panorama& panorama);

/// The edge (width for Equirectangular) to export at. sourceSize < 1 means there is no source to limit it.
/// For a file the user is told when the source is too small or the size was made a power of two.
std::int32_t ChooseExportSize(const ExportRequest& request, SizeKind kind, std::int32_t sourceSize,
                              Feedback& feedback, bool powerOfTwo = false);

}  // namespace skyvault
