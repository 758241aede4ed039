// Coloured lights in random directions around the viewer, their glows added up.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Replaces the six faces, never antialiased. "LightsLights" lights of the spread "LightsBrightness", each
/// coloured like a random pixel of the palette picture; black without a readable one.
Outcome GenerateLights(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

}  // namespace skyvault
