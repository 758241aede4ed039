#include "app/program.h"

#include <commctrl.h>
#include <objbase.h>

#include <new>

#include "app/main_window.h"
#include "app/window_helpers.h"
#include "app/window_host.h"
#include "platform/files.h"
#include "session/commands.h"
#include "session/messages.h"
#include "settings/settings_file.h"

namespace skyvault {
namespace {

using Paths = std::vector<std::wstring>;

class ComApartment {
  public:
    ComApartment() : initialised_(SUCCEEDED(CoInitialize(nullptr))) {}
    ~ComApartment() {
        if (initialised_) CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    bool IsInitialised() const { return initialised_; }

  private:
    bool initialised_;
};

int RunMessageLoop() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

/// From the codecs to the released canvas: everything that needs COM.
int RunWithCom(Session& session, WindowHost& host, MainWindow& window, const Paths& files) {
    const ComApartment com;
    if (!com.IsInitialised() || !host.BuildFileFilters()) return 0;
    host.UpdateMenuChecks();
    if (!files.empty()) window.OpenFiles(files);
    const int result = RunMessageLoop();
    session.panorama.reset();
    host.ReleaseCanvas();
    return result;
}

int Run(HINSTANCE instance, int showCommand, const Paths& files) {
    // The progress box paints itself while a long command runs; without this the system would lay a
    // picture of the window as "not responding" over it after five seconds.
    DisableProcessWindowsGhosting();
    const INITCOMMONCONTROLSEX controls{sizeof controls,
                                        ICC_STANDARD_CLASSES | ICC_PROGRESS_CLASS | ICC_BAR_CLASSES};
    InitCommonControlsEx(&controls);

    const MainWindowClass windowClass(instance);
    AppState settings = DefaultSettingsOfScreen();
    LoadSettings(settings, SettingsPath(ProgramFolder()), VirtualScreen());
    FollowOwnLogo(settings, ProgramFolder());

    WindowHost host(settings);
    Session session{settings, host};
    MainWindow window(instance, session, host);
    if (!window.Create()) return 0;
    host.SetSession(&session);
    ShowWindow(window.Handle(), showCommand);
    UpdateWindow(window.Handle());
    host.SetUpProgress(instance);

    const int result = RunWithCom(session, host, window, files);
    const std::wstring trouble = MessageOf(SaveSettings(settings, SettingsPath(ProgramFolder())));
    if (!trouble.empty()) host.Error(trouble);
    return result;
}

}  // namespace

int RunSkyvault(HINSTANCE instance, int showCommand, const Paths& files) {
    try {
        return Run(instance, showCommand, files);
    } catch (const std::bad_alloc&) {
        ShowMessage(L"Out of memory", true);
        return 0;
    }
}

}  // namespace skyvault
