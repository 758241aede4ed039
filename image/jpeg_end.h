// Whether a JPEG file is there to its end. Decoders fill up what is missing of a cut one with grey and say
// nothing.
#pragma once

#include <cstddef>
#include <span>

namespace skyvault {

/// True when the file's markers lead to "end of image"; what follows it is not looked at. False for cut files
/// and for what is no JPEG.
bool JpegReachesItsEnd(std::span<const std::byte> file);

}  // namespace skyvault
