#include "app/menu_commands.h"

#include "app/batch_dialog.h"
#include "app/copy_picture.h"
#include "app/help_menu.h"
#include "app/options_dialog.h"
#include "resources/resource_ids.h"
#include "session/commands.h"
#include "session/layouts.h"

namespace skyvault {
namespace {

struct CommandKey {
    WORD key;
    std::uint16_t command;
};
/// Beside the function keys of the views (LayoutRow::functionKey). Plus and minus are the number pad's only.
constexpr CommandKey kCommandKeys[] = {
    {VK_SPACE, IDM_VIEW_PREVIEW},   {VK_TAB, IDM_CROSSHAIR},
    {VK_LEFT, IDM_HEADING_LEFT},    {VK_RIGHT, IDM_HEADING_RIGHT},
    {VK_UP, IDM_PITCH_UP},          {VK_DOWN, IDM_PITCH_DOWN},
    {VK_PRIOR, IDM_ROLL_CLOCKWISE}, {VK_NEXT, IDM_ROLL_COUNTERCLOCKWISE},
    {VK_HOME, IDM_HORIZON_UP},      {VK_END, IDM_HORIZON_DOWN},
    {VK_INSERT, IDM_BIGGER_LOGO},   {VK_DELETE, IDM_SMALLER_LOGO},
    {VK_ADD, IDM_BIGGER_FOV},       {VK_SUBTRACT, IDM_SMALLER_FOV},
    {VK_F12, IDM_FULL_SCREEN},
};
/// Only with Ctrl held, which makes no difference to the others but the size of their step.
constexpr CommandKey kControlKeys[] = {
    {'Z', IDM_UNDO}, {'Y', IDM_REDO}, {'S', IDM_EXPORT_AGAIN}, {'C', IDM_COPY_VIEW}};

template <std::size_t count>
std::uint16_t Find(const CommandKey (&rows)[count], WPARAM virtualKey) {
    for (const CommandKey& row : rows) {
        if (row.key == virtualKey) return row.command;
    }
    return 0;
}

}  // namespace

std::uint16_t CommandOfKey(WPARAM virtualKey, bool controlHeld) {
    const int functionKey =
        virtualKey >= VK_F1 && virtualKey <= VK_F12 ? static_cast<int>(virtualKey - VK_F1) + 1 : 0;
    if (const LayoutRow* const view = LayoutOfFunctionKey(functionKey)) return view->viewCommand;
    const std::uint16_t command = Find(kCommandKeys, virtualKey);
    return command == 0 && controlHeld ? Find(kControlKeys, virtualKey) : command;
}

std::uint16_t CommandOfCharacter(WPARAM character) {
    return character == L'M' || character == L'm' ? IDM_MAGNIFYING_GLASS : 0;
}

void RunMenuCommand(HWND window, HINSTANCE instance, Session& session, const FileDialogs& fileDialogs,
                    std::uint16_t command) {
    if (RunCommand(session, command)) return;
    switch (command) {
        case IDM_EXIT:
            DestroyWindow(window);
            break;
        case IDM_ABOUT:
            ShowAboutBox(instance, window);
            break;
        case IDM_USER_GUIDE:
            OpenHelpPage(window, HelpPage::UserGuide);
            break;
        case IDM_COMMUNITY:
            OpenHelpPage(window, HelpPage::Community);
            break;
        case IDM_OPTIONS:
            ShowOptionsDialog(instance, window, session.settings, fileDialogs);
            // Also after Cancel: "Reset all" and a chosen colour stand, and the former sets what has check
            // marks.
            ApplyOptions(session);
            session.host.UpdateMenuChecks();
            break;
        case IDM_COPY_VIEW:
            if (session.panorama && !CopyPicture(window, session.panorama->resultPicture)) {
                session.host.Error(L"The view could not be copied.");
            }
            break;
        case IDM_BATCH:
            ShowBatchDialog(instance, window, session.settings);
            break;
        default:
            break;
    }
}

}  // namespace skyvault
