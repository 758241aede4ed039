// Disks that fill up at any byte, files that change while they are read, and several programs at one file.
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "platform/debug_line.h"
#include "settings/settings_file.h"
#include "settings/settings_table.h"
#include "settings/text_file.h"
#include "tests/layout_faults.h"

namespace skyvault::test {
namespace {

/// While it lives no file can grow beyond the limit: writing fails as on a full disk.
class DiskLimit {
  public:
    explicit DiskLimit(std::uint64_t bytes) {
        before_ = signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &limit_);
        const rlimit smaller{bytes, limit_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &smaller);
    }
    ~DiskLimit() {
        setrlimit(RLIMIT_FSIZE, &limit_);
        signal(SIGXFSZ, before_);
    }
    DiskLimit(const DiskLimit&) = delete;
    DiskLimit& operator=(const DiskLimit&) = delete;

  private:
    rlimit limit_{};
    void (*before_)(int) = nullptr;
};

/// Settings whose numbers are all the same.
AppState AllNumbers(std::int32_t number) {
    AppState settings;
    settings.settingsLoaded = true;
    for (const Setting& setting : SettingsTable()) {
        const auto* const field = std::get_if<std::int32_t AppState::*>(&setting.field);
        if (field != nullptr) settings.** field = number;
    }
    return settings;
}

class FileFaultsOnLinux : public LayoutFaults {
  protected:
    /// A layout's file, or null: the settings.
    struct Kind {
        const LayoutRow* layout;
        std::wstring name;
    };
    std::vector<Kind> Kinds() const {
        std::vector<Kind> kinds = {{nullptr, L"a.txt"}};
        for (const LayoutRow* const layout : WrittenLayouts()) {
            const bool isOneFile = layout->sources == 1 && layout->kind == LayoutKind::Panorama;
            if (isOneFile) kinds.push_back({layout, L"a" + Extension(*layout)});
        }
        for (const wchar_t* const name : {L"a.bmp", L"a.dds", L"a.gif", L"a.jpg", L"a.tif"}) {
            kinds.push_back({&Layouts()[0], name});
        }
        return kinds;
    }
    bool Write(const Kind& kind) {
        const std::wstring path = JoinPath(out, kind.name);
        return (kind.layout ? Export(*kind.layout, path) : SaveSettings(AllNumbers(1), path)).IsDone();
    }
    bool Read(const Kind& kind) {
        const std::wstring path = JoinPath(out, kind.name);
        Panorama panorama;
        AppState loaded;
        if (kind.layout)
            return ImportPanorama(*kind.layout, {path}, t.settings, t.feedback, panorama).IsDone();
        LoadSettings(loaded, path, {});
        return loaded.settingsLoaded;
    }
    const DebugLineCapture quiet;
};

TEST_F(FileFaultsOnLinux, ADiskThatFillsUpAtAnyByteCostsNothing) {
    for (const Kind& kind : Kinds()) {
        SCOPED_TRACE(ToUtf8(kind.name) + (kind.layout ? kind.layout->consoleName : ""));
        EmptyOutput();
        ASSERT_TRUE(Write(kind));
        const std::wstring name = JoinPath(L"out", kind.name);
        const std::size_t whole = folder.Read(name).size();
        folder.Write(name, "old");
        for (std::size_t i = 0; i < 56; ++i) {
            const std::size_t room = i < 32 ? i : whole * (i - 31) / 24;
            SCOPED_TRACE(std::to_string(room) + " of " + std::to_string(whole));
            bool written = false;
            {
                const DiskLimit full(room);
                written = Write(kind);
            }
            EXPECT_EQ(written, room == whole);
            EXPECT_TRUE(written || folder.Read(name) == "old");
            EXPECT_TRUE(FindFiles(out).size() == 1 && temporary.Empty());
        }
        // Some kinds hold the time they were written at.
        EXPECT_EQ(folder.Read(name).size(), whole);
    }
}

TEST_F(FileFaultsOnLinux, FilesMayChangeWhileTheyAreRead) {
    for (const Kind& kind : Kinds()) {
        SCOPED_TRACE(ToUtf8(kind.name) + (kind.layout ? kind.layout->consoleName : ""));
        EmptyOutput();
        ASSERT_TRUE(Write(kind));
        const std::wstring name = JoinPath(L"out", kind.name);
        const std::string whole = folder.Read(name);
        const std::filesystem::path system = folder.SystemPath(name);
        std::atomic<bool> ended = false;
        // Cut, grown, rewritten in place and removed, over and over.
        std::thread changing([&] {
            for (std::size_t i = 0; !ended; ++i) {
                std::error_code ignored;
                std::filesystem::resize_file(system, whole.size() * (i % 7) / 3, ignored);
                if (i % 5 == 0) std::filesystem::remove(system, ignored);
                folder.Write(name, whole.substr(0, whole.size() * (i % 4 + 1) / 4));
            }
        });
        int read = 0;
        for (int i = 0; i < 60; ++i) read += Read(kind);
        ended = true;
        changing.join();
        folder.Write(name, whole);
        EXPECT_TRUE(Read(kind)) << "after " << read << " whole ones of 60";
        EXPECT_TRUE(temporary.Empty());
    }
}

TEST_F(FileFaultsOnLinux, SettingsOfSeveralProgramsAreAlwaysThoseOfOne) {
    const std::wstring path = JoinPath(out, L"Skyvault.txt");
    constexpr int kPrograms = 3, kRounds = 60;
    ASSERT_TRUE(SaveSettings(AllNumbers(0), path).IsDone());
    for (int p = 1; p <= kPrograms; ++p) {
        const pid_t child = fork();
        if (child != 0) continue;
        int failed = 0;
        for (int i = 0; i < kRounds; ++i) failed += !SaveSettings(AllNumbers(p), path).IsDone();
        _exit(failed > 0);
    }
    for (int running = kPrograms; running > 0;) {
        int status = 0;
        if (waitpid(-1, &status, WNOHANG) > 0) {
            EXPECT_EQ(status, 0) << "every one of its saves is done";
            --running;
        }
        AppState settings;
        LoadSettings(settings, path, {});
        ASSERT_TRUE(settings.settingsLoaded && settings.view >= 0 && settings.view <= kPrograms);
        const AppState expected = AllNumbers(settings.view);
        for (const Setting& setting : SettingsTable()) {
            const auto* const field = std::get_if<std::int32_t AppState::*>(&setting.field);
            ASSERT_TRUE(!field || settings.**field == expected.**field) << ToUtf8(setting.key);
        }
    }
    EXPECT_EQ(FindFiles(out).size(), 1u);
}

}  // namespace
}  // namespace skyvault::test
