// Truevision TGA, uncompressed: true colour with 24 or 32 bits, and colour-mapped with 8-bit indices.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "image/image.h"

namespace skyvault {

/// Reads a TGA file held in memory. name: for the debugger line that tells the stored row order.
/// False for anything else than the kinds above and for files with less pixel data than they claim;
/// nothing is allocated that the file's own size does not justify.
bool ReadTga(std::span<const std::byte> file, std::wstring_view name, Image& image);

}  // namespace skyvault
