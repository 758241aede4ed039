// What a photo carries beside its pixels: its colour profile (ICC), what the camera noted (EXIF) and what
// programs noted (XMP). Read from JPEG, PNG, TIFF and WebP files, written into JPEG, PNG and TIFF files.
//
// The files are worked on as bytes, without a picture library, so that every system does the same: a codec
// writes the picture, and what it carries is put into a copy of that file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "codecs/metadata_bytes.h"
#include "codecs/picture_codec.h"

namespace skyvault {

/// Each empty when the photo has none.
struct PhotoMetadata {
    std::vector<std::byte> icc;   ///< the profile as the file stores it
    std::vector<std::byte> exif;  ///< a TIFF file of its own
    std::string xmp;              ///< one packet in UTF-8, extended parts included
    /// What was there and cannot be carried, a clause each: "the EXIF data are damaged and were left out".
    std::vector<std::wstring> lost;

    bool IsEmpty() const { return icc.empty() && exif.empty() && xmp.empty(); }
};

/// What the file carries; nothing for a file that cannot be read or of another kind. Each part is at most
/// kMostMetadataBytes. What is damaged is left out and listed as lost.
PhotoMetadata ReadPhotoMetadata(const std::wstring& path);
PhotoMetadata ReadPhotoMetadata(const ByteSource& file);

/// The EXIF orientation of a frame, 1 .. 8: how the picture has to be turned or mirrored to stand upright. 1
/// for files that do not say.
int ReadOrientation(const std::wstring& path, std::uint32_t frame);

/// Whether files of the kind can carry something.
bool CarriesMetadata(PictureContainer container);

/// Writes a copy of the file, of the kind `container`, that carries exactly this: what the encoder put there
/// of the same goes. What the file cannot hold (a profile for other colours than its own, a block too large)
/// is left out and added to lost. False when the file cannot be read or the copy not be written.
bool WriteWithMetadata(const ByteSource& file, PictureContainer container, PhotoMetadata metadata,
                       const ByteSink& sink, std::vector<std::wstring>& lost);

}  // namespace skyvault
