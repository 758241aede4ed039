// One panorama from its files into another file: an import and an export without a window.
#pragma once

#include <string>
#include <vector>

#include "platform/feedback.h"
#include "projection/cube_face.h"
#include "session/layouts.h"

namespace skyvault {

struct Conversion {
    const LayoutRow* from = nullptr;    ///< an import or a generator
    std::vector<std::wstring> sources;  ///< six for single files, else one
    const LayoutRow* to = nullptr;
    std::wstring output;  ///< single files make their six names of it
    Modifications modifications;
    Camera camera;  ///< radians; only the preview looks through it
};

struct ConversionResult {
    bool done = false;
    std::wstring reason;   ///< of a failure: one message that names the file
    std::wstring infoLog;  ///< describes what was written
    /// Single files that were named and could not be read; their faces are white.
    std::vector<CubeFace> missingFaces;
};

/// Reads and writes; an error of either ends it, and so does a generator's picture that cannot be read. The
/// feedback hears of everything but errors: their first is the reason.
ConversionResult ConvertPanorama(const Conversion& conversion, const AppState& settings, Feedback& feedback);

}  // namespace skyvault
