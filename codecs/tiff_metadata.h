// Metadata in TIFF files: tags of the first page's directory, and the directories of EXIF and GPS.
#pragma once

#include "codecs/photo_metadata.h"

namespace skyvault {

bool IsTiffStart(const ByteSource& file);

/// Adds what the first page carries. Its EXIF becomes a block of its own.
void ReadTiffMetadata(const ByteSource& file, PhotoMetadata& metadata);

/// The orientation of a page, 1 .. 8.
int OrientationOfTiff(const ByteSource& file, std::uint32_t page);

/// How many channels the first page's pixels have beside alpha; 0 when it does not say.
int ChannelsOfTiff(const ByteSource& file);

/// Whether there is a directory that can be written anew, and room for it in 32 bits.
bool TakesTiffMetadata(const ByteSource& file, const PhotoMetadata& metadata);

/// The copy of WriteWithMetadata, its first directory behind the file's end. metadata: taken.
bool WriteTiffMetadata(const ByteSource& file, const PhotoMetadata& metadata, const ByteSink& sink);

}  // namespace skyvault
