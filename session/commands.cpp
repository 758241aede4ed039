#include "session/commands.h"

#include "session/layouts.h"
#include "session/modify_commands.h"

namespace skyvault {
namespace {

bool RunLayoutCommand(Session& session, std::uint16_t command) {
    if (const LayoutRow* layout = LayoutOfImportCommand(command)) {
        ImportCommand(session, layout->format);
    } else if (layout = LayoutOfExportCommand(command); layout != nullptr) {
        ExportCommand(session, layout->format);
    } else if (layout = LayoutOfViewCommand(command); layout != nullptr) {
        SetView(session, layout->format);
    } else {
        return false;
    }
    return true;
}

}  // namespace

bool RunCommand(Session& session, std::uint16_t command) {
    switch (command) {
        case kCommandHeadingLeft:
            RotateStep(session, -1, 0, 0);
            return true;
        case kCommandHeadingRight:
            RotateStep(session, +1, 0, 0);
            return true;
        case kCommandPitchUp:
            RotateStep(session, 0, -1, 0);
            return true;
        case kCommandPitchDown:
            RotateStep(session, 0, +1, 0);
            return true;
        case kCommandRollClockwise:
            RotateStep(session, 0, 0, +1);
            return true;
        case kCommandRollCounterclockwise:
            RotateStep(session, 0, 0, -1);
            return true;
        case kCommandHorizonUp:
            HorizonCommand(session, +1);
            return true;
        case kCommandHorizonDown:
            HorizonCommand(session, -1);
            return true;
        case kCommandBiggerLogo:
            LogoCommand(session, +1);
            return true;
        case kCommandSmallerLogo:
            LogoCommand(session, -1);
            return true;
        case kCommandFlipHorizontal:
            ToggleModification(session, &Modifications::flipHorizontal);
            return true;
        case kCommandMirrorTopToBottom:
            ToggleModification(session, &Modifications::mirrorTopToBottom);
            return true;
        case kCommandMirrorFrontToBack:
            ToggleModification(session, &Modifications::mirrorFrontToBack);
            return true;
        case kCommandResetAll:
            ResetAllModifications(session);
            return true;
        case kCommandBiggerFov:
            ScalePreviewFov(session, kBiggerFov);
            return true;
        case kCommandSmallerFov:
            ScalePreviewFov(session, kSmallerFov);
            return true;
        case kCommandCrosshair:
            ToggleCrosshair(session);
            return true;
        case kCommandMagnifyingGlass:
            ToggleMagnifyingGlass(session);
            return true;
        default:
            return RunLayoutCommand(session, command);
    }
}

}  // namespace skyvault
