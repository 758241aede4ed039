// The panorama properties ("GPano") of a photo as the program's own terms: where its middle points to, where
// a viewer is to look first, and whether it is all of the sphere.
#pragma once

#include <string>

#include "codecs/xmp_packet.h"
#include "projection/layout_requests.h"

namespace skyvault {

/// The properties of an equirectangular export, those of its size aside. The compass heading of the middle
/// turns with the panorama and goes when the panorama is mirrored. A viewer starts where the camera looks;
/// while that was not moved, where the photo says, if it does.
SphereTags SphereTagsOfExport(const Panorama& panorama, const Camera& camera, const ExportSettings& settings);

/// A line for a photo that says it is only a part of the sphere, with both sizes; empty for others. It is
/// taken for a whole one.
std::wstring CropTrouble(const std::wstring& path, const SphereTags& sphere);

/// In words, for the description of a file; empty for a photo that has no such properties.
std::wstring DescriptionOfSphere(const SphereTags& sphere);

}  // namespace skyvault
