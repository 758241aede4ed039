#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/screen_picture.h"
#include "app/window_host.h"
#include "bench/window/window_bench.h"
#include "platform/files.h"
#include "resources/resource_ids.h"
#include "session/commands.h"
#include "tests/test_panorama.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

template <typename Work>
double TimeOf(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

std::string LeastAndMedian(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    char text[40];
    std::snprintf(text, sizeof text, "%6.1f %6.1f", times.front(), times[times.size() / 2]);
    return text;
}

/// The window, with a clock before it.
class TimedHost final : public Host {
  public:
    explicit TimedHost(WindowHost& host) : host_(host) {}
    bool Show(const Image& picture) override {
        bool shown = false;
        lastShow = TimeOf([&] { shown = host_.Show(picture); });
        return shown;
    }
    double lastShow = 0;

    ClientSize Size() const override { return host_.Size(); }
    bool CanShow() const override { return host_.CanShow(); }
    void Information(const std::wstring& text) override { host_.Information(text); }
    void Error(const std::wstring& text) override { host_.Error(text); }
    void BeginProgress() override {}
    void SetProgress(float, std::wstring_view) override {}
    void ResetProgress() override {}
    void EndProgress() override {}
    bool ProgressActive() const override { return false; }
    std::wstring AskForFile(FileDialogKind, const std::wstring&, const std::wstring&) override { return {}; }
    StepSize ModifierKeys() const override { return StepSize::Plain; }
    void SetTitle(const std::wstring&) override {}
    void UpdateMenuChecks() override {}

  private:
    WindowHost& host_;
};

void PrintKeyPresses(Session& session, const TimedHost& target, PanoramaFormat view, const char* name,
                     int repetitions) {
    session.settings.view = static_cast<std::int32_t>(view);
    RunCommand(session, IDM_HEADING_LEFT);
    std::vector<double> drawing, showing, converting;
    Image shown;
    for (int i = 0; i < repetitions; ++i) {
        const double all = TimeOf([&] { RunCommand(session, i % 2 != 0 ? IDM_HEADING_LEFT : IDM_PITCH_UP); });
        drawing.push_back(all - target.lastShow);
        showing.push_back(target.lastShow);
        converting.push_back(TimeOf([&] { ToScreenPicture(session.panorama->resultPicture, 16384, shown); }));
    }
    const Image& picture = session.panorama->resultPicture;
    std::printf("%-18s %4u x %4u: drawn %s   to the screen %s   of that converted %s\n", name, picture.width,
                picture.height, LeastAndMedian(drawing).c_str(), LeastAndMedian(showing).c_str(),
                LeastAndMedian(converting).c_str());
}

void KeyPresses(int width, int repetitions) {
    // Of exactly this client size, larger than the screen if need be.
    const HWND window = CreateWindowExW(0, L"STATIC", L"Latency", WS_POPUP | WS_VISIBLE, 0, 0, width,
                                        width / 2, nullptr, nullptr, nullptr, nullptr);
    AppState settings = DefaultAppState();
    settings.logo.clear();
    WindowHost host(settings);
    host.SetWindow(window);
    TimedHost target(host);
    Session session{settings, target};
    session.panorama = std::make_unique<Panorama>();
    session.panorama->equirectSource = RandomImage(8192, 4096, PixelFormat::Rgb8);
    PrintKeyPresses(session, target, PanoramaFormat::Preview, "perspective", repetitions);
    PrintKeyPresses(session, target, PanoramaFormat::Equirectangular, "equirectangular", repetitions);
    PrintKeyPresses(session, target, PanoramaFormat::HorizontalCross, "cross", repetitions);
    PrintKeyPresses(session, target, PanoramaFormat::SphereMap, "sphere map", repetitions);
    host.ReleaseCanvas();
    DrawCanvas canvas(window);
    std::vector<double> empty;
    for (int i = 0; i <= repetitions; ++i) {
        empty.push_back(TimeOf([&] {
            canvas.BeginDraw();
            canvas.Clear(kBackground);
            canvas.EndDraw();
        }));
    }
    std::printf("an empty frame     %4d x %4d: %s\n", width, width / 2, LeastAndMedian(empty).c_str());
    canvas.Release();
    DestroyWindow(window);
}

}  // namespace

bool Latency(int repetitions) {
    std::printf("least and median of %d, in milliseconds; source 8192 x 4096\n", repetitions);
    for (const int width : {1920, 3840}) KeyPresses(width, repetitions);
    // From the start of the program file until its window is there, and until it answers: then it has
    // painted.
    std::vector<double> visible, answering;
    for (int i = 0; i < repetitions; ++i) {
        STARTUPINFOW start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION process{};
        std::wstring path = ProgramFolder() + L"\\Skyvault.exe";
        HWND window = nullptr;
        const double there = TimeOf([&] {
            if (CreateProcessW(path.c_str(), path.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &start, &process)) {
                window = WaitForWindow(L"Skyvault", process.dwProcessId);
            }
        });
        if (window == nullptr) return false;
        visible.push_back(there);
        DWORD_PTR answer = 0;
        answering.push_back(there + TimeOf([&] {
                                SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &answer);
                            }));
        TerminateProcess(process.hProcess, 72);
        WaitForSingleObject(process.hProcess, kPatience);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    std::printf("start: window there %s   answering %s\n", LeastAndMedian(visible).c_str(),
                LeastAndMedian(answering).c_str());
    return true;
}

}  // namespace skyvault::test
