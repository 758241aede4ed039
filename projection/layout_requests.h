// What imports and exports are asked for. Every layout and generator is up to three functions of these types;
// session/layouts.h lists them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "codecs/xmp_packet.h"
#include "platform/feedback.h"
#include "platform/outcome.h"
#include "projection/panorama.h"
#include "settings/panorama_format.h"

namespace skyvault {

/// The perspective view's angles in radians.
struct Camera {
    float heading = 0, pitch = 0, roll = 0;
};

/// Pixels.
struct ClientSize {
    std::int32_t width = 0, height = 0;
};

struct ImportRequest {
    PanoramaFormat format = PanoramaFormat::Equirectangular;
    std::vector<std::wstring> paths;  ///< six for single files, some perhaps empty; else one
    const ExportSettings& settings;
    const GeneratorSettings& generator;

    const std::wstring& Path() const { return paths.front(); }
};

/// Fills an empty panorama. What fails may leave part of it filled.
using LayoutImport = Outcome (*)(const ImportRequest& request, Feedback& feedback, Panorama& panorama);

/// A panorama is exported to a file, or rendered for a view.
struct ExportRequest {
    PanoramaFormat format = PanoramaFormat::Equirectangular;
    const ExportSettings& settings;
    Camera camera = {};                     ///< only the preview looks through it
    std::wstring path = {};                 ///< of the file
    std::optional<ClientSize> client = {};  ///< of a view: the room there is for the picture

    /// The panorama properties of an equirectangular file, or null.
    const SphereTags* sphere = nullptr;

    bool IsView() const { return client.has_value(); }
};

/// Renders the panorama as it is turned now into `result`, whose memory is used again where it fits; or, for
/// layouts that are more than a picture, writes the file itself. Information about sizes and the progress of
/// files goes to the feedback.
using LayoutExport = Outcome (*)(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                                 Image& result);

/// The files that an export to the path writes.
using LayoutFiles = std::vector<std::wstring> (*)(const std::wstring& path, const ExportSettings& settings);

/// The pixel format of what the request asks for: for a view Rgba8 with "Transparency", else Rgb8; for a file
/// the panorama's own. Fails with NothingToShow for an empty panorama or a view without room, with
/// NoFrontFace where a file would have no format.
Outcome FormatOfExport(const Panorama& panorama, const ExportRequest& request, PixelFormat& format);

}  // namespace skyvault
