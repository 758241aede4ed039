// The current panorama: an equirectangular picture, or six cube faces.
#pragma once

#include <string>

#include "image/image.h"
#include "platform/feedback.h"
#include "projection/cube_face.h"
#include "projection/modifications.h"
#include "projection/view_target.h"
#include "settings/app_state.h"
#include "settings/panorama_format.h"

namespace skyvault {

struct Panorama {
    /// An empty panorama, to be filled by an import (session/import_panorama.h) or by hand. The references
    /// are kept; viewTarget may be null, then nothing can be shown.
    Panorama(Feedback& feedback, const AppState& settings, ViewTarget* viewTarget);

    Panorama(const Panorama&) = delete;
    Panorama& operator=(const Panorama&) = delete;

    /// Neither an equirectangular source nor any valid face.
    bool IsEmpty() const;

    Feedback& feedback;
    const AppState& settings;
    ViewTarget* viewTarget;

    std::wstring path;  ///< the first source path, for the window title
    std::uint32_t faceSize = 0;
    CubeFaces faces;       ///< all of one size and format, or some of them invalid
    Image equirectSource;  ///< when valid, every sample reads it and never the faces
    Image logoPicture;     ///< loaded from settings.logo on first use
    Image resultPicture;   ///< the last layout built, for a file or for the window
    Modifications modifications;
    bool paletteMissing = false;  ///< a generator did without its palette or texture picture
};

/// Format in which exports and views are built. For the screen: Rgba8 with "Transparency", else Rgb8. For
/// a file: the source's own, else the Front face's, else None.
PixelFormat ExportPixelFormat(const Panorama& panorama, bool forScreen);

/// Makes sure the logo is loaded when the settings name one; true when there is a logo picture.
bool LoadLogo(Panorama& panorama);

/// What an export shows where the panorama is not: the background colour, transparent with "Transparency".
Color8 EmptyColour(const AppState& settings);

/// Shows resultPicture in the view target; false without one.
bool ShowResult(Panorama& panorama);

/// The end of every export of one picture: writes resultPicture to `path`, or shows it when path is empty.
/// infoLog receives the description of the written file.
bool DeliverResult(Panorama& panorama, const std::wstring& path, std::wstring& infoLog);

}  // namespace skyvault
