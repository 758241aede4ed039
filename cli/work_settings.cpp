#include "cli/work_settings.h"

#include "cli/console_feedback.h"
#include "codecs/picture_codec.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "settings/settings_file.h"

namespace skyvault {

bool LoadWorkSettings(const WorkOptions& options, AppState& settings) {
    settings = AppState{};
    settings.logo = DefaultLogo(ProgramFolder());
    if (!options.settingsFile.empty()) {
        LoadSettings(settings, options.settingsFile, {});
        if (!settings.settingsLoaded) return false;
        FollowOwnLogo(settings, ProgramFolder());
    }
    for (const auto& [setting, value] : options.settings) SetFromText(settings, *setting, value);
    settings.jpegQuality = options.quality;
    settings.ddsEncoding = options.dds;
    settings.ddsMips = options.mips;
    return true;
}

void WarnOfQuality(const WorkOptions& options) {
    if (options.quality == 0 || options.quiet || CanChooseQuality()) return;
    WriteMessage(L"--quality has no effect: this system's JPEG encoder knows a single quality");
}

Modifications ModificationsOf(const WorkOptions& options) {
    Modifications modifications;
    ResetModifications(modifications);
    for (const HeadingPitchRoll& turn : options.turns) {
        RotatePanorama(modifications, Radians(turn.heading), Radians(turn.pitch), Radians(turn.roll));
    }
    if (options.horizon) modifications.horizonPower = *options.horizon;
    if (options.logoSize) modifications.logoSize = *options.logoSize;
    modifications.flipHorizontal = options.flipHorizontal;
    modifications.mirrorTopToBottom = options.mirrorTopToBottom;
    modifications.mirrorFrontToBack = options.mirrorFrontToBack;
    return modifications;
}

float Radians(float degrees) {
    return static_cast<float>(static_cast<double>(degrees) * 0.017453292519943295);
}

}  // namespace skyvault
