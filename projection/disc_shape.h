// What the sphere map, the mirror ball and the heart share: both ways between panorama and picture, around
// the passes that differ.
#pragma once

#include <string>

#include "projection/disc_kernels.h"
#include "projection/panorama.h"
#include "projection/render_layout.h"

namespace skyvault {

/// Faces of twice the picture's width, from the pixels it shows along their directions. False, with nothing
/// reported, when the picture cannot be read.
bool ImportDisc(Panorama& panorama, const std::wstring& path, DiscKernels::Pixels pixels);

/// ExportSquare of the shape.
bool ExportDisc(Panorama& panorama, const std::wstring& path, DiscKernels::Directions directions,
                std::wstring& infoLog);

/// The shape on a grid of size × size pixels.
LayoutGrid DiscGrid(std::uint32_t size, DiscKernels::Directions directions);

}  // namespace skyvault
