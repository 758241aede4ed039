// What a key press costs until its picture is handed to the screen, and the program's start until its window
// is painted. Figures of this machine, not a test of anything: only with the environment variable
// SKYVAULT_LATENCY, whose value is the number of repetitions.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/draw_canvas.h"
#include "app/screen_picture.h"
#include "app/window_host.h"
#include "platform/files.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "tests/test_panorama.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

template <typename Work>
double TimeOf(const Work& work) {
    const Clock::time_point start = Clock::now();
    work();
    return Milliseconds(Clock::now() - start);
}

int Repetitions() {
    const char* const asked = std::getenv("SKYVAULT_LATENCY");
    return asked == nullptr ? 0 : std::max(std::atoi(asked), 1);
}

/// The least and the median.
std::string Text(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    char text[40];
    std::snprintf(text, sizeof text, "%6.1f %6.1f", times.front(), times[times.size() / 2]);
    return text;
}

/// The window, with a clock before it.
class TimedTarget final : public ViewTarget {
  public:
    explicit TimedTarget(WindowHost& host) : host_(host) {}
    ClientSize Size() const override { return host_.Size(); }
    bool Show(const Image& picture) override {
        bool shown = false;
        lastShow = TimeOf([&] { shown = host_.Show(picture); });
        return shown;
    }
    double lastShow = 0;

  private:
    WindowHost& host_;
};

/// A window of exactly this client size, larger than the screen if need be.
struct PlainWindow {
    HWND handle;
    PlainWindow(int width, int height)
        : handle(CreateWindowExW(0, L"STATIC", L"Latency", WS_POPUP | WS_VISIBLE, 0, 0, width, height,
                                 nullptr, nullptr, GetModuleHandleW(nullptr), nullptr)) {}
    ~PlainWindow() { DestroyWindow(handle); }
    PlainWindow(const PlainWindow&) = delete;
    PlainWindow& operator=(const PlainWindow&) = delete;
};

void PrintKeyPresses(Session& session, TimedTarget& target, PanoramaFormat view, const char* name,
                     int repetitions) {
    session.settings.view = static_cast<std::int32_t>(view);
    RunCommand(session, kCommandHeadingLeft);
    std::vector<double> drawing, showing, converting;
    Image shown;
    for (int i = 0; i < repetitions; ++i) {
        const double all =
            TimeOf([&] { RunCommand(session, i % 2 != 0 ? kCommandHeadingLeft : kCommandPitchUp); });
        drawing.push_back(all - target.lastShow);
        showing.push_back(target.lastShow);
        converting.push_back(TimeOf([&] { ToScreenPicture(session.panorama->resultPicture, 16384, shown); }));
    }
    const Image& picture = session.panorama->resultPicture;
    std::printf("%-18s %4u x %4u: drawn %s   to the screen %s   of that converted %s\n", name, picture.width,
                picture.height, Text(drawing).c_str(), Text(showing).c_str(), Text(converting).c_str());
    std::fflush(stdout);
}

TEST(Latency, OfAKeyPress) {
    const int repetitions = Repetitions();
    if (repetitions == 0) GTEST_SKIP() << "measures only when SKYVAULT_LATENCY says how often";
    std::printf("least and median of %d, in milliseconds; source 8192 x 4096\n", repetitions);
    AppState settings = DefaultAppState();
    settings.logo.clear();
    for (const int width : {1920, 3840}) {
        const PlainWindow window(width, width / 2);
        WindowHost host(settings);
        host.SetWindow(window.handle);
        TimedTarget target(host);
        Session session{settings, host};
        session.panorama = std::make_unique<Panorama>(session.feedback, settings, &target);
        session.panorama->equirectSource = RandomImage(8192, 4096, PixelFormat::Rgb8);
        ASSERT_TRUE(session.panorama->equirectSource.IsValid());
        PrintKeyPresses(session, target, PanoramaFormat::Preview, "perspective", repetitions);
        PrintKeyPresses(session, target, PanoramaFormat::Equirectangular, "equirectangular", repetitions);
        PrintKeyPresses(session, target, PanoramaFormat::HorizontalCross, "cross", repetitions);
        PrintKeyPresses(session, target, PanoramaFormat::SphereMap, "sphere map", repetitions);
        host.ReleaseCanvas();
        DrawCanvas canvas(window.handle);
        std::vector<double> empty;
        for (int i = 0; i <= repetitions; ++i) {
            const double frame = TimeOf([&] {
                canvas.BeginDraw();
                canvas.Clear(kBackground);
                canvas.EndDraw();
            });
            if (i > 0) empty.push_back(frame);
        }
        std::printf("an empty frame     %4d x %4d: %s\n", width, width / 2, Text(empty).c_str());
    }
}

/// From the start of the program file until its window is there, and until it answers: then it has painted.
TEST(Latency, OfTheStart) {
    const int repetitions = Repetitions();
    if (repetitions == 0) GTEST_SKIP() << "measures only when SKYVAULT_LATENCY says how often";
    std::vector<double> visible, answering;
    for (int i = 0; i < repetitions; ++i) {
        STARTUPINFOW start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION process{};
        std::wstring path = ProgramFolder() + L"\\Skyvault.exe";
        const Clock::time_point begin = Clock::now();
        ASSERT_TRUE(CreateProcessW(path.c_str(), path.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &start, &process));
        const HWND window = WaitForWindow(L"Skyvault", L"", process.dwProcessId);
        visible.push_back(Milliseconds(Clock::now() - begin));
        DWORD_PTR answer = 0;
        EXPECT_TRUE(SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &answer));
        answering.push_back(Milliseconds(Clock::now() - begin));
        TerminateProcess(process.hProcess, 72);
        WaitForSingleObject(process.hProcess, kPatience);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    std::printf("start: window there %s   answering %s\n", Text(visible).c_str(), Text(answering).c_str());
}

}  // namespace
}  // namespace skyvault::test
