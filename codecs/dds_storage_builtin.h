// Pixels of old DDS files as the format they are known by today.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/dds_header_builtin.h"

namespace skyvault {

constexpr std::size_t kDdsPaletteBytes = 256 * 4;

/// A row of any storage but Plain to Rgba8Unorm. palette: red, green, blue, alpha of each entry, used by
/// the palette storages. pixels: 4 × width bytes; may be `stored` itself where that has four bytes a pixel.
void ExpandDdsRow(DdsStorage storage, const std::array<std::byte, kDdsPaletteBytes>& palette,
                  const std::byte* stored, std::uint32_t width, std::byte* pixels);

}  // namespace skyvault
