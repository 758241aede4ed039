// Many imports, views and exports in one run of the program: what it holds at the end is what it held after
// the first ten. Thirty rounds, or as many as the environment variable SKYVAULT_SOAK_ROUNDS says.
#include <gtest/gtest.h>
#include <windows.h>
//
#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "image/picture_files.h"
#include "platform/files.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

constexpr int kFirstRounds = 10;

int Rounds() {
    const char* const asked = std::getenv("SKYVAULT_SOAK_ROUNDS");
    return asked != nullptr ? std::max(std::atoi(asked), kFirstRounds + 1) : 30;
}

/// What the process holds.
struct Holdings {
    double privateMegabytes = 0, residentMegabytes = 0;
    DWORD handles = 0, gdiObjects = 0, windows = 0;
};

/// Objects of GDI that are this process's. Where the system does not count them, its table of all objects is
/// gone through: 65536 entries of 24 bytes whose second word names the owner.
DWORD CountGdiObjects() {
    const DWORD told = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    if (told > 0) return told;
    struct Entry {
        void* object;
        USHORT owner, generation, type, flags;
        void* user;
    };
    // The pointer to it stands at this place of the process environment block.
    constexpr std::size_t kTableInBlock = 0xf8, kEntries = 65536;
    const auto* const block = reinterpret_cast<const std::byte*>(__readgsqword(0x60));
    const auto* const entries = *reinterpret_cast<const Entry* const*>(block + kTableInBlock);
    DWORD count = 0;
    for (std::size_t i = 0; entries != nullptr && i < kEntries; ++i) count += entries[i].type != 0;
    return count;
}

BOOL CALLBACK CountWindow(HWND window, LPARAM count) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId()) return TRUE;
    ++*reinterpret_cast<DWORD*>(count);
    EnumChildWindows(
        window,
        [](HWND, LPARAM all) -> BOOL {
            ++*reinterpret_cast<DWORD*>(all);
            return TRUE;
        },
        count);
    return TRUE;
}

Holdings Measure() {
    Holdings now;
    PROCESS_MEMORY_COUNTERS_EX memory{};
    memory.cb = sizeof memory;
    GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory),
                         sizeof memory);
    constexpr double kMegabyte = 1024 * 1024;
    now.privateMegabytes = static_cast<double>(memory.PrivateUsage) / kMegabyte;
    now.residentMegabytes = static_cast<double>(memory.WorkingSetSize) / kMegabyte;
    GetProcessHandleCount(GetCurrentProcess(), &now.handles);
    now.gdiObjects = CountGdiObjects();
    EnumWindows(CountWindow, reinterpret_cast<LPARAM>(&now.windows));
    return now;
}

void Print(int round, const Holdings& h) {
    std::printf("round %4d: private %6.1f MB, resident %6.1f MB, %lu handles, %lu GDI objects, %lu windows\n",
                round, h.privateMegabytes, h.residentMegabytes, h.handles, h.gdiObjects, h.windows);
    std::fflush(stdout);
}

class Soak : public testing::Test {
  protected:
    void SetUp() override {
        settings_ = TestSettings(folder_.Path());
        settings_.filterIndex = 1;                                                  // BMP
        settings_.resolution0 = settings_.resolution1 = settings_.resolution2 = 0;  // 256
        Image picture = RandomImage(512, 256, PixelFormat::Rgb8);
        ASSERT_TRUE(SavePicture(picture, folder_ / L"sky.bmp"));
        Image strip = RandomImage(6 * 64, 64, PixelFormat::Rgb8);
        ASSERT_TRUE(SavePicture(strip, folder_ / L"strip.bmp"));
        PutSettings(&settings_);
    }

    /// An import, three views with a turn each, and an export over the last one's file.
    void Round(const RunningProgram& program, int round) {
        const bool strip = round % 2 != 0;
        const LayoutRow& source =
            *FindLayout(strip ? PanoramaFormat::Strip : PanoramaFormat::Equirectangular);
        ASSERT_TRUE(program.Import(
            source.importCommand, source.importTitle, folder_ / (strip ? L"strip.bmp" : L"sky.bmp"),
            strip ? L"Skyvault - strip.bmp Cubemap (64 x 64 x 6) LDR 24 bpp RGB int"
                  : L"Skyvault - sky.bmp Equirectangular (512 x 256) LDR 24 bpp RGB int"));
        std::vector<const LayoutRow*> views, exports;
        for (const LayoutRow& layout : Layouts()) {
            if (layout.viewCommand != 0) views.push_back(&layout);
            if (layout.viewCommand != 0 && layout.format != PanoramaFormat::SingleFiles)
                exports.push_back(&layout);
        }
        for (std::size_t i = 0; i < 3; ++i) {
            program.Command(views[(static_cast<std::size_t>(round) * 3 + i) % views.size()]->viewCommand);
            program.Command(kCommandHeadingLeft);
        }
        const LayoutRow& layout = *exports[static_cast<std::size_t>(round) % exports.size()];
        RemoveFile(folder_ / L"spheremap_out.bmp");
        program.StartCommand(layout.exportCommand);
        const HWND dialog = WaitForDialog(L"Export Panorama");
        ASSERT_NE(dialog, nullptr);
        ASSERT_TRUE(AnswerFileDialog(dialog, folder_ / L"spheremap_out"));
        // Of a small panorama it is first said that it is small.
        for (;;) {
            const HWND box = WaitForMessage();
            ASSERT_NE(box, nullptr);
            const bool last = MessageText(box).find(L"successfully") != std::wstring::npos;
            ASSERT_TRUE(PressButton(box, IDOK));
            if (last) break;
        }
    }

    const TemporaryFolder folder_;
    AppState settings_;
};

TEST_F(Soak, NothingIsHeldAnyLonger) {
    const RunningProgram program;
    ASSERT_NE(program.Window(), nullptr);
    Holdings first;
    const int rounds = Rounds();
    for (int round = 1; round <= rounds; ++round) {
        SCOPED_TRACE(round);
        Round(program, round);
        ASSERT_FALSE(HasFatalFailure());
        if (round == kFirstRounds) first = Measure();
        if (round == kFirstRounds || round == rounds || round % 50 == 0) Print(round, Measure());
    }
    const Holdings last = Measure();
    EXPECT_LE(last.handles, first.handles + 8);
    EXPECT_LE(last.gdiObjects, first.gdiObjects + 8);
    EXPECT_LE(last.windows, first.windows);
    EXPECT_LE(last.privateMegabytes, first.privateMegabytes + 16);
}

}  // namespace
}  // namespace skyvault::test
