// The layouts that hold the six faces side by side in one picture: crosses and strips.
//
//    horizontal cross         vertical cross     strip:           Front Right Back Left Top Bottom
//        Top                      Top            strip XYZ:       Right Left Top Bottom Front Back
//   Left Front Right Back    Left Front Right    interior strip:  Back* Right Front Left Top Bottom
//        Bottom                   Bottom
//                                 Back°          ° turned by 180°    * mirrored left to right
//
// Exports look through the panorama as it is turned now. The edge of files follows Resolution0, at most the
// panorama's faces; "Antialiasing" makes no difference to them.
#pragma once

#include "projection/layout_requests.h"

namespace skyvault {

/// Cuts the faces out of a cross or strip (all but the interior strip) of its width's size; what the picture
/// is too low for stays zero. Pixels are copied as they are, with their alpha. CannotOpen also for a picture
/// too narrow for faces. A face without memory ends the import; those before it stay.
Outcome ImportFaceLayout(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// Reads the faces from an interior strip of its height's size; positions wrap around its edges. Composited
/// over the background colour unless "Transparency" is on. A face without memory stays empty.
Outcome ImportInteriorStrip(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// All five layouts: request.format says which.
Outcome RenderFaceLayout(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                         Image& result);

}  // namespace skyvault
