// The layouts that hold the six faces side by side in one picture: crosses and strips.
//
//    horizontal cross         vertical cross     strip:           Front Right Back Left Top Bottom
//        Top                      Top            strip XYZ:       Right Left Top Bottom Front Back
//   Left Front Right Back    Left Front Right    interior strip:  Back* Right Front Left Top Bottom
//        Bottom                   Bottom
//                                 Back°          ° turned by 180°    * mirrored left to right
//
// Exports look through the panorama as it is turned now. Their edge follows Resolution0, at most the
// panorama's faces; "Antialiasing" makes no difference to them. With an empty path they fill the view target
// and show it there.
#pragma once

#include <string>

#include "projection/panorama.h"

namespace skyvault {

/// Cuts the faces out of a cross or strip (all but the interior strip) of its width's size; what the picture
/// is too low for stays zero. Pixels are copied as they are, with their alpha. A picture that cannot be read
/// or is too narrow for faces leaves the panorama empty: false, and nothing is reported. A face without
/// memory is reported ("Out of memory") and ends the import: false; those before it stay.
bool ImportFaceLayout(Panorama& panorama, const std::wstring& path, PanoramaFormat layout);

/// Reads the faces from an interior strip of its height's size; positions wrap around its edges. Composited
/// over the background colour unless "Transparency" is on. False when the picture cannot be read, and nothing
/// is reported. A face without memory is reported and stays empty.
bool ImportInteriorStrip(Panorama& panorama, const std::wstring& path);

bool ExportHorizontalCross(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);
bool ExportVerticalCross(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);
/// layout: Strip or StripXyz.
bool ExportStrip(Panorama& panorama, const std::wstring& path, PanoramaFormat layout, std::wstring& infoLog);
bool ExportInteriorStrip(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

}  // namespace skyvault
