// Pictures as the array items of a DDS file: converted to what the file stores, compressed, written.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "codecs/dds_container.h"
#include "image/image.h"
#include "platform/memory.h"

namespace skyvault {

/// How the pictures of a file are stored.
struct DdsWriteRule {
    DdsFormat written = DdsFormat::Unknown;
    PixelFormat stored =
        PixelFormat::None;   ///< what is written, or compressed to it: RGBA of 8 or 16 bits or halves
    bool keepAlpha = false;  ///< else every pixel is opaque
};

/// The picture's own channel type; compress: 8 bits as BC1.
DdsWriteRule MakeDdsWriteRule(PixelFormat format, bool keepAlpha, bool compress);

/// A format whatever the picture: a block-compressed one that CompressDds writes, or an uncompressed one of
/// four channels, red first.
DdsWriteRule DdsWriteRuleOf(DdsFormat written, bool keepAlpha);

/// A picture as an array item of a file: its pixels converted, or the picture itself where it fits already.
struct DdsStoredItem {
    DdsItem item;
    ByteBuffer pixels;  ///< null: the item's are the picture's own, which must outlive it
};

/// The picture as an item of the size, going on around its edges where it is smaller. False without memory.
bool StoreDdsItem(const Image& image, const DdsWriteRule& rule, std::uint32_t width, std::uint32_t height,
                  DdsStoredItem& result);

/// Writes the items, for each picture its levels from large to small, straight to the path.
bool WriteDdsItems(const std::wstring& path, const DdsWriteRule& rule, std::uint32_t levels,
                   std::span<const DdsStoredItem> stored);

}  // namespace skyvault
