// Writing a GIF file of one frame.
//
// Ours, because the libraries' writers have their faults: OpenImageIO's knows no transparency and overruns
// its stack on large pictures, and some WIC installations lose transparency too.
#pragma once

#include <string>

#include "codecs/indexed_picture.h"

namespace skyvault {

/// width, height: of the indices, 1 to 65535. False when the file cannot be made or written; a broken file
/// may then be left.
bool WriteGif(const std::wstring& path, const IndexedPicture& picture, std::uint32_t width,
              std::uint32_t height);

}  // namespace skyvault
