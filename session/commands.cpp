#include "session/commands.h"

#include "resources/resource_ids.h"
#include "session/layouts.h"

namespace skyvault {
namespace {

bool RunLayoutCommand(Session& session, std::uint16_t command) {
    if (const LayoutRow* layout = LayoutOfImportCommand(command)) {
        ImportCommand(session, *layout);
    } else if (layout = LayoutOfExportCommand(command); layout != nullptr) {
        ExportCommand(session, *layout);
    } else if (layout = LayoutOfViewCommand(command); layout != nullptr) {
        SetView(session, *layout);
    } else {
        return false;
    }
    return true;
}

}  // namespace

bool RunCommand(Session& session, std::uint16_t command) {
    switch (command) {
        case IDM_HEADING_LEFT:
            RotateStep(session, -1, 0, 0);
            return true;
        case IDM_HEADING_RIGHT:
            RotateStep(session, +1, 0, 0);
            return true;
        case IDM_PITCH_UP:
            RotateStep(session, 0, -1, 0);
            return true;
        case IDM_PITCH_DOWN:
            RotateStep(session, 0, +1, 0);
            return true;
        case IDM_ROLL_CLOCKWISE:
            RotateStep(session, 0, 0, +1);
            return true;
        case IDM_ROLL_COUNTERCLOCKWISE:
            RotateStep(session, 0, 0, -1);
            return true;
        case IDM_HORIZON_UP:
            HorizonCommand(session, +1);
            return true;
        case IDM_HORIZON_DOWN:
            HorizonCommand(session, -1);
            return true;
        case IDM_BIGGER_LOGO:
            LogoCommand(session, +1);
            return true;
        case IDM_SMALLER_LOGO:
            LogoCommand(session, -1);
            return true;
        case IDM_FLIP_HORIZONTAL:
            ToggleModification(session, &Modifications::flipHorizontal);
            return true;
        case IDM_MIRROR_TOP_TO_BOTTOM:
            ToggleModification(session, &Modifications::mirrorTopToBottom);
            return true;
        case IDM_MIRROR_FRONT_TO_BACK:
            ToggleModification(session, &Modifications::mirrorFrontToBack);
            return true;
        case IDM_RESET_ALL:
            ResetAllModifications(session);
            return true;
        case IDM_EXPORT_AGAIN:
            ExportCommand(session, *FindLayout(session.lastExport));
            return true;
        case IDM_UNDO:
            UndoCommand(session);
            return true;
        case IDM_REDO:
            RedoCommand(session);
            return true;
        case IDM_BIGGER_FOV:
            ScalePreviewFov(session, kBiggerFov);
            return true;
        case IDM_SMALLER_FOV:
            ScalePreviewFov(session, kSmallerFov);
            return true;
        case IDM_CROSSHAIR:
            ToggleCrosshair(session);
            return true;
        case IDM_MAGNIFYING_GLASS:
            ToggleMagnifyingGlass(session);
            return true;
        default:
            return RunLayoutCommand(session, command);
    }
}

bool IsAvailable(const Session& session, std::uint16_t command) {
    const bool hasPhoto = session.panorama && !session.panorama->IsEmpty();
    switch (command) {
        case IDM_UNDO:
            return hasPhoto && !session.history.undo.empty();
        case IDM_REDO:
            return hasPhoto && !session.history.redo.empty();
        case IDM_EXPORT_AGAIN:
        case IDM_COPY_VIEW:
        case IDM_HEADING_LEFT:
        case IDM_HEADING_RIGHT:
        case IDM_PITCH_UP:
        case IDM_PITCH_DOWN:
        case IDM_ROLL_CLOCKWISE:
        case IDM_ROLL_COUNTERCLOCKWISE:
        case IDM_HORIZON_UP:
        case IDM_HORIZON_DOWN:
        case IDM_BIGGER_LOGO:
        case IDM_SMALLER_LOGO:
        case IDM_FLIP_HORIZONTAL:
        case IDM_MIRROR_TOP_TO_BOTTOM:
        case IDM_MIRROR_FRONT_TO_BACK:
        case IDM_RESET_ALL:
            return hasPhoto;
        default:
            return hasPhoto || LayoutOfExportCommand(command) == nullptr;
    }
}

}  // namespace skyvault
