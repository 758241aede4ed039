// Many imports, views and exports in one run of the program: what it holds at the end is what it held after
// the first ten. Fifteen rounds, or as many as the environment variable SKYVAULT_SOAK_ROUNDS says.
#include <gtest/gtest.h>
#include <windows.h>
//
#include <commdlg.h>
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
#include "tests/window/in_background.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

constexpr int kFirstRounds = 10;

int Rounds() {
    const char* const asked = std::getenv("SKYVAULT_SOAK_ROUNDS");
    return asked != nullptr ? std::max(std::atoi(asked), kFirstRounds + 1) : 15;
}

/// What the process holds.
struct Holdings {
    double privateMegabytes = 0, residentMegabytes = 0;
    DWORD handles = 0, gdiObjects = 0, windows = 0;
};

FARPROC SystemFunction(const char* name) {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name);
}

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
    const auto getBlock =
        reinterpret_cast<const std::byte* (*)()>(reinterpret_cast<void*>(SystemFunction("RtlGetCurrentPeb")));
    const std::byte* const block = getBlock();
    const auto* const entries = *reinterpret_cast<const Entry* const*>(block + kTableInBlock);
    DWORD count = 0;
    for (std::size_t i = 0; entries != nullptr && i < kEntries; ++i) count += entries[i].type != 0;
    return count;
}

/// Handles of this process; where the system does not count them, from its list of all.
DWORD CountHandles() {
    DWORD told = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &told) && told > 0) return told;
    struct Entry {
        void* object;
        ULONG_PTR process, handle;
        ULONG access;
        USHORT creator, type;
        ULONG attributes, reserved;
    };
    struct List {
        ULONG_PTR count, reserved;
        Entry entries[1];
    };
    using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
    const auto query =
        reinterpret_cast<Query>(reinterpret_cast<void*>(SystemFunction("NtQuerySystemInformation")));
    constexpr ULONG kAllHandles = 64;
    std::vector<std::byte> memory(8 << 20);
    if (query(kAllHandles, memory.data(), static_cast<ULONG>(memory.size()), nullptr) < 0) return 0;
    const auto& list = *reinterpret_cast<const List*>(memory.data());
    return static_cast<DWORD>(std::count_if(list.entries, list.entries + list.count, [](const Entry& entry) {
        return entry.process == GetCurrentProcessId();
    }));
}

/// Bytes of private memory in use.
std::size_t PrivateBytes() {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const std::byte* at = nullptr; VirtualQuery(at, &region, sizeof region) == sizeof region;
         at = static_cast<const std::byte*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    }
    return bytes;
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
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    constexpr double kMegabyte = 1024 * 1024;
    now.privateMegabytes = static_cast<double>(PrivateBytes()) / kMegabyte;
    now.residentMegabytes = static_cast<double>(memory.WorkingSetSize) / kMegabyte;
    now.handles = CountHandles();
    now.gdiObjects = CountGdiObjects();
    EnumWindows(CountWindow, reinterpret_cast<LPARAM>(&now.windows));
    return now;
}

void Print(int round, const Holdings& h) {
    std::printf("round %4d: private %6.1f MB, resident %6.1f MB, %lu handles, %lu GDI objects, %lu windows\n",
                round, h.privateMegabytes, h.residentMegabytes, h.handles, h.gdiObjects, h.windows);
    std::fflush(stdout);
}

/// How many handles the system's own file dialog keeps of each time it is answered: none on Windows, a key of
/// the registry under Wine.
int HandlesADialogKeeps(const std::wstring& anyFile) {
    constexpr int kTimes = 4;
    DWORD first = 0;
    for (int i = 0; i <= kTimes; ++i) {
        const InBackground box([] {
            wchar_t path[MAX_PATH] = L"";
            OPENFILENAMEW dialog{};
            dialog.lStructSize = sizeof dialog;
            dialog.lpstrFile = path;
            dialog.nMaxFile = MAX_PATH;
            dialog.lpstrTitle = L"Plain dialog";
            dialog.Flags = OFN_EXPLORER | OFN_NOCHANGEDIR;
            GetOpenFileNameW(&dialog);
        });
        AnswerFileDialog(WaitForDialog(L"Plain dialog"), anyFile);
        if (i == 0) first = CountHandles();
    }
    const int kept = static_cast<int>(CountHandles()) - static_cast<int>(first);
    return std::max(0, (kept + kTimes / 2) / kTimes);
}

class Soak : public testing::Test {
  protected:
    void SetUp() override {
        settings_ = TestSettings(folder_.Path());
        // A small window: presenting a picture is what takes the time.
        settings_.windowRect.right = settings_.windowRect.left + 360;
        settings_.windowRect.bottom = settings_.windowRect.top + 280;
        settings_.filterIndex = 1;                                                  // BMP
        settings_.resolution0 = settings_.resolution1 = settings_.resolution2 = 0;  // 256
        Image picture = RandomImage(512, 256, PixelFormat::Rgb8);
        ASSERT_TRUE(SavePicture(picture, folder_ / L"sky.bmp"));
        Image strip = RandomImage(6 * 64, 64, PixelFormat::Rgb8);
        ASSERT_TRUE(SavePicture(strip, folder_ / L"strip.bmp"));
        PutSettings(&settings_);
    }

    /// An import, two views with a turn each, and an export over the last one's file.
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
        for (std::size_t i = 0; i < 2; ++i) {
            program.Command(views[(static_cast<std::size_t>(round) * 2 + i) % views.size()]->viewCommand);
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
    const int keptByDialogs = 2 * HandlesADialogKeeps(folder_ / L"sky.bmp");
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
    const int lastHandles = static_cast<int>(last.handles) - keptByDialogs * (rounds - kFirstRounds);
    EXPECT_LE(lastHandles, static_cast<int>(first.handles) + 8);
    // The system goes on filling its own stores of icons and fonts for some fifty rounds.
    EXPECT_LE(last.gdiObjects, first.gdiObjects + 16);
    EXPECT_LE(last.windows, first.windows);
    EXPECT_LE(last.privateMegabytes, first.privateMegabytes + 8);
    EXPECT_LE(last.residentMegabytes, first.residentMegabytes + 24);
}

}  // namespace
}  // namespace skyvault::test
