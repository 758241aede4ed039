// The running program's state: settings, the current panorama and the preview camera.
#pragma once

#include <memory>
#include <string>

#include "projection/panorama.h"
#include "session/history.h"
#include "session/host.h"
#include "settings/app_state.h"

namespace skyvault {

struct Session {
    AppState& settings;
    Host& host;
    std::unique_ptr<Panorama> panorama = nullptr;  ///< none until the first import
    Camera previewCamera = {};
    History history = {};                                         ///< of the panorama's modifications
    PanoramaFormat lastExport = PanoramaFormat::Equirectangular;  ///< what "Export again" exports
    std::wstring title = L"Skyvault";                             ///< what the title bar says now
};

}  // namespace skyvault
