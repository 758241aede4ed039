// Exports whose picture is a square of one size: the round shapes and the interior square.
#pragma once

#include <cstdint>
#include <functional>

#include "projection/layout_requests.h"
#include "projection/render_layout.h"

namespace skyvault {

/// The shape's directions on a grid of size × size pixels.
using SquareShape = std::function<LayoutGrid(std::uint32_t size)>;

/// Renders the panorama in the shape. Resolution2 chooses the size, at most twice the faces', and a view's
/// room limits it. Pixels outside the shape are of the empty colour. With "Antialiasing" a file is built at
/// double size and averaged.
Outcome RenderSquare(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                     const SquareShape& shape, Image& result);

}  // namespace skyvault
