// The current panorama: an equirectangular picture, or six cube faces.
#pragma once

#include <string>
#include <vector>

#include "codecs/photo_metadata.h"
#include "image/image.h"
#include "platform/outcome.h"
#include "projection/cube_face.h"
#include "projection/modifications.h"
#include "settings/app_state.h"

namespace skyvault {

/// Plain data, to be filled by an import (session/conversion.h) or by hand.
struct Panorama {
    /// Neither an equirectangular source nor any valid face.
    bool IsEmpty() const;

    std::wstring path;  ///< the first source path, for the window title
    std::uint32_t faceSize = 0;
    CubeFaces faces;                    ///< all of one size and format, or some of them invalid
    Image equirectSource;               ///< when valid, every sample reads it and never the faces
    Image logoPicture;                  ///< what the logo disc shows; invalid: one colour (LoadLogo)
    std::vector<Outcome> faceFailures;  ///< of single files that could not be read, each naming its file
    std::wstring missingLogo;           ///< the logo's path when it could not be read
    Image resultPicture;                ///< the last layout built, for a file or for the window
    Modifications modifications;
    PhotoMetadata metadata;  ///< what the first of its photos carried; exports carry it on
    bool sphereTags = true;  ///< equirectangular exports carry the panorama properties
};

/// The format files are written in: the source's own, else the front face's, else None.
PixelFormat SourceFormat(const Panorama& panorama);

/// Sees to it that logoPicture is what the settings name before something is rendered: loaded once, while the
/// panorama has a logo disc. CannotOpen when the file cannot be read; the disc is then of one colour. That is
/// tried, and told, once for a path.
Outcome LoadLogo(Panorama& panorama, const ExportSettings& settings);

/// What an export shows where the panorama is not, and a logo disc without a picture: the background colour,
/// transparent with "Transparency".
Color8 EmptyColour(const ExportSettings& settings);

}  // namespace skyvault
