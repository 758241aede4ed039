#include "settings/settings_file.h"
#include "session/messages.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/utf8.h"
#include "settings/settings_table.h"
#include "settings/text_file.h"
#include "tests/data_table.h"
#include "tests/temporary_folder.h"

namespace skyvault {

inline void PrintTo(const ScreenRect& r, std::ostream* out) {
    *out << r.left << ',' << r.top << ',' << r.right << ',' << r.bottom;
}

namespace test {
namespace {

constexpr ScreenRect kScreen{0, 0, 1920, 1080};

/// A record in which no field has its default, and no two numbers are alike.
AppState UnusualState() {
    AppState state;
    int number = 300;
    for (const Setting& setting : SettingsTable()) {
        const std::wstring whole = std::to_wstring(++number);
        // Each type takes the first of these that it can hold and that is not its default.
        for (const std::wstring& text : {L"C:\\My \"\u00e4\U0001F600\"\t\r\n" + whole, std::wstring(L"1,2,3"),
                                         std::wstring(L"10,20,1010,720"), std::wstring(L"Y"),
                                         std::wstring(L"N"), L"-" + whole + L".25", L"-" + whole}) {
            const auto changed = [&](auto field) { return state.*field != AppState().*field; };
            if (SetFromText(state, setting, text) && std::visit(changed, setting.field)) break;
        }
    }
    return state;
}

void ExpectEqual(const AppState& a, const AppState& b) {
    for (const Setting& setting : SettingsTable()) {
        EXPECT_TRUE(std::visit([&](auto field) { return a.*field == b.*field; }, setting.field))
            << ToUtf8(setting.key);
    }
}

/// The defaults with one setting changed.
AppState Set(std::wstring_view key, const std::string& value) {
    AppState state;
    EXPECT_TRUE(SetFromText(state, *FindSetting(key), FromUtf8(value))) << value;
    return state;
}

class SettingsFile : public testing::Test {
  protected:
    const TemporaryFolder folder;
    const std::wstring path = folder / L"Skyvault.txt";
    AppState loaded;
};

TEST_F(SettingsFile, EveryFieldReadsBack) {
    ASSERT_TRUE(SaveSettings(UnusualState(), path).IsDone());
    LoadSettings(loaded, path, kScreen);
    ExpectEqual(loaded, UnusualState());
    EXPECT_TRUE(loaded.settingsLoaded);
}

TEST_F(SettingsFile, DefaultsAreWrittenInTheFixedOrder) {
    AppState state;
    state.importPath = L"C:\\Program Files\\Skyvault\\Media\\Examples";
    state.exportPath = L"C:\\Exports";
    state.logo = L"C:\\Logo.png";
    state.windowRect = {32, 32, 1765, 1016};
    const std::string bytes = WrittenSettings(state).Bytes();
    EXPECT_TRUE(bytes.starts_with("\xFF\xFE"));
    std::string expected;
    for (const DataRow& row : DataTable("default_settings")) {
        for (const std::string& cell : row.cells) expected += cell + '\t';
        expected.replace(expected.size() - 1, 1, "\r\n");
    }
    TextEncoding encoding{};
    EXPECT_EQ(ToUtf8(DecodeText(std::as_bytes(std::span(bytes)), encoding)), expected);
}

TEST_F(SettingsFile, LinesAreReadLeniently) {
    for (const DataRow& row : DataTable("settings_lines")) {
        SCOPED_TRACE(row.where);
        const std::string bytes = row.Text(0);
        loaded = AppState();
        TextFileReader file;
        file.Start(std::as_bytes(std::span(bytes)));
        ReadSettings(loaded, file, kScreen);
        ExpectEqual(loaded, Set(FromUtf8(row[1]), row[2]));
    }
}

TEST_F(SettingsFile, AMissingFileLeavesEverythingAndIsWritten) {
    loaded = UnusualState();
    LoadSettings(loaded, path, kScreen);
    ExpectEqual(loaded, UnusualState());
    EXPECT_FALSE(loaded.settingsLoaded);
    EXPECT_TRUE(SaveSettings(loaded, path).IsDone());
    EXPECT_FALSE(folder.Read(L"Skyvault.txt").empty()) << "the first run writes the file";
}

TEST_F(SettingsFile, AFileThatWasNotReadIsNeverOverwritten) {
    folder.Write(L"Skyvault.txt", "View\t3\r\n");
    EXPECT_TRUE(SaveSettings(AppState(), path).IsDone()) << "nobody is bothered";
    EXPECT_EQ(folder.Read(L"Skyvault.txt"), "View\t3\r\n");

    std::filesystem::resize_file(folder.SystemPath(L"Skyvault.txt"), 17 << 20);
    LoadSettings(loaded, path, kScreen);
    EXPECT_FALSE(loaded.settingsLoaded);
    EXPECT_EQ(loaded.view, 0);
}

TEST_F(SettingsFile, AFailedSaveNamesThePath) {
    const std::wstring none = JoinPath(folder / L"missing\u00e4", L"Skyvault.txt");
    EXPECT_EQ(MessageOf(SaveSettings(AppState(), none)), L"Could not open:\n\n\"" + none + L"\"");
}

TEST_F(SettingsFile, OlderSettingsMoveOnceAndReplaceNothing) {
    for (const DataRow& row : DataTable("older_settings")) {
        SCOPED_TRACE(row.where);
        const TemporaryFolder program;
        ASSERT_TRUE(CreateFolder(program / L"data"));
        const wchar_t* const names[] = {L"Skyvault.ini", L"Skyvault.txt", L"data/Skyvault.txt"};
        for (std::size_t i = 0; i < 3; ++i) {
            if (row[i] != "-") program.Write(names[i], row[i]);
        }
        MoveOlderSettings(program.Path(), program / names[2]);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(program.Read(names[i]), row[i + 3] == "-" ? "" : row[i + 3]) << i;
        }
    }
}

TEST(SettingsTable, SetFromTextTakesOnlyWholeValues) {
    for (const DataRow& row : DataTable("setting_values")) {
        SCOPED_TRACE(row.where);
        AppState state;
        const Setting* const setting = FindSetting(FromUtf8(row[0]));
        ASSERT_NE(setting, nullptr);
        const bool accepted = row[2] == "Y";
        EXPECT_EQ(SetFromText(state, *setting, FromUtf8(row[1])), accepted);
        const auto changed = [&](auto field) { return state.*field != AppState().*field; };
        EXPECT_EQ(std::visit(changed, setting->field), accepted);
    }
    EXPECT_EQ(FindSetting(L"crosshair"), nullptr);
    EXPECT_EQ(Set(L"BackgroundColour", "1,2,3").backgroundColour, Color8(1, 2, 3, 255));
}

TEST(WindowRect, IsFittedToTheVirtualScreenAndByDefaultAsTallAsItAllows) {
    for (const DataRow& row : DataTable("fitted_windows")) {
        const auto rect = [&](std::size_t cell) { return Set(L"WindowRect", row[cell]).windowRect; };
        const ScreenRect screen = rect(1);
        EXPECT_EQ(row[0] == "-" ? DefaultWindowRect(screen.right, screen.bottom, screen)
                                : FitToScreen(rect(0), screen),
                  rect(2))
            << row.where;
    }
}

TEST(AppState, PathsStartBesideTheProgram) {
    const OwnTemporaryFiles home;
    const AppState state = DefaultAppState();
    const std::wstring media = JoinPath(ProgramFolder(), L"Media");
    EXPECT_EQ(state.importPath, JoinPath(media, L"Examples"));
    EXPECT_EQ(state.logo, JoinPath(JoinPath(media, L"Skins"), L"Logo.png"));
    EXPECT_EQ(state.exportPath, DocumentsFolder());
}

}  // namespace
}  // namespace test
}  // namespace skyvault
