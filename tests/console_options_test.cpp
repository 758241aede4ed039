// The command line of the console program: what it understands and what it refuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>

#include "cli/console_feedback.h"
#include "cli/options.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

using Arguments = std::vector<std::wstring>;

Arguments Convert(const Arguments& more) {
    Arguments all = {L"convert", L"--from", L"equirectangular", L"--to", L"preview", L"in.png", L"out.png"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

ConvertOptions Understood(const Arguments& arguments) {
    const Command command = ParseArguments(arguments);
    if (const auto* announcement = std::get_if<Announcement>(&command)) {
        ADD_FAILURE() << ToUtf8(announcement->text);
        return {};
    }
    return std::get<ConvertOptions>(command);
}

TEST(ConsoleOptions, WithoutOptionsNothingIsModified) {
    const ConvertOptions options = Understood(Convert({}));
    EXPECT_EQ(options.from->format, PanoramaFormat::Equirectangular);
    EXPECT_EQ(options.to->format, PanoramaFormat::Preview);
    EXPECT_EQ(options.inputs, Arguments{L"in.png"});
    EXPECT_EQ(options.output, L"out.png");
    EXPECT_TRUE(options.settings.empty() && options.turns.empty() && options.settingsFile.empty());
    EXPECT_FALSE(options.horizon || options.logoSize || options.quiet);
    EXPECT_FALSE(options.flipHorizontal || options.mirrorTopToBottom || options.mirrorFrontToBack);
}

TEST(ConsoleOptions, RepeatedOptionsKeepTheirOrderAndLeaveTheFilesAlone) {
    const ConvertOptions options = Understood(
        {L"convert", L"--turn", L"-90,0.5,1e1", L"--set", L"Antialiasing=N", L"--from", L"equirectangular",
         L"--turn=0,-2,0", L"a b.png", L"--to", L"equirectangular", L"--set", L"Logo=x=y z", L"\x00fc.png"});
    ASSERT_EQ(options.turns.size(), 2u);
    EXPECT_EQ(options.turns[0].heading, -90);
    EXPECT_EQ(options.turns[0].pitch, 0.5f);
    EXPECT_EQ(options.turns[0].roll, 10);
    EXPECT_EQ(options.turns[1].pitch, -2);
    ASSERT_EQ(options.settings.size(), 2u);
    EXPECT_EQ(options.settings[0].first->key, std::wstring(L"Antialiasing"));
    EXPECT_EQ(options.settings[1].second, L"x=y z");
    EXPECT_EQ(options.inputs, Arguments{L"a b.png"});
    EXPECT_EQ(options.output, L"\x00fc.png");
}

TEST(ConsoleOptions, PathsAreNoOptions) {
    EXPECT_EQ(
        Understood({L"convert", L"--from", L"equirectangular", L"--to", L"preview", L"/from", L"/h"}).output,
        L"/h");
    EXPECT_EQ(
        Understood({L"convert", L"--from", L"equirectangular", L"--to", L"preview", L"--", L"-in", L"--to"})
            .inputs,
        Arguments{L"-in"});
    EXPECT_EQ(std::get<InfoOptions>(ParseArguments({L"info", L"\x00e9.jpg"})).path, L"\x00e9.jpg");
}

TEST(ConsoleOptions, SingleFilesAreSixInOrder) {
    const Arguments six = {L"f", L"r", L"b", L"l", L"t", L"d"};
    Arguments arguments = {L"convert", L"--from", L"single-files", L"--to", L"equirectangular"};
    arguments.insert(arguments.end(), six.begin(), six.end());
    arguments.push_back(L"out.png");
    EXPECT_EQ(Understood(arguments).inputs, six);
    EXPECT_EQ(Understood(arguments).output, L"out.png");
}

TEST(ConsoleOptions, WrongUsageIsRefusedWithItsReasonAndAHint) {
    const struct {
        Arguments arguments;
        const char* reason;
    } rows[] = {
        {{}, "convert, generate, batch or info"},
        {{L"convrt"}, "convrt"},
        {{L"--frm"}, "--frm"},
        {{L"info"}, "FILE"},
        {{L"info", L""}, "empty"},
        {{L"info", L"a", L"b"}, "b"},
        {{L"convert", L"a", L"b"}, "--from"},
        {{L"convert", L"--from"}, "--from"},
        {{L"convert", L"--form", L"x", L"a", L"b"}, "--form"},
        {{L"convert", L"--from", L"nothing", L"--to", L"preview", L"a", L"b"}, "nothing"},
        {{L"convert", L"--from", L"Strip", L"--to", L"preview", L"a", L"b"}, "Strip"},
        {{L"convert", L"--from", L"preview", L"--to", L"preview", L"a", L"b"}, "after --to only"},
        {{L"convert", L"--from", L"html", L"--to", L"preview", L"a", L"b"}, "after --to only"},
        {{L"convert", L"--from", L"voronoi", L"--to", L"preview", L"a", L"b"}, "voronoi"},
        {{L"convert", L"--from", L"strip", L"--to", L"football", L"a", L"b"}, "football"},
        {{L"convert", L"--from", L"strip", L"--to", L"preview", L"a"}, "one INPUT"},
        {{L"convert", L"--from", L"strip", L"--to", L"preview", L"a", L"b", L"c"}, "one INPUT"},
        {{L"convert", L"--from", L"strip", L"--to", L"preview", L"a", L""}, "empty"},
        {{L"convert", L"--from", L"single-files", L"--to", L"preview", L"a", L"b"}, "six INPUTs"},
        {Convert({L"--set", L"Transparency"}), "KEY=VALUE"},
        {Convert({L"--set", L"transparency=Y"}), "transparency"},
        {Convert({L"--set", L"Transparency=y"}), "Y or N"},
        {Convert({L"--set", L"Resolution0=big"}), "whole number"},
        {Convert({L"--set", L"Resolution0="}), "whole number"},
        {Convert({L"--set", L"PreviewFOV=0,5"}), "a number"},
        {Convert({L"--set", L"BackgroundColour=1,2,256"}), "RED,GREEN,BLUE"},
        {Convert({L"--set", L"WindowRect=1,2,3"}), "LEFT,TOP"},
        {Convert({L"--set"}), "--set"},
        {Convert({L"--turn", L"90"}), "--turn"},
        {Convert({L"--turn", L"1,2,3,4"}), "--turn"},
        {Convert({L"--turn", L"1,,3"}), "--turn"},
        {Convert({L"--camera", L"1,2,x"}), "--camera"},
        {Convert({L"--camera", L""}), "--camera"},
        {Convert({L"--horizon", L"high"}), "--horizon"},
        {Convert({L"--horizon", L"inf"}), "--horizon"},
        {Convert({L"--logo-size", L"1.01"}), "0 to 1"},
        {Convert({L"--logo-size", L"-0.1"}), "0 to 1"},
        {Convert({L"--logo-size", L"nan"}), "--logo-size"},
        {Convert({L"--threads", L"-1"}), "--threads"},
        {Convert({L"--threads", L"many"}), "--threads"},
        {Convert({L"--mirror"}), "--mirror"},
        {{L"generate", L"voronoi", L"--to", L"dds", L"a"}, "--palette"},
        {{L"generate", L"strip", L"--palette", L"p", L"--to", L"dds", L"a"}, "no generator"},
        {{L"generate", L"preview", L"--palette", L"p", L"--to", L"dds", L"a"}, "no generator"},
        {{L"generate", L"blobs", L"--palette", L"p", L"--to", L"blobs", L"a"}, "--to"},
        {{L"generate", L"blobs", L"--palette", L"p", L"--to", L"dds"}, "one OUTPUT"},
        {{L"generate", L"blobs", L"--palette", L"p", L"--to", L"dds", L"a", L"b"}, "one OUTPUT"},
        {{L"generate", L"blobs", L"--palette", L"p", L"--seed", L"-1", L"--to", L"dds", L"a"}, "--seed"},
    };
    for (const auto& row : rows) {
        std::string line;
        for (const std::wstring& argument : row.arguments) line.append(" ").append(ToUtf8(argument));
        SCOPED_TRACE(line);
        const Command command = ParseArguments(row.arguments);
        const auto* refusal = std::get_if<Announcement>(&command);
        ASSERT_NE(refusal, nullptr);
        EXPECT_EQ(refusal->status, kWrongUsage);
        const std::string text = ToUtf8(refusal->text);
        EXPECT_NE(text.find(row.reason), std::string::npos) << text;
        EXPECT_NE(text.find("\nTry \"skyvault-cli "), std::string::npos) << text;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2) << text;
    }
}

TEST(ConsoleOptions, TheManualHoldsTheHelpInFull) {
    std::ifstream file(SKYVAULT_SOURCE_DIR "/docs/console-help.md", std::ios::binary);
    const std::string manual{std::istreambuf_iterator<char>(file), {}};
    const std::vector<std::wstring> help = {L"--help"};
    for (const wchar_t* command : {L"", L"convert", L"generate", L"batch", L"info"}) {
        std::vector<std::wstring> arguments = help;
        if (*command) arguments.insert(arguments.begin(), command);
        const std::string text = ToUtf8(std::get<Announcement>(ParseArguments(arguments)).text);
        EXPECT_NE(manual.find("```text\n" + text + "```\n"), std::string::npos)
            << "write it anew with tools/make_console_help.sh:\n"
            << text;
    }
}

TEST(ConsoleFeedback, ProgressLinesFitATerminalWhateverTheyAreGiven) {
    const std::wstring longText(200, L'x');
    for (const float fraction :
         {-1.0f, 0.0f, 0.004f, 0.5f, 1.0f, 7.0f, std::numeric_limits<float>::quiet_NaN()}) {
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
}  // namespace skyvault
