// The commands of the menu and the keys, without a window: what each does to the session.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "session/session.h"

namespace skyvault {

/// Menu ids of the commands that are not a layout's import, export or view.
enum MenuCommand : std::uint16_t {
    kCommandAbout = 104,
    kCommandExit = 105,
    kCommandUserGuide = 32818,
    kCommandBatch = 32820,
    kCommandCommunity = 32846,
    kCommandOptions = 32847,
    kCommandMirrorFrontToBack = 32849,
    kCommandMirrorTopToBottom = 32851,
    kCommandHeadingLeft = 32860,
    kCommandHeadingRight = 32861,
    kCommandPitchUp = 32862,
    kCommandPitchDown = 32863,
    kCommandRollClockwise = 32865,
    kCommandRollCounterclockwise = 32866,
    kCommandHorizonUp = 32872,
    kCommandHorizonDown = 32873,
    kCommandCrosshair = 32889,
    kCommandBiggerFov = 32890,
    kCommandSmallerFov = 32891,
    kCommandResetAll = 32897,
    kCommandBiggerLogo = 32901,
    kCommandSmallerLogo = 32902,
    kCommandMagnifyingGlass = 32903,
    kCommandFlipHorizontal = 32905,
};

/// Runs the menu command; false when it is none of the session's (exit, dialogs, help: the window's own).
bool RunCommand(Session& session, std::uint16_t command);

/// Asks for the source files and makes them the current panorama, in place of the old one even when they
/// could not be read. Generators ask for their palette or texture picture.
void ImportCommand(Session& session, PanoramaFormat format);

/// Makes the files the current panorama: what ImportCommand does with the chosen ones. One path, or the six
/// of single files, the first of them not empty.
void ImportFiles(Session& session, const std::vector<std::wstring>& paths, PanoramaFormat format);

/// Asks for the destination and writes the current panorama there; the view becomes the written layout.
void ExportCommand(Session& session, PanoramaFormat format);

/// The view becomes the layout, check marks and picture follow.
void SetView(Session& session, PanoramaFormat view);

/// One step of the unit vector (heading, pitch, roll): turns the preview camera in the Preview view, the
/// panorama in every other. Reads the modifier keys.
void RotateStep(Session& session, float heading, float pitch, float roll);
void HorizonCommand(Session& session, int sign);
void LogoCommand(Session& session, int sign);
/// "Bigger FOV" and "Smaller FOV".
inline constexpr float kBiggerFov = 0.95f, kSmallerFov = 1.05f;
void ScalePreviewFov(Session& session, float factor);
void ToggleCrosshair(Session& session);
void ToggleMagnifyingGlass(Session& session);

/// After the options dialog was closed with OK: the logo is read anew when next needed.
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
