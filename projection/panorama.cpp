#include "projection/panorama.h"

#include "codecs/picture_files.h"

namespace skyvault {

bool Panorama::IsEmpty() const {
    if (equirectSource.IsValid()) return false;
    for (const Image& face : faces) {
        if (face.IsValid()) return false;
    }
    return true;
}

PixelFormat SourceFormat(const Panorama& panorama) {
    if (panorama.equirectSource.IsValid()) return panorama.equirectSource.format;
    const Image& front = panorama.faces[0];
    return front.IsValid() ? front.format : PixelFormat::None;
}

Outcome LoadLogo(Panorama& panorama, const ExportSettings& settings) {
    if (settings.logo.empty()) panorama.logoPicture.Clear();
    const bool wanted = panorama.modifications.logoSize != 0.0f && !settings.logo.empty();
    if (!wanted || panorama.logoPicture.IsValid() || panorama.missingLogo == settings.logo) return {};
    Outcome loaded = LoadPicture(settings.logo, panorama.logoPicture);
    panorama.missingLogo = loaded.IsDone() ? std::wstring() : settings.logo;
    return loaded;
}

Color8 EmptyColour(const ExportSettings& settings) {
    Color8 colour = settings.backgroundColour;
    colour.alpha = settings.transparency ? 0 : 255;
    return colour;
}

}  // namespace skyvault
