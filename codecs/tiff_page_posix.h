// One directory of a TIFF file: the size of its picture, how the pixels are stored, and whether it can be so.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <vector>

#include "codecs/picture_codec.h"
#include "codecs/tiff_samples.h"
#include "codecs/tiff_source_posix.h"

namespace skyvault {

/// A directory as it matters here. A chunk is a tile, or a strip as wide as the picture.
struct TiffPage {
    std::uint32_t width = 0, height = 0;
    std::uint16_t compression = 0;
    bool tiled = false;
    bool throughLibrary = false;  ///< its colours are the library's to convert
    std::uint32_t chunkWidth = 0, chunkHeight = 0;
    std::uint32_t across = 0, down = 0;  ///< chunks
    std::uint64_t rowBytes = 0;          ///< of a chunk's row, of one sample where they are separate
    TiffSamples samples;
};

/// A chunk's place in the picture, the part of it that is inside.
struct TiffPlace {
    std::uint32_t x, y, width, height;
};

TiffPlace PlaceOf(const TiffPage& page, std::uint32_t column, std::uint32_t row);

/// The samples that are read of a pixel.
std::vector<std::uint32_t> WantedSamples(const TiffSamples& samples);

/// What the directory at the handle tells. alphaByHabit: the file does not tell what samples beyond the
/// colours are. False for kinds of pictures that are not read.
bool ReadTiffPage(TIFF* tiff, bool alphaByHabit, TiffPage& page);

/// Whether every chunk lies in the file and can hold what it unpacks to; how large the largest is.
bool CheckTiffChunks(const TiffSource& source, TIFF* tiff, const TiffPage& page, std::uint64_t& largest);

/// What the page becomes, and what that takes; the number of pages is the caller's to tell.
PictureFacts FactsOf(const TiffPage& page, std::uint64_t largestChunk);

}  // namespace skyvault
