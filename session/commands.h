// The commands of the menu and the keys, without a window: what each does to the session.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "session/layouts.h"
#include "session/session.h"

namespace skyvault {

/// Runs the menu command (resources/resource_ids.h); false when it is none of the session's (exit, dialogs,
/// help: the window's own).
bool RunCommand(Session& session, std::uint16_t command);

/// False for commands that can do nothing now: exports and modifications without a photo, Undo and Redo
/// without a step. Their menu items are greyed.
bool IsAvailable(const Session& session, std::uint16_t command);

/// Asks for the source files and makes them the current panorama, in place of the old one even when they
/// could not be read. Generators ask for their palette or texture picture.
void ImportCommand(Session& session, const LayoutRow& layout);

/// Makes the files the current panorama: what ImportCommand does with the chosen ones. One path, or the six
/// of single files, the first of them not empty.
void ImportFiles(Session& session, const std::vector<std::wstring>& paths, const LayoutRow& layout);

/// Asks for the destination and writes the current panorama there; the view becomes the written layout.
void ExportCommand(Session& session, const LayoutRow& layout);

/// The view becomes the layout, check marks and picture follow.
void SetView(Session& session, const LayoutRow& layout);

/// One step of the unit vector (heading, pitch, roll): turns the preview camera in the Preview view, the
/// panorama in every other. Reads the modifier keys.
void RotateStep(Session& session, float heading, float pitch, float roll);
void HorizonCommand(Session& session, int sign);
void LogoCommand(Session& session, int sign);
/// One of the three flags of Modifications.
void ToggleModification(Session& session, bool Modifications::*flag);
void ResetAllModifications(Session& session);
/// Takes back the last change of the modifications, and makes it again. One held key, until EndStep of
/// session/history.h, is one change; an import begins anew.
void UndoCommand(Session& session);
void RedoCommand(Session& session);
/// "Bigger FOV" and "Smaller FOV".
inline constexpr float kBiggerFov = 0.95f, kSmallerFov = 1.05f;
void ScalePreviewFov(Session& session, float factor);
void ToggleCrosshair(Session& session);
void ToggleMagnifyingGlass(Session& session);

/// After the options dialog: the logo is read anew when next needed.
void ApplyOptions(Session& session);

/// Builds the current view anew and sets the title. Does nothing without a panorama or while nothing can be
/// shown.
void Refresh(Session& session);

/// "Skyvault", and with a panorama its file name, size and pixel format.
std::wstring WindowTitle(const Session& session);

struct MenuCheck {
    std::uint16_t command;
    bool checked;
};
/// Every menu item that carries a check mark, and whether it does now.
std::vector<MenuCheck> MenuChecks(const Session& session);

}  // namespace skyvault
