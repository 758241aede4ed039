// Metadata in the marker segments of JPEG files: EXIF and XMP in APP1, the profile in pieces in APP2.
#pragma once

#include "codecs/photo_metadata.h"

namespace skyvault {

bool IsJpegStart(const ByteSource& file);

/// Adds what the file carries.
void ReadJpegMetadata(const ByteSource& file, PhotoMetadata& metadata);

/// How many channels the file's pixels have; 0 when it does not say.
int ChannelsOfJpeg(const ByteSource& file);

/// Takes out of the metadata what segments have no room for.
void FitIntoJpeg(PhotoMetadata& metadata, std::vector<std::wstring>& lost);

/// The copy of WriteWithMetadata; metadata: fitting.
bool WriteJpegMetadata(const ByteSource& file, const PhotoMetadata& metadata, const ByteSink& sink);

}  // namespace skyvault
