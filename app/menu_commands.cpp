#include "app/menu_commands.h"

#include "app/about_box.h"
#include "app/batch_dialog.h"
#include "app/help_pages.h"
#include "app/options_dialog.h"
#include "session/commands.h"
#include "session/layouts.h"

namespace skyvault {
namespace {

struct ViewKey {
    WORD key;
    PanoramaFormat view;
};
constexpr ViewKey kViewKeys[] = {
    {VK_F1, PanoramaFormat::Equirectangular}, {VK_F2, PanoramaFormat::HorizontalCross},
    {VK_F3, PanoramaFormat::VerticalCross},   {VK_F4, PanoramaFormat::Strip},
    {VK_F5, PanoramaFormat::StripXyz},        {VK_F6, PanoramaFormat::SingleFiles},
    {VK_F7, PanoramaFormat::SphereMap},       {VK_F8, PanoramaFormat::MirrorBall},
    {VK_F9, PanoramaFormat::Heart},           {VK_F11, PanoramaFormat::Preview},
    {VK_SPACE, PanoramaFormat::Preview},
};

struct CommandKey {
    WORD key;
    MenuCommand command;
};
/// Plus and minus are the number pad's only.
constexpr CommandKey kCommandKeys[] = {
    {VK_TAB, kCommandCrosshair},
    {VK_LEFT, kCommandHeadingLeft},
    {VK_RIGHT, kCommandHeadingRight},
    {VK_UP, kCommandPitchUp},
    {VK_DOWN, kCommandPitchDown},
    {VK_PRIOR, kCommandRollClockwise},
    {VK_NEXT, kCommandRollCounterclockwise},
    {VK_HOME, kCommandHorizonUp},
    {VK_END, kCommandHorizonDown},
    {VK_INSERT, kCommandBiggerLogo},
    {VK_DELETE, kCommandSmallerLogo},
    {VK_ADD, kCommandBiggerFov},
    {VK_SUBTRACT, kCommandSmallerFov},
};

}  // namespace

std::uint16_t CommandOfKey(WPARAM virtualKey) {
    for (const ViewKey& row : kViewKeys) {
        if (row.key != virtualKey) continue;
        const LayoutRow* const layout = FindLayout(row.view);
        return layout == nullptr ? std::uint16_t{0} : layout->viewCommand;
    }
    for (const CommandKey& row : kCommandKeys) {
        if (row.key == virtualKey) return row.command;
    }
    return 0;
}

std::uint16_t CommandOfCharacter(WPARAM character) {
    return character == L'M' || character == L'm' ? std::uint16_t{kCommandMagnifyingGlass} : std::uint16_t{0};
}

void RunMenuCommand(HWND window, HINSTANCE instance, Session& session, const FileDialogs& fileDialogs,
                    std::uint16_t command) {
    if (RunCommand(session, command)) return;
    switch (command) {
        case kCommandExit:
            DestroyWindow(window);
            break;
        case kCommandAbout:
            ShowAboutBox(instance, window);
            break;
        case kCommandUserGuide:
            OpenHelpPage(window, HelpPage::UserGuide);
            break;
        case kCommandCommunity:
            OpenHelpPage(window, HelpPage::Community);
            break;
        case kCommandOptions:
            if (ShowOptionsDialog(instance, window, session.settings, fileDialogs) == IDOK)
                ApplyOptions(session);
            // "Reset all" also sets what has check marks in the menu, and stands after Cancel too.
            session.host.UpdateMenuChecks();
            break;
        case kCommandBatch:
            ShowBatchDialog(instance, window, session.settings);
            break;
        default:
            break;
    }
}

}  // namespace skyvault
