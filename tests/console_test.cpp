// The command line of the console program: what it understands and refuses; and the program as its user meets
// it: run with arguments, looked at from outside.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <sstream>

#include "cli/console_feedback.h"
#include "cli/options.h"
#include "codecs/dds_cube_map.h"
#include "codecs/picture_files.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/child_process.h"
#include "tests/picture_io.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

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

const std::string kConvert = "convert --from equirectangular --to ";

class Console : public testing::Test {
  protected:
    std::wstring Save(Image image, const std::wstring& name) const {
        EXPECT_TRUE(Saved(image, folder_ / name)) << ToUtf8(name);
        return folder_ / name;
    }
    std::wstring SaveRandom(const std::wstring& name, std::uint32_t width = 64, std::uint32_t height = 32,
                            PixelFormat format = PixelFormat::Rgb8) const {
        return Save(RandomImage(width, height, format), name);
    }
    Arguments Names() const {
        Arguments names = FindFiles(folder_.Path());
        std::sort(names.begin(), names.end());
        return names;
    }
    const TemporaryFolder folder_;
};

TEST_F(Console, TheSameSeedGeneratesTheSamePicture) {
    const Arguments files = {L"--palette", SaveRandom(L"palette.png", 16, 16), folder_ / L"out.bmp"};
    std::vector<std::string> made;
    for (const char* const seed : {"7", "7", "8"}) {
        const std::string line =
            "generate voronoi --to strip --set Resolution0=0 --set Antialiasing=N --seed ";
        EXPECT_EQ(RunConsole(line + seed, files).exitStatus, 0);
        made.push_back(folder_.Read(L"out.bmp"));
    }
    EXPECT_EQ(Loaded(folder_ / L"out.bmp").width, 6u * 256);
    EXPECT_TRUE(made[0] == made[1] && made[0] != made[2]);
}

TEST_F(Console, TheWrittenFileIsDescribedOnStdoutAndNothingElseIsSaid) {
    const std::wstring output = folder_ / L"\x4e2d\x00fc out.png";
    const Arguments files = {SaveRandom(L"in.bmp", 1024, 512), output};
    ProgramResult result = RunConsole(kConvert + "equirectangular --set Resolution1=0", files);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out, ToUtf8(PictureInfo(output, 256, 128, PixelFormat::Rgb8)));
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(Names(), (Arguments{L"in.bmp", L"\x4e2d\x00fc out.png"}));

    // A source smaller than the result is told of in one line, and not when quiet.
    result = RunConsole(kConvert + "equirectangular", files);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find("1024 x 512"), std::string::npos) << result.err;
    result = RunConsole(kConvert + "equirectangular --quiet", files);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST_F(Console, EveryOptionAndSettingTakesEffect) {
    Image clear(64, 32, PixelFormat::Rgba8), blue(4, 4, PixelFormat::Rgb8);
    clear.Fill(PixelValue(Color8(0, 0, 0, 0)));
    blue.Fill(PixelValue(Color8(0, 0, 200, 255)));
    Save(Drawn(64, 32, PixelFormat::Rgb8,
               [](int x, int y) {
                   return Color8(static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 0, 255);
               }),
         L"in.bmp");
    Save(std::move(clear), L"clear.png");
    const std::wstring logo = L"Logo=" + Save(std::move(blue), L"a=logo b.bmp");
    folder_.Write(L"settings.txt", "Resolution3\t1\r\n");
    for (const DataRow& row : DataTable("converted_pixels")) {
        SCOPED_TRACE(row.where);
        Arguments arguments = ArgumentsOf(row, folder_.Path());
        arguments.insert(arguments.end(), {L"--set", logo, L"--set", L"Antialiasing=N"});
        EXPECT_EQ(RunConsole(arguments).exitStatus, 0);
        const Image picture = Loaded(folder_ / (row[2] == "@in.bmp" ? L"out.bmp" : L"out.png"));
        std::istringstream numbers(row[0]);
        const std::vector<int> n(std::istream_iterator<int>(numbers), {});
        ASSERT_EQ(picture.width, static_cast<std::uint32_t>(n.at(0)));
        const Color8 seen = picture.GetPixel8(n[1], n[2]);
        EXPECT_EQ((std::vector<int>{seen.red, seen.green, seen.blue, seen.alpha}),
                  std::vector<int>(n.begin() + 3, n.end()));
    }
}

TEST_F(Console, FailuresSayWhyInOneLineAndLeaveNothingBehind) {
    SaveRandom(L"in.png");
    SaveRandom(L"older.png");
    const std::string older = folder_.Read(L"older.png");
    folder_.Write(L"cut.png", folder_.Read(L"in.png").substr(0, 700));
    folder_.Write(L"text.jpg", "no picture");
    folder_.Write(L"no.dds", "no cube map");
    folder_.Write(L"mine.html", "mine");
    ASSERT_TRUE(CreateFolder(folder_ / L"sub") && CreateFolder(folder_ / L"room_left.png"));
    const Arguments before = Names();
    for (const DataRow& row : DataTable("failing_commands")) {
        SCOPED_TRACE(row.where);
        const std::wstring file = row[0] == "@" ? folder_.Path() : folder_ / FromUtf8(row[0].substr(1));
        const std::string reason = row[0].starts_with('@') ? '"' + ToUtf8(file) + '"' : row[0];
        const ProgramResult result = RunConsole(ArgumentsOf(row, folder_.Path()));
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.out, "");
        // A source too small for the chosen size, or a missing face, is told of before the failure.
        const std::size_t last = result.err.rfind("skyvault-cli: ");
        ASSERT_NE(last, std::string::npos) << result.err;
        EXPECT_NE(result.err.find(reason, last), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find('\n', last) + 1, result.err.size()) << result.err;
        EXPECT_TRUE(Names() == before && FindFiles(folder_ / L"sub").empty());
        EXPECT_EQ(folder_.Read(L"older.png"), older);
    }
}

TEST_F(Console, SingleFilesAreWrittenBesideTheOutputsNameAndReadAgain) {
    const std::wstring input = SaveRandom(L"in.png", 64, 32, PixelFormat::Rgb16);
    ProgramResult result =
        RunConsole(kConvert + "single-files --set FileNamingSystem=5", {input, folder_ / L"room.png"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    std::string described;
    Arguments files;
    for (int f = 0; f < 6; ++f) {
        files.push_back(folder_ / (L"room" + std::to_wstring(f) + L".png"));
        described += ToUtf8(PictureInfo(files.back(), 16, 16, PixelFormat::Rgb16));
    }
    EXPECT_EQ(result.out, described);

    // What cannot be read is told of, and white.
    files[3] = folder_ / L"missing.png";
    files.push_back(folder_ / L"strip.png");
    result = RunConsole("convert --from single-files --to strip", files);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_NE(result.err.find("missing.png\": there is no such file; there is no left face\n"),
              std::string::npos)
        << result.err;
    const Image strip = Loaded(folder_ / L"strip.png");
    ASSERT_TRUE(strip.width == 96 && strip.format == PixelFormat::Rgb16);
    EXPECT_EQ(strip.GetPixel16(3 * 16 + 8, 8), Color16(65535, 65535, 65535, 65535));
    EXPECT_EQ(strip.GetPixel16(16, 0), Loaded(folder_ / L"room1.png").GetPixel16(0, 0));
}

TEST_F(Console, WrongUsageHelpAndVersionHaveTheirExitStatusAndStream) {
    for (const auto& [where, exitStatus, text, line] :
         TableOf<int, std::string, std::string>("console_answers")) {
        const ProgramResult result = RunConsole(line, {});
        EXPECT_EQ(result.exitStatus, exitStatus) << where;
        const auto& [said, silent] =
            exitStatus == 0 ? std::tie(result.out, result.err) : std::tie(result.err, result.out);
        EXPECT_NE(said.find(text), std::string::npos) << where << said;
        EXPECT_EQ(silent, "") << where;
    }
}

TEST_F(Console, InfoDescribesPicturesAndCubeMaps) {
    const std::wstring path = SaveRandom(L"\x00e4 b.png", 403, 10);
    // The program itself, once: its arguments, its streams and its exit status are the system's.
    const ProgramResult result = ChildProcess(ConsoleProgramPath(), {L"info", path}).Wait();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, ToUtf8(PictureInfo(path, 403, 10, PixelFormat::Rgb8)) +
                              "Frames\t\t1\nPanorama\tfaces 100 x 100\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(ChildProcess(ConsoleProgramPath(), {L"info", folder_ / L"none"}).Wait().exitStatus, 1);

    const std::wstring cube = folder_ / L"out.DDS";
    EXPECT_EQ(RunConsole(kConvert + "dds --set Resolution0=0", {path, cube}).exitStatus, 0);
    EXPECT_EQ(RunConsole({L"info", cube}).out, ToUtf8(CubeMapInfo(cube, 128, PixelFormat::Rgba8)));
}

TEST_F(Console, AnInterruptionLeavesNothingBehind) {
    // Random pixels take the encoder its time.
    const std::wstring input = SaveRandom(L"in.bmp", 4096, 2048);
    ChildProcess process(ConsoleProgramPath(),
                         {L"convert", L"--from", L"equirectangular", L"--to", L"equirectangular", L"--set",
                          L"Antialiasing=N", input, folder_ / L"out.png"},
                         true);
    while (folder_.FileCount() < 2 && !process.HasEnded()) SleepMilliseconds(2);
    if (!process.Interrupt()) GTEST_SKIP() << "no console to interrupt from";
    const ProgramResult result = process.Wait();
    EXPECT_EQ(result.exitStatus, 130) << result.out << result.err;
    EXPECT_EQ(result.err, "skyvault-cli: interrupted\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(Names(), Arguments{L"in.bmp"});
}

// The batch command as a script meets it.
class ConsoleBatch : public Console {
  protected:
    void SetUp() override {
        ASSERT_TRUE(CreateFolder(in_) && CreateFolder(out_));
        for (const wchar_t* const name : {L"in/a.bmp", L"in/b.png", L"in/c.jpg"}) SaveRandom(name);
    }
    ProgramResult Run(const std::string& more) const {
        return RunConsole("batch --from equirectangular --set Antialiasing=N " + more, {in_, out_});
    }

    const std::wstring in_ = folder_ / L"in", out_ = folder_ / L"out";
};

TEST_F(ConsoleBatch, WhatFailsIsToldAndTheRestIsResumedByTwoMachines) {
    const std::wstring cut = folder_.Write(L"in/p cut.jpg", folder_.Read(L"in/c.jpg").substr(0, 300));
    folder_.Write(L"in/notes.txt", "no panorama");
    const std::string work = "--to heart --extension bmp --set Resolution2=0";
    ProgramResult result = Run(work);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.out.ends_with("\n3 converted, 1 failed, 0 skipped\n")) << result.out;
    const std::string line =
        "converted\t" + ToUtf8(JoinPath(in_, L"b.png") + L"\t" + JoinPath(out_, L"b.bmp"));
    EXPECT_NE(result.out.find(line + "\n"), std::string::npos) << result.out;
    EXPECT_EQ(result.err, "skyvault-cli: Could not open \"" + ToUtf8(JoinPath(in_, L"p cut.jpg")) +
                              "\": it is cut short\n");
    EXPECT_EQ(FindFiles(out_).size(), 3u);

    ASSERT_TRUE(RemoveFile(JoinPath(out_, L"c.bmp")) && RemoveFile(JoinPath(in_, L"p cut.jpg")));
    const char* const summaries[] = {"\n0 converted, 0 failed, 1 skipped\n",
                                     "\n1 converted, 0 failed, 1 skipped\n"};
    for (int k = 1; k <= 2; ++k) {
        result = Run(work + " --skip-existing --shard " + std::to_string(k) + "/2");
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        EXPECT_TRUE(result.out.ends_with(summaries[k - 1])) << result.out;
    }
}

TEST_F(ConsoleBatch, CubeMapsGetTheEncodingAndLevelsAskedFor) {
    EXPECT_EQ(Run("--to dds --dds half --mips").exitStatus, 0);
    EXPECT_EQ(RunConsole(kConvert + "dds --dds rgba16", {in_ + L"/a.bmp", folder_ / L"one.dds"}).exitStatus,
              0);
    DdsMetadata batch, one;
    EXPECT_TRUE(ReadDdsMetadata(JoinPath(out_, L"cubemap_b.dds"), batch) &&
                ReadDdsMetadata(folder_ / L"one.dds", one));
    EXPECT_TRUE(batch.format == DdsFormat::Rgba16Float && batch.mipLevels == 5);
    EXPECT_TRUE(one.format == DdsFormat::Rgba16Unorm && one.mipLevels == 1);
}

TEST_F(ConsoleBatch, OptionsReachEveryPanorama) {
    ASSERT_TRUE(RemoveFile(JoinPath(in_, L"c.jpg")));
    const std::string work = "--to equirectangular --extension bmp --quiet";
    const auto results = [&] {
        return std::pair(Loaded(JoinPath(out_, L"a.bmp")), Loaded(JoinPath(out_, L"b.bmp")));
    };
    EXPECT_EQ(Run(work).exitStatus, 0);
    const auto [a, b] = results();
    const ProgramResult result = Run(work + " --turn 90,0,0 --threads 1");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out + result.err, "");
    const auto [turnedA, turnedB] = results();
    EXPECT_EQ(turnedA.GetPixel8(20, 16), a.GetPixel8(36, 16));
    EXPECT_EQ(turnedB.GetPixel8(20, 16), b.GetPixel8(36, 16));
}

}  // namespace
}  // namespace skyvault::test
