// A block of EXIF: the small TIFF file that photos carry, and what of it no longer holds in a new picture.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/tiff_entries.h"
#include "image/image.h"

namespace skyvault {

/// What a block tells about its photo; empty or false where it does not.
struct ExifFacts {
    std::wstring camera;  ///< make and model
    std::wstring taken;   ///< "2024:05:01 12:30:00"
    bool position = false;
};

/// Whether the block is a TIFF file with a whole first directory: all else in it may be damaged.
bool IsSoundExif(std::span<const std::byte> exif);

/// 1 .. 8; 1 for a block that does not say, or says something else.
int OrientationOf(std::span<const std::byte> exif);

ExifFacts FactsOfExif(std::span<const std::byte> exif);

/// The block for a picture of that size that stands upright and has been written by the software: orientation
/// and sizes are set where it has them, the software in any case, and the thumbnail is gone. Everything else
/// stays where it is, for the notes of makers count from the block's beginning. exif: sound.
std::vector<std::byte> CorrectedExif(std::vector<std::byte> exif, const PictureSize& size,
                                     std::string_view software);

/// The block with the tree's contents.
std::vector<std::byte> ExifOfTree(ExifTree tree);

}  // namespace skyvault
