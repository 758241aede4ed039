#include <windows.h>
// After windows.h:
#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "bench/window/window_bench.h"
#include "codecs/picture_files.h"
#include "resources/resource_ids.h"
#include "session/layouts.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"
#include "tests/window/window_driver.h"

namespace skyvault::test {
namespace {

FARPROC SystemFunction(const char* name) {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name);
}

/// Objects of GDI that are this process's. Where the system does not count them, its table of all objects is
/// gone through: 65536 entries of 24 bytes. The pointer to it stands in the process environment block.
DWORD CountGdiObjects() {
    const DWORD told = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    if (told > 0) return told;
    struct Entry {
        void* object;
        USHORT owner, generation, type, flags;
        void* user;
    };
    constexpr std::size_t kTableInBlock = 0xf8, kEntries = 65536;
    const auto getBlock =
        reinterpret_cast<const std::byte* (*)()>(reinterpret_cast<void*>(SystemFunction("RtlGetCurrentPeb")));
    const auto* const entries = *reinterpret_cast<const Entry* const*>(getBlock() + kTableInBlock);
    if (entries == nullptr) return 0;
    return static_cast<DWORD>(
        std::count_if(entries, entries + kEntries, [](const Entry& entry) { return entry.type != 0; }));
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

double PrivateMegabytes() {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const std::byte* at = nullptr; VirtualQuery(at, &region, sizeof region) == sizeof region;
         at = static_cast<const std::byte*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    }
    return static_cast<double>(bytes) / (1 << 20);
}

void Print(int round) {
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    std::printf("round %4d: private %6.1f MB, resident %6.1f MB, %lu handles, %lu GDI objects, %zu windows\n",
                round, PrivateMegabytes(), static_cast<double>(memory.WorkingSetSize) / (1 << 20),
                CountHandles(), CountGdiObjects(), WindowsOf(GetCurrentProcessId(), nullptr).size());
}

/// An import, two views with a turn each, and an export over the last one's file.
bool Round(const RunningProgram& program, const TemporaryFolder& folder, int round) {
    const bool strip = round % 2 != 0;
    const LayoutRow& source = *FindLayout(strip ? PanoramaFormat::Strip : PanoramaFormat::Equirectangular);
    const wchar_t* const name = strip ? L"strip.bmp" : L"sky.bmp";
    if (!AnswerFileDialog(program.Open(source.importCommand, source.importTitle), folder / name) ||
        !Eventually([&] { return TextOf(program.Window()).find(name) != std::wstring::npos; })) {
        return false;
    }
    std::vector<const LayoutRow*> views, exports;
    for (const LayoutRow& layout : Layouts()) {
        if (layout.viewCommand == 0) continue;
        views.push_back(&layout);
        if (layout.format != PanoramaFormat::SingleFiles) exports.push_back(&layout);
    }
    const auto number = static_cast<std::size_t>(round);
    for (const std::size_t i : {number * 2, number * 2 + 1}) {
        program.Command(views[i % views.size()]->viewCommand);
        program.Command(IDM_HEADING_LEFT);
    }
    DeleteFileW((folder / L"spheremap_out.bmp").c_str());
    const UINT command = exports[number % exports.size()]->exportCommand;
    if (!AnswerFileDialog(program.Open(command, L"Export Panorama"), folder / L"spheremap_out")) return false;
    // Of a small panorama it is first told that it is small.
    for (std::wstring message; message.find(L"successfully") == std::wstring::npos;) {
        message = AnswerMessage();
        if (message.starts_with(L"(")) return false;
    }
    return true;
}

}  // namespace

bool Soak(int rounds) {
    const TemporaryFolder folder;
    AppState settings = TestSettings(folder.Path());
    // A small window: presenting a picture is what takes the time.
    settings.windowRect.right = settings.windowRect.left + 360;
    settings.windowRect.bottom = settings.windowRect.top + 280;
    settings.filterIndex = 1;                                                // BMP
    settings.resolution0 = settings.resolution1 = settings.resolution2 = 0;  // 256
    Image sky = RandomImage(512, 256, PixelFormat::Rgb8), strip = RandomImage(6 * 64, 64, PixelFormat::Rgb8);
    if (!SavePicture(sky, folder / L"sky.bmp").IsDone() ||
        !SavePicture(strip, folder / L"strip.bmp").IsDone())
        return false;
    PutSettings(&settings);
    const RunningProgram program;
    for (int round = 1; round <= rounds; ++round) {
        if (!Round(program, folder, round)) {
            std::printf("round %d did not come to its end\n", round);
            return false;
        }
        if (round == 10 || round == rounds || round % 50 == 0) Print(round);
    }
    return true;
}

}  // namespace skyvault::test
