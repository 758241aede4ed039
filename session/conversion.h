// Panoramas in and out: what the window, the console and batches do with a layout's row.
#pragma once

#include <string>
#include <vector>

#include "session/layouts.h"
#include "settings/app_state.h"

namespace skyvault {

/// Fills an empty panorama from its files: one path (a generator's palette or texture picture), or six for
/// single files. A DDS file says itself whether it is a cube map, whatever it was picked as; a correction is
/// told. A failure names the file and leaves the panorama empty or partly filled.
Outcome ImportPanorama(const LayoutRow& layout, const std::vector<std::wstring>& paths,
                       const AppState& settings, Feedback& feedback, Panorama& panorama);

/// What is to be said of a panorama that was imported all the same, a line each: faces that are not there or
/// of another size, metadata that cannot be carried, a photo that is not all of the sphere.
std::vector<std::wstring> ImportTroubles(const Panorama& panorama, const LayoutRow& layout,
                                         const std::vector<std::wstring>& paths);

/// Writes the panorama in a layout. The outcome describes what was written; resultPicture is what was
/// rendered. A logo that cannot be read is a failure the first time; an export after it shows the disc
/// without.
Outcome ExportPanorama(const LayoutRow& layout, const std::wstring& path, const Camera& camera,
                       const ExportSettings& settings, Feedback& feedback, Panorama& panorama);

/// Renders a view of the panorama into its resultPicture, as large as the client area has room for. The logo
/// is to be there already (LoadLogo).
Outcome RenderView(const LayoutRow& layout, const ClientSize& client, const Camera& camera,
                   const ExportSettings& settings, Feedback& feedback, Panorama& panorama);

/// One panorama from its files into another file: an import and an export without a window.
struct Conversion {
    const LayoutRow* from = nullptr;    ///< an import or a generator
    std::vector<std::wstring> sources;  ///< six for single files, else one
    const LayoutRow* to = nullptr;
    std::wstring output;  ///< single files make their six names of it
    Modifications modifications;
    Camera camera;
    bool stripMetadata = false;  ///< the output carries the colour profile alone
};

struct ConversionResult {
    Outcome outcome;
    std::vector<std::wstring>
        troubles;  ///< what is to be said all the same (ImportTroubles, MetadataTroubles)
};

/// Reads and writes; a failure of either ends it, and so does a generator's picture that cannot be read.
ConversionResult ConvertPanorama(const Conversion& conversion, const AppState& settings, Feedback& feedback);

}  // namespace skyvault
