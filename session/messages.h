// Every failure in words, once: for the window's message boxes and the console's lines.
#pragma once

#include <string>
#include <vector>

#include "platform/outcome.h"
#include "projection/panorama.h"

namespace skyvault {

/// What a message box says; empty for what is done, and for a generator that did without its picture.
std::wstring MessageOf(const Outcome& outcome);

/// One line that names the file, for programs that work on several.
std::wstring LineOf(const Outcome& outcome);

/// What is to be said of six single files that made a panorama all the same, a line each: named faces that
/// could not be read, and faces that are no squares of the panorama's face size.
std::vector<std::wstring> FaceTroubles(const Panorama& panorama, const std::vector<std::wstring>& paths);

/// What of a photo's metadata was left out (PhotoMetadata::lost, Outcome::lost), a line each that names the
/// photo.
std::vector<std::wstring> MetadataTroubles(const std::wstring& photo, const std::vector<std::wstring>& lost);

}  // namespace skyvault
