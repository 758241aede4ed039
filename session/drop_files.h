// Files dropped on the window: which layout they are opened as, and which of six is which face.
#pragma once

#include <string>
#include <vector>

#include "image/image.h"
#include "session/session.h"

namespace skyvault {

/// The layout a picture of this size is taken for. Where several have its proportions the current view
/// decides. Proportions count to the nearest pixel: 1365 × 1024 is 4:3.
PanoramaFormat LayoutOfPicture(const PictureSize& size, PanoramaFormat view);

/// The paths in the order of CubeFace, told apart by what one naming system (FaceAffix) puts before or
/// behind the name; upper and lower case are one. Empty when no system names all six.
std::vector<std::wstring> OrderFaces(const std::vector<std::wstring>& paths);

/// Opens one dropped file as a panorama, or six as the faces of one. Anything else is an error told to the
/// user that leaves the panorama as it is.
void OpenDroppedFiles(Session& session, const std::vector<std::wstring>& paths);

}  // namespace skyvault
