#include "projection/panorama.h"

#include "image/picture_files.h"

namespace skyvault {

Panorama::Panorama(Feedback& theFeedback, const AppState& theSettings, ViewTarget* theViewTarget)
    : feedback(theFeedback), settings(theSettings), viewTarget(theViewTarget) {}

bool Panorama::IsEmpty() const {
    if (equirectSource.IsValid()) return false;
    for (const Image& face : faces) {
        if (face.IsValid()) return false;
    }
    return true;
}

PixelFormat ExportPixelFormat(const Panorama& panorama, bool forScreen) {
    if (forScreen) return panorama.settings.transparency ? PixelFormat::Rgba8 : PixelFormat::Rgb8;
    if (panorama.equirectSource.IsValid()) return panorama.equirectSource.format;
    const Image& front = panorama.faces[0];
    return front.IsValid() ? front.format : PixelFormat::None;
}

bool LoadLogo(Panorama& panorama) {
    if (panorama.settings.logo.empty()) return false;
    if (!panorama.logoPicture.IsValid()) panorama.logoPicture = LoadPicture(panorama.settings.logo);
    return panorama.logoPicture.IsValid();
}

Color8 EmptyColour(const AppState& settings) {
    Color8 colour = settings.backgroundColour;
    colour.alpha = settings.transparency ? 0 : 255;
    return colour;
}

bool ShowResult(Panorama& panorama) {
    return panorama.viewTarget && panorama.viewTarget->Show(panorama.resultPicture);
}

bool DeliverResult(Panorama& panorama, const std::wstring& path, std::wstring& infoLog) {
    if (path.empty()) return ShowResult(panorama);
    return SavePicture(panorama.resultPicture, path, PixelFormat::None, &infoLog, true);
}

}  // namespace skyvault
