// The export shared by the square layouts that show the panorama in one shape: sphere map, mirror ball, heart
// and interior square.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "projection/panorama.h"
#include "projection/render_layout.h"

namespace skyvault {

/// The shape's directions on a grid of size × size pixels.
using SquareShape = std::function<LayoutGrid(std::uint32_t size)>;

/// Writes the panorama in the shape to `path`, or with an empty path builds it for the view target and shows
/// it there. Resolution2 chooses the size, at most twice the faces'. Pixels outside the shape are of the
/// background colour, or transparent with "Transparency". With "Antialiasing" a file is built at double size
/// and averaged.
bool ExportSquare(Panorama& panorama, const std::wstring& path, const SquareShape& shape,
                  std::wstring& infoLog);

}  // namespace skyvault
