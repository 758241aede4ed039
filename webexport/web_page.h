// The panorama as a small web page: the equirectangular picture, and beside it a page that shows it.
//
// Page, script and style sheet are not generated: they are copied from Media/www beside the program, and the
// page gets the picture's name in place of "[URL]".
#pragma once

#include <string>

#include "projection/layout_requests.h"

namespace skyvault {

/// The files that go with the picture at `picturePath`: the page has its name with the extension "html", the
/// other two are shared by all pages of the folder.
struct WebPageFiles {
    std::wstring page, styleSheet, script;
};
WebPageFiles CompanionFiles(const std::wstring& picturePath);

/// Writes the page, its script and style sheet over older ones, then the equirectangular picture, which
/// `result` receives. The outcome is the picture's alone: a companion file that is missing beside the
/// program, or cannot be written, is left out. It names all files.
Outcome ExportWebPage(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                      Image& result);

}  // namespace skyvault
