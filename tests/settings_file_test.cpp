#include "settings/settings_file.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/files.h"
#include "platform/utf8.h"
#include "settings/settings_table.h"
#include "settings/text_file.h"
#include "tests/recording_host.h"
#include "tests/temporary_folder.h"

namespace skyvault {

inline void PrintTo(const ScreenRect& r, std::ostream* out) {
    *out << r.left << ',' << r.top << ',' << r.right << ',' << r.bottom;
}

namespace test {
namespace {

using test::TemporaryFolder;

constexpr ScreenRect kScreen{0, 0, 1920, 1080};

/// The settings after reading a file with this content over the defaults.
AppState Loaded(const std::string& bytes, const ScreenRect& screen = kScreen) {
    const TemporaryFolder folder;
    AppState state;
    LoadSettings(state, folder.Write(L"Skyvault.txt", bytes), screen);
    EXPECT_TRUE(state.settingsLoaded);
    return state;
}

/// A record in which no field has its default.
AppState UnusualState() {
    AppState state;
    std::int32_t number = 300;
    for (const Setting& setting : SettingsTable()) {
        struct Change {
            AppState& state;
            std::int32_t number;
            void operator()(std::int32_t AppState::*field) const { state.*field = -number; }
            void operator()(float AppState::*field) const { state.*field = static_cast<float>(number) / 64; }
            void operator()(bool AppState::*field) const { state.*field = !(state.*field); }
            void operator()(std::wstring AppState::*field) const {
                state.*field = L"C:\\My \"\u00e4\U0001F600\"\t\r\n" + std::to_wstring(number);
            }
            void operator()(Color8 AppState::*field) const { state.*field = Color8(1, 2, 3, 255); }
            void operator()(ScreenRect AppState::*field) const { state.*field = {10, 20, 1010, 720}; }
        };
        std::visit(Change{state, number++}, setting.field);
    }
    return state;
}

void ExpectEqual(const AppState& a, const AppState& b) {
    for (const Setting& setting : SettingsTable()) {
        EXPECT_TRUE(std::visit([&](auto field) { return a.*field == b.*field; }, setting.field))
            << ToUtf8(setting.key);
    }
}

TEST(SettingsFile, EveryFieldReadsBack) {
    const TemporaryFolder folder;
    RecordingHost host;
    const AppState saved = UnusualState();
    ASSERT_TRUE(SaveSettings(saved, folder.Path(L"Skyvault.txt"), host));
    AppState loaded;
    LoadSettings(loaded, folder.Path(L"Skyvault.txt"), kScreen);
    ExpectEqual(saved, loaded);
    EXPECT_TRUE(loaded.settingsLoaded);
    EXPECT_TRUE(host.calls.empty());
}

TEST(SettingsFile, DefaultsAreWrittenInTheFixedOrder) {
    AppState state;
    state.importPath = L"C:\\Program Files\\Skyvault\\Media\\Examples";
    state.exportPath = L"C:\\Exports";
    state.logo = L"C:\\Logo.png";
    state.windowRect = {32, 32, 1765, 1016};
    const TemporaryFolder folder;
    RecordingHost host;
    ASSERT_TRUE(SaveSettings(state, folder.Path(L"Skyvault.txt"), host));
    const std::string bytes = folder.Read(L"Skyvault.txt");
    EXPECT_TRUE(bytes.starts_with("\xFF\xFE"));
    TextEncoding encoding{};
    EXPECT_EQ(ToUtf8(DecodeText(std::as_bytes(std::span(bytes)), encoding)),
              "ImportPath\t\"C:\\Program Files\\Skyvault\\Media\\Examples\"\r\n"
              "ExportPath\tC:\\Exports\r\n"
              "PreviewFOV\t0.2\r\nCrosshair\tN\r\nMagnifyingGlass\tN\r\n"
              "Resolution0\t2\r\nResolution1\t4\r\nResolution2\t3\r\nResolution3\t0\r\n"
              "FileNamingSystem\t0\r\nTransparency\tN\r\nAntialiasing\tY\r\nView\t0\r\n"
              "CompressDDS\tY\r\nFilterIndex\t4\r\n"
              "VoronoiPoints\t20\r\nVoronoiSmooth\tN\r\nVoronoiPower\t3\r\nVoronoiBorder\t0\r\n"
              "BlobsForceFields\t20\r\nBlobsPower\t7\r\nBlobsContrast\t1\r\n"
              "FractalRoughness\t0.6\r\nFractalContrast\t0.5\r\n"
              "LightsLights\t30\r\nLightsBrightness\t0.2\r\n"
              "PolyhedraBorder\t0\r\nPolyhedraTextureScale\t0.7\r\nPolyhedraFrames\t1\r\n"
              "Batch_SourceFormatIndex\t0\r\nBatch_SourceFolder\t\"\"\r\n"
              "Batch_DestinationFormatIndex\t1\r\nBatch_DestinationFolder\t\"\"\r\n"
              "Batch_DestinationExtensionIndex\t1\r\n"
              "BackgroundColour\t255\t255\t255\r\n"
              "Logo\tC:\\Logo.png\r\n"
              "WindowRect\t32\t32\t1765\t1016\r\n");
}

TEST(SettingsFile, LinesAreReadLeniently) {
    const struct {
        const char* bytes;
        const wchar_t* key;
        const wchar_t* value;  ///< as SetFromText takes it
    } cases[] = {
        {"Crosshair\tY", L"Crosshair", L"Y"},
        {"Crosshair\ty", L"Crosshair", L"N"},
        {"Antialiasing\t1", L"Antialiasing", L"N"},
        {"Antialiasing", L"Antialiasing", L"N"},
        {"antialiasing\tN", L"Antialiasing", L"Y"},
        {"View\t3\r\nView\t8\r\n", L"View", L"8"},
        {"View", L"View", L"0"},
        {"\r\n\r\nNoSuchKey\t1\r\n\"View\"\t\"5\"", L"View", L"5"},
        {"View\t99999999999", L"View", L"2147483647"},
        {"PreviewFOV\tnan", L"PreviewFOV", L"0"},
        {"PreviewFOV\t0,5", L"PreviewFOV", L"0"},
        {"PreviewFOV\t-1.25e1!", L"PreviewFOV", L"-12.5"},
        {"Logo", L"Logo", L""},
        {"Logo\tD:\\My Logo.png\textra", L"Logo", L"D:\\My Logo.png"},
        {"BackgroundColour\t300\t-1\t256", L"BackgroundColour", L"44,255,0"},
        {"BackgroundColour\t7", L"BackgroundColour", L"7,0,0"},
        {"BackgroundColour\t-99999999999\tx\t99999999999", L"BackgroundColour", L"0,0,255"},
        {"WindowRect\t0\t0\t10\t10", L"WindowRect", L"0,0,320,240"},
        {"WindowRect", L"WindowRect", L"0,0,320,240"},
        {"WindowRect\t-99999999999\t99999999999\t99999999999\t-99999999999", L"WindowRect", L"0,0,1920,240"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        AppState expected;
        ASSERT_TRUE(SetFromText(expected, *FindSetting(c.key), c.value));
        ExpectEqual(Loaded(c.bytes), expected);
    }
}

TEST(SettingsFile, AMissingFileLeavesEverything) {
    const TemporaryFolder folder;
    AppState state = UnusualState();
    LoadSettings(state, folder.Path(L"Skyvault.txt"), kScreen);
    ExpectEqual(state, UnusualState());
    EXPECT_FALSE(state.settingsLoaded);
    RecordingHost host;
    EXPECT_TRUE(SaveSettings(state, folder.Path(L"Skyvault.txt"), host)) << "the first run writes the file";
}

TEST(SettingsFile, AFileThatWasNotReadIsNeverOverwritten) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Write(L"Skyvault.txt", "View\t3\r\n");
    RecordingHost host;
    EXPECT_FALSE(SaveSettings(AppState(), path, host));
    EXPECT_EQ(folder.Read(L"Skyvault.txt"), "View\t3\r\n");
    EXPECT_TRUE(host.errors.empty());

    std::filesystem::resize_file(folder.SystemPath(L"Skyvault.txt"), 17 << 20);
    AppState state;
    LoadSettings(state, path, kScreen);
    EXPECT_FALSE(state.settingsLoaded);
    EXPECT_EQ(state.view, 0);
}

TEST(SettingsFile, AFailedSaveNamesThePath) {
    const TemporaryFolder folder;
    RecordingHost host;
    const std::wstring path = folder.Path(L"missing\u00e4") + kPathSeparator + L"Skyvault.txt";
    EXPECT_FALSE(SaveSettings(AppState(), path, host));
    ASSERT_EQ(host.errors.size(), 1u);
    EXPECT_EQ(host.errors[0], L"Could not open:\n\n\"" + path + L"\"");
}

TEST(SettingsFile, OlderSettingsMoveOnceAndReplaceNothing) {
    const struct {
        const char *ini, *txt, *present;  ///< contents before; null: no such file
        const char *iniAfter, *txtAfter, *settings;
    } cases[] = {
        {nullptr, nullptr, nullptr, "", "", ""},   {"ini", nullptr, nullptr, "", "", "ini"},
        {nullptr, "txt", nullptr, "", "", "txt"},  {"ini", "txt", nullptr, "", "txt", "ini"},
        {"ini", nullptr, "new", "ini", "", "new"}, {"ini", "txt", "new", "ini", "txt", "new"},
        {nullptr, "txt", "new", "", "txt", "new"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << &c - cases);
        const TemporaryFolder program, data;
        if (c.ini) program.Write(L"Skyvault.ini", c.ini);
        if (c.txt) program.Write(L"Skyvault.txt", c.txt);
        if (c.present) data.Write(L"Skyvault.txt", c.present);
        MoveOlderSettings(program.Path(), data.Path(L"Skyvault.txt"));
        EXPECT_EQ(program.Read(L"Skyvault.ini"), c.iniAfter);
        EXPECT_EQ(program.Read(L"Skyvault.txt"), c.txtAfter);
        EXPECT_EQ(data.Read(L"Skyvault.txt"), c.settings);
    }
}

TEST(SettingsTable, SetFromTextTakesOnlyWholeValues) {
    const struct {
        const wchar_t* key;
        const wchar_t* text;
        bool accepted;
    } cases[] = {
        {L"View", L"12", true},
        {L"View", L"-1", true},
        {L"View", L"12x", false},
        {L"View", L" 12", false},
        {L"View", L"1.5", false},
        {L"View", L"", false},
        {L"View", L"2147483648", false},
        {L"PreviewFOV", L"0.25", true},
        {L"PreviewFOV", L"1e39", false},
        {L"PreviewFOV", L"nan", false},
        {L"PreviewFOV", L"0,25", false},
        {L"Crosshair", L"Y", true},
        {L"Transparency", L"Y", true},
        {L"Crosshair", L"y", false},
        {L"Crosshair", L"1", false},
        {L"BackgroundColour", L"1,2,3", true},
        {L"BackgroundColour", L"1,2", false},
        {L"BackgroundColour", L"1,2,3,4", false},
        {L"BackgroundColour", L"1,2,256", false},
        {L"BackgroundColour", L"-1,2,3", false},
        {L"BackgroundColour", L"1,2,", false},
        {L"WindowRect", L"-5,0,100,200", true},
        {L"WindowRect", L"0,0,100", false},
        {L"Logo", L"any text", true},
    };
    for (const auto& c : cases) {
        AppState state;
        const Setting* setting = FindSetting(c.key);
        ASSERT_NE(setting, nullptr) << ToUtf8(c.key);
        EXPECT_EQ(SetFromText(state, *setting, c.text), c.accepted) << ToUtf8(c.key) << "=" << ToUtf8(c.text);
        const bool changed =
            std::visit([&](auto field) { return state.*field != AppState().*field; }, setting->field);
        EXPECT_EQ(changed, c.accepted) << ToUtf8(c.key) << "=" << ToUtf8(c.text);
    }
    EXPECT_EQ(FindSetting(L"crosshair"), nullptr);
    AppState state;
    SetFromText(state, *FindSetting(L"BackgroundColour"), L"1,2,3");
    EXPECT_EQ(state.backgroundColour, Color8(1, 2, 3, 255));
}

TEST(WindowRect, IsFittedToTheVirtualScreen) {
    constexpr ScreenRect two{-1280, 0, 1920, 1080};  // a second monitor to the left
    constexpr std::int32_t kFar = 2147483647;
    const struct {
        ScreenRect rect, screen, fitted;
    } cases[] = {
        {{100, 100, 900, 700}, kScreen, {100, 100, 900, 700}},
        {{0, 0, 10, 10}, kScreen, {0, 0, 320, 240}},
        {{500, 400, 100, 50}, kScreen, {500, 400, 820, 640}},
        {{-1000, 100, -200, 700}, two, {-1000, 100, -200, 700}},
        {{-1000, 100, -200, 700}, kScreen, {0, 100, 800, 700}},
        {{2000, 1100, 2800, 1700}, kScreen, {0, 0, 800, 600}},
        {{1920, 0, 2720, 600}, kScreen, {0, 0, 800, 600}},
        {{1500, 800, 2300, 1400}, kScreen, {1120, 480, 1920, 1080}},
        {{1, 0, 1920, 1080}, kScreen, {1, 0, 1920, 1080}},
        {{10, 10, 4000, 3000}, kScreen, {0, 0, 1920, 1080}},
        {{0, 0, 640, 480}, {0, 0, 200, 100}, {0, 0, 200, 100}},
        {{-kFar - 1, -kFar - 1, kFar, kFar}, kScreen, {0, 0, 1920, 1080}},
        {{kFar - 5, 7, kFar, 20}, {}, {kFar - 5, 7, kFar, 247}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(FitToScreen(c.rect, c.screen), c.fitted) << testing::PrintToString(c.rect);
    }
}

TEST(WindowRect, TheDefaultIsAsTallAsTheScreenAllows) {
    const struct {
        std::int32_t width, height;
        ScreenRect rect;
    } cases[] = {
        {1920, 1080, {32, 32, 1781, 1016}},  // 984 × 16 / 9 = 1749
        {1024, 1080, {32, 32, 992, 1016}},
        {200, 200, {0, 0, 200, 200}},
        {0, 0, {32, 32, 352, 272}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << " x " << c.height);
        EXPECT_EQ(DefaultWindowRect(c.width, c.height, {0, 0, c.width, c.height}), c.rect);
    }
}

TEST(AppState, PathsStartBesideTheProgram) {
    const TemporaryFolder home;
#ifndef _WIN32
    const char* oldHome = std::getenv("HOME");
    const std::string restored = oldHome != nullptr ? oldHome : "";
    setenv("HOME", ToUtf8(home.Path()).c_str(), 1);
#endif
    const AppState state = DefaultAppState();
    EXPECT_EQ(state.importPath, JoinPath(JoinPath(ProgramFolder(), L"Media"), L"Examples"));
    EXPECT_EQ(FileNamePart(state.logo), L"Logo.png");
    EXPECT_EQ(FileNamePart(state.exportPath), L"Skyvault");
    EXPECT_TRUE(FolderExists(state.exportPath));
#ifndef _WIN32
    setenv("HOME", restored.c_str(), 1);
#endif
}

}  // namespace
}  // namespace test
}  // namespace skyvault
