// Cube faces made from the panorama as it is seen now.
#pragma once

#include <cstdint>

#include "projection/panorama.h"
#include "projection/render_layout.h"

namespace skyvault {

/// Fills `face` with a size × size picture of one cube face. The panorama's own grid of faceSize is scaled
/// by integers: for a larger size pixels repeat, for a smaller one they are skipped; a faceSize of 0 looks
/// along the zero vector. Colours are bled into transparent pixels. emptyColour: as in RenderOptions.
Outcome BuildFace(const Panorama& panorama, Image& face, CubeFace which, std::uint32_t size,
                  PixelFormat format, const Color8& emptyColour);

/// Scales all six faces and faceSize by the factor with box averages; a face that cannot be scaled stays as
/// it is (NoMemory). Factors ≤ 0 do nothing. Progress: "Antialiasing cube faces...".
Outcome AntialiasFaces(Panorama& panorama, float factor, Feedback& feedback);

}  // namespace skyvault
