// The panorama as a small web page: the equirectangular picture, and beside it a page that shows it.
//
// Page, script and style sheet are not generated: they are copied from Media/www beside the program, and the
// page gets the picture's name in place of "[URL]".
#pragma once

#include <string>
#include <vector>

#include "projection/layout_requests.h"

namespace skyvault {

/// The files that go with the picture at `picturePath`: the page has its name with the extension "html", the
/// other two are shared by all pages of the folder.
struct WebPageFiles {
    std::wstring page, styleSheet, script;
};
WebPageFiles CompanionFiles(const std::wstring& picturePath);

/// The picture and the page, without the page when the one that is there is a page of ours; script and style
/// sheet have names no other program writes. None of them can be lost unasked.
std::vector<std::wstring> WebPagePaths(const std::wstring& picturePath, const ExportSettings& settings);

/// Writes the page, its script and style sheet over older ones, then the equirectangular picture, which
/// `result` receives. PageIncomplete, naming the first, when a file beside the picture is missing beside the
/// program or cannot be written; the picture is there all the same. The information names the files written.
Outcome ExportWebPage(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                      Image& result);

}  // namespace skyvault
