// Cube faces made from the panorama as it is seen now.
#pragma once

#include <cstdint>

#include "projection/panorama.h"
#include "projection/render_layout.h"

namespace skyvault {

/// Fills `face` with a size × size picture of one cube face. The panorama's own grid of faceSize is scaled
/// by integers: for a larger size pixels repeat, for a smaller one they are skipped; a faceSize of 0 looks
/// along the zero vector. Colours are bled into transparent pixels. Without memory "Out of memory" is
/// reported and the answer is false.
bool BuildFace(Panorama& panorama, Image& face, CubeFace which, std::uint32_t size, PixelFormat format);

/// Scales all six faces and faceSize by the factor with box averages; a face that cannot be scaled stays as
/// it is. Factors ≤ 0 do nothing. Progress: "Antialiasing cube faces...".
void AntialiasFaces(Panorama& panorama, float factor);

}  // namespace skyvault
