// The command line of the console program: what it understands and what it refuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>

#include "cli/console_feedback.h"
#include "cli/options.h"
#include "platform/utf8.h"
#include "tests/child_process.h"

namespace skyvault::test {
namespace {

using Arguments = std::vector<std::wstring>;

/// What "convert --from LAYOUT --to preview ..." is understood as.
ConvertOptions Understood(const wchar_t* from, const Arguments& more) {
    Arguments arguments = {L"convert", L"--from", from, L"--to", L"preview"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return std::get<ConvertOptions>(ParseArguments(arguments));
}

TEST(ConsoleOptions, PathsAreNoOptionsAndSixAreInOrder) {
    EXPECT_EQ(Understood(L"strip", {L"/from", L"/h"}).output, L"/h");
    EXPECT_EQ(Understood(L"strip", {L"--", L"-in", L"--to"}).inputs, Arguments{L"-in"});
    EXPECT_EQ(std::get<InfoOptions>(ParseArguments({L"info", L"\x00e9.jpg"})).path, L"\x00e9.jpg");
    const Arguments six = {L"f", L"r", L"b", L"l", L"t", L"d"};
    EXPECT_EQ(Understood(L"single-files", {L"f", L"r", L"b", L"l", L"t", L"d", L"out"}).inputs, six);
}

TEST(ConsoleOptions, WrongUsageIsRefusedWithItsReasonAndAHint) {
    for (const DataRow& row : DataTable("usage_errors")) {
        SCOPED_TRACE(row.where);
        const Command command = ParseArguments(ArgumentsOf(row));
        const auto* refusal = std::get_if<Announcement>(&command);
        ASSERT_NE(refusal, nullptr);
        EXPECT_EQ(refusal->status, kWrongUsage);
        const std::string text = ToUtf8(refusal->text);
        EXPECT_NE(text.find(row[0]), std::string::npos) << text;
        EXPECT_NE(text.find("\nTry \"skyvault-cli "), std::string::npos) << text;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2) << text;
    }
}

TEST(ConsoleOptions, TheManualHoldsTheHelpInFull) {
    std::ifstream file(SKYVAULT_SOURCE_DIR "/docs/console-help.md", std::ios::binary);
    const std::string manual{std::istreambuf_iterator<char>(file), {}};
    for (const wchar_t* command : {L"", L"convert", L"generate", L"batch", L"info"}) {
        Arguments arguments = {command, L"--help"};
        if (*command == L'\0') arguments.erase(arguments.begin());
        const std::string text = ToUtf8(std::get<Announcement>(ParseArguments(arguments)).text);
        EXPECT_NE(manual.find("```text\n" + text + "```\n"), std::string::npos)
            << "write it anew with tools/make_console_help.sh:\n"
            << text;
    }
}

TEST(ConsoleFeedback, ProgressLinesFitATerminalWhateverTheyAreGiven) {
    const std::wstring longText(200, L'x');
    constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
    for (const float fraction : {-1.0f, 0.0f, 0.004f, 0.5f, 1.0f, 7.0f, kNoNumber}) {
        const std::wstring line = ProgressLine(fraction, longText);
        EXPECT_EQ(line.size(), 78u) << fraction;
        EXPECT_EQ(line.find(L" %"), ProgressLine(0, L"").find(L" %")) << fraction;
    }
    EXPECT_NE(ProgressLine(1, L"").find(L"[########################] 100 %"), std::wstring::npos);
    EXPECT_NE(ProgressLine(0.5f, L"").find(L"[############............]  50 %"), std::wstring::npos);
}

TEST(ConsoleFeedback, MessageBoxTextsBecomeOneLine) {
    EXPECT_EQ(OnOneLine(L"Too low\n\nIt will be 64 x 32"), L"Too low. It will be 64 x 32");
    EXPECT_EQ(OnOneLine(L"Could not open:\n\n\"a\"\r\n"), L"Could not open: \"a\"");
    EXPECT_EQ(OnOneLine(L"\n"), L"");
}

}  // namespace
}  // namespace skyvault::test
