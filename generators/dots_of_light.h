// Coloured lights in random directions around the viewer, their glows added up.
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Replaces the six faces, never antialiased. "LightsLights" lights of the spread "LightsBrightness", each
/// coloured like a random pixel of the palette picture; black without a readable one. False without memory
/// for the lights.
bool GenerateLights(Panorama& panorama, const std::wstring& palettePicturePath);

}  // namespace skyvault
