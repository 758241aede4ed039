// Disks that fill up at any byte, files that change while they are read, and several programs at one file.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "image/picture_files.h"
#include "platform/debug_line.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "qtvr/qtvr_export.h"
#include "qtvr/qtvr_import.h"
#include "settings/settings_file.h"
#include "settings/settings_table.h"
#include "settings/text_file.h"
#include "tests/own_temporary_files.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

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

/// A kind of file the program writes, from a picture with transparency.
struct Written {
    const wchar_t* name;
    bool (*write)(const std::wstring& path);
};

bool WritePicture(const std::wstring& path) {
    Image picture = RandomImage(60, 40, PixelFormat::Rgba8, 9);
    return SavePicture(picture, path, PixelFormat::None, nullptr, true);
}
bool WriteMovie(const std::wstring& path) {
    TestPanorama t;
    t.SetFaces(24, PixelFormat::Rgb8);
    return WriteQuickTimeVr(t.panorama, path, 24, PixelFormat::Rgb8, nullptr);
}
bool WriteSettings(const std::wstring& path) {
    RecordingFeedback feedback;
    AppState settings;
    settings.settingsLoaded = true;
    return SaveSettings(settings, path, feedback);
}

constexpr Written kWritten[] = {
    {L"a.bmp", WritePicture}, {L"a.dds", WritePicture}, {L"a.gif", WritePicture}, {L"a.jpg", WritePicture},
    {L"a.png", WritePicture}, {L"a.tif", WritePicture}, {L"a.mov", WriteMovie},   {L"a.txt", WriteSettings},
};

TEST(FileFaultsOnLinux, ADiskThatFillsUpAtAnyByteCostsNothing) {
    const OwnTemporaryFiles temporary;
    for (const Written& kind : kWritten) {
        SCOPED_TRACE(ToUtf8(kind.name));
        const TemporaryFolder folder;
        const std::wstring path = folder / kind.name;
        const DebugLineCapture quiet;
        ASSERT_TRUE(kind.write(path));
        const std::string whole = folder.Read(kind.name);
        folder.Write(kind.name, "old");
        for (std::size_t room = 0; room < whole.size(); room += room < 32 ? 1 : whole.size() / 23) {
            // A movie's pictures must fit, for without them this movie is written all the same.
            if (kind.write == WriteMovie && room < whole.size() / 2) continue;
            bool written = false;
            {
                const DiskLimit full(room);
                written = kind.write(path);
            }
            EXPECT_FALSE(written) << room << " of " << whole.size();
            EXPECT_EQ(folder.Read(kind.name), "old") << room << " of " << whole.size();
            ASSERT_EQ(folder.FileCount(), 1u) << room << " of " << whole.size();
            EXPECT_TRUE(temporary.Empty());
        }
        // Room for all of it and no more.
        bool written = false;
        {
            const DiskLimit enough(whole.size());
            written = kind.write(path);
        }
        EXPECT_TRUE(written);
        // Some kinds hold the time they were written at.
        EXPECT_EQ(folder.Read(kind.name).size(), whole.size());
    }
}

/// Reads what the program reads; true when it was whole.
bool ReadAgain(const std::wstring& path, const std::wstring& name) {
    if (name == L"a.mov") {
        TestPanorama t;
        return ImportQuickTimeVr(t.panorama, path);
    }
    if (name == L"a.txt") {
        AppState settings;
        LoadSettings(settings, path, {});
        return settings.settingsLoaded;
    }
    return LoadPicture(path).IsValid();
}

TEST(FileFaultsOnLinux, FilesMayChangeWhileTheyAreRead) {
    const OwnTemporaryFiles temporary;
    const TemporaryFolder folder;
    SetShareAndFailAtOnce(true);
    for (const Written& kind : kWritten) {
        SCOPED_TRACE(ToUtf8(kind.name));
        const DebugLineCapture quiet;
        const std::wstring path = folder / kind.name;
        ASSERT_TRUE(kind.write(path));
        const std::string whole = folder.Read(kind.name);
        const std::filesystem::path system = folder.SystemPath(kind.name);
        std::atomic<bool> ended = false;
        // Cut, grown, rewritten in place and removed, over and over.
        std::thread changing([&] {
            for (std::size_t i = 0; !ended; ++i) {
                std::error_code ignored;
                std::filesystem::resize_file(system, whole.size() * (i % 7) / 3, ignored);
                if (i % 5 == 0) std::filesystem::remove(system, ignored);
                folder.Write(kind.name, whole.substr(0, whole.size() * (i % 4 + 1) / 4));
            }
        });
        int read = 0;
        for (int i = 0; i < 150; ++i) read += ReadAgain(path, kind.name);
        ended = true;
        changing.join();
        folder.Write(kind.name, whole);
        EXPECT_TRUE(ReadAgain(path, kind.name)) << "after " << read << " whole ones of 150";
        EXPECT_TRUE(temporary.Empty());
    }
    SetShareAndFailAtOnce(false);
}

/// Settings whose numbers are all the same.
AppState AllNumbers(std::int32_t number) {
    AppState settings;
    settings.settingsLoaded = true;
    for (const Setting& setting : SettingsTable()) {
        if (const auto* field = std::get_if<std::int32_t AppState::*>(&setting.field))
            settings.** field = number;
    }
    return settings;
}

TEST(FileFaultsOnLinux, SettingsOfSeveralProgramsAreAlwaysThoseOfOne) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"Skyvault.txt";
    constexpr int kPrograms = 3, kRounds = 60;
    RecordingFeedback feedback;
    ASSERT_TRUE(SaveSettings(AllNumbers(0), path, feedback));
    std::vector<pid_t> programs;
    for (int p = 1; p <= kPrograms; ++p) {
        const pid_t child = fork();
        if (child != 0) {
            programs.push_back(child);
            continue;
        }
        RecordingFeedback own;
        int failed = 0;
        for (int i = 0; i < kRounds; ++i) failed += !SaveSettings(AllNumbers(p), path, own);
        _exit(failed > 0);
    }
    int running = kPrograms;
    std::int32_t numbers[kPrograms + 1] = {};
    while (running > 0) {
        int status = 0;
        if (waitpid(-1, &status, WNOHANG) > 0) {
            EXPECT_EQ(status, 0) << "every one of its saves is done";
            --running;
        }
        AppState settings;
        LoadSettings(settings, path, {});
        ASSERT_TRUE(settings.settingsLoaded);
        const std::int32_t number = settings.voronoiPoints;
        for (const Setting& setting : SettingsTable()) {
            if (const auto* field = std::get_if<std::int32_t AppState::*>(&setting.field)) {
                ASSERT_EQ(settings.**field, number) << ToUtf8(setting.key);
            }
        }
        ASSERT_TRUE(number >= 0 && number <= kPrograms);
        ++numbers[number];
    }
    EXPECT_EQ(folder.FileCount(), 1u);
    EXPECT_GT(numbers[1] + numbers[2] + numbers[3], 0);
}

}  // namespace
}  // namespace skyvault::test
