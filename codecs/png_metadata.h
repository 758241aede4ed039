// Metadata in the chunks of PNG files (iCCP, eXIf, iTXt) and, for reading, of WebP files.
#pragma once

#include "codecs/photo_metadata.h"

namespace skyvault {

bool IsPngStart(const ByteSource& file);
bool IsWebpStart(const ByteSource& file);

/// Add what the file carries.
void ReadPngMetadata(const ByteSource& file, PhotoMetadata& metadata);
void ReadWebpMetadata(const ByteSource& file, PhotoMetadata& metadata);

/// How many channels the file's pixels have beside alpha; 0 when it does not say.
int ChannelsOfPng(const ByteSource& file);

/// The copy of WriteWithMetadata.
bool WritePngMetadata(const ByteSource& file, const PhotoMetadata& metadata, const ByteSink& sink);

}  // namespace skyvault
