// The console program on a terminal, and where only Linux can make it fail.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "image/picture_files.h"
#include "platform/utf8.h"
#include "tests/child_process.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

/// Runs the program with a terminal of its own as stdout and stderr, and returns what appeared there.
std::string OnATerminal(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ToUtf8(ConsoleProgramPath()));
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        execv(pointers[0], pointers.data());
        _exit(127);
    }
    std::string text;
    char bytes[4096];
    // The read fails once the child has closed its end.
    for (ssize_t n; (n = read(terminal, bytes, sizeof bytes)) > 0;)
        text.append(bytes, static_cast<std::size_t>(n));
    close(terminal);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << text;
    return text;
}

TEST(ConsoleOnATerminal, ShowsAProgressBarAndClearsIt) {
    const TemporaryFolder folder;
    Image picture = RandomImage(2048, 1024, PixelFormat::Rgb8);
    const std::wstring input = folder / L"in.bmp";
    const std::wstring output = folder / L"out.bmp";
    ASSERT_TRUE(SavePicture(picture, input));
    const std::vector<std::string> arguments = {"convert",       "--from",          "equirectangular",
                                                "--to",          "equirectangular", "--set",
                                                "Resolution1=3", ToUtf8(input),     ToUtf8(output)};
    std::string text = OnATerminal(arguments);
    const std::string bar = "\r[";
    const std::size_t first = text.find(bar);
    const std::size_t last = text.rfind(bar);
    ASSERT_NE(first, std::string::npos) << text;
    EXPECT_NE(text.find("Exporting equirectangular...", first), std::string::npos) << text;
    // Behind the last bar only spaces over it, and then the description of the file.
    const std::size_t cleared = text.find('\r', last + 1);
    ASSERT_NE(cleared, std::string::npos) << text;
    EXPECT_EQ(text.substr(cleared + 1, text.find('\r', cleared + 1) - cleared - 1).find_first_not_of(' '),
              std::string::npos);
    EXPECT_GT(text.find("Path\t\t"), cleared) << text;

    std::vector<std::string> quiet = arguments;
    quiet.push_back("--quiet");
    EXPECT_EQ(OnATerminal(quiet), "");
}

TEST(ConsoleOnLinux, AFolderThatTakesNoFilesIsAFailureInOneLine) {
    const TemporaryFolder folder;
    Image picture = RandomImage(64, 32, PixelFormat::Rgb8);
    ASSERT_TRUE(SavePicture(picture, folder / L"in.png"));
    const ProgramResult result = RunConsole({L"convert", L"--from", L"equirectangular", L"--to", L"preview",
                                             folder / L"in.png", L"/proc/out.png"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.err, "skyvault-cli: Could not write \"/proc/out.png\"\n");
}

/// The exit status of the console program, run by a shell with a limit on its memory in bytes.
int StatusWithin(std::size_t limit, const std::vector<std::wstring>& arguments) {
    std::vector<std::wstring> all = {
        L"-c", L"ulimit -d " + std::to_wstring(limit / 1024) + L" && exec \"$0\" \"$@\"",
        ConsoleProgramPath()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return ChildProcess(L"/bin/sh", all).Wait().exitStatus;
}

TEST(ConsoleOnLinux, ConversionsHoldTheirSourceTheirResultAndLittleMore) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer takes memory of its own";
#elif defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer takes memory of its own";
#endif
    constexpr std::size_t kMegabyte = std::size_t{1} << 20;
    constexpr std::size_t kSource = 24 * kMegabyte;  // 4096 x 2048 pixels of 3 bytes
    constexpr std::size_t kFace = 3 * kMegabyte;     // 1024 x 1024
    constexpr std::size_t kSpare =
        16 * kMegabyte;  // 8 of them for the stack of the thread that waits for Ctrl+C
    const TemporaryFolder folder;
    {
        Image picture = RandomImage(4096, 2048, PixelFormat::Rgb8);
        ASSERT_TRUE(SavePicture(picture, folder / L"in.bmp"));
    }
    const struct {
        const wchar_t* to;
        const wchar_t* output;
        const wchar_t* setting;
        std::size_t result;
    } rows[] = {
        {L"equirectangular", L"out.bmp", L"Antialiasing=N", kSource},
        {L"equirectangular", L"out.bmp", L"Antialiasing=Y", kSource},
        {L"single-files", L"out.bmp", L"Antialiasing=N", kFace},
        {L"horizontal-cross", L"out.bmp", L"Antialiasing=N", 12 * kFace},
        // Blocks of that size are aligned to large pages: 2 megabytes of addresses more for each.
        {L"dds", L"out.dds", L"CompressDDS=N", 6 * (kFace * 4 / 3 + 2 * kMegabyte) + kFace},
        {L"dds", L"out.dds", L"CompressDDS=Y", 6 * kFace / 6 + kFace},
    };
    for (const auto& row : rows) {
        const std::vector<std::wstring> arguments = {
            L"convert",       L"--threads", L"1",        L"--from",          L"equirectangular",
            L"--to",          row.to,       L"--set",    L"Resolution0=2",   L"--set",
            L"Resolution1=4", L"--set",     row.setting, folder / L"in.bmp", folder / row.output};
        EXPECT_EQ(StatusWithin(kSource + row.result + kSpare, arguments), 0)
            << ToUtf8(row.to) << " " << ToUtf8(row.setting);
        // The limit is one: without its spare nothing is left for the program itself.
        EXPECT_EQ(StatusWithin(kSource + row.result - kMegabyte, arguments), 1) << ToUtf8(row.to);
    }
}

TEST(ConsoleOnLinux, AMissingModuleIsTold) {
    const TemporaryFolder folder;
    const std::string program = ToUtf8(folder / L"skyvault-cli");
    std::filesystem::copy_file(ToUtf8(ConsoleProgramPath()), program);
    Image picture = RandomImage(64, 32, PixelFormat::Rgb8);
    const auto convert = [&](const wchar_t* input) {
        return ChildProcess(folder / L"skyvault-cli",
                            {L"convert", L"--quiet", L"--from", L"equirectangular", L"--to", L"single-files",
                             folder / input, folder / L"out.bmp"})
            .Wait();
    };
    ASSERT_TRUE(SavePicture(picture, folder / L"in.png"));
    const ProgramResult failed = convert(L"in.png");
    EXPECT_EQ(failed.exitStatus, 1);
    EXPECT_NE(failed.err.find("skyvault-cli: The picture library could not be loaded"), std::string::npos)
        << failed.err;
    EXPECT_NE(failed.err.find(ToUtf8(folder / L"skyvault-oiio.so")), std::string::npos) << failed.err;
    // Plain BMP files need none.
    ASSERT_TRUE(SavePicture(picture, folder / L"in.bmp"));
    const ProgramResult done = convert(L"in.bmp");
    EXPECT_EQ(done.exitStatus, 0) << done.err;
    EXPECT_EQ(done.err, "");
}

}  // namespace
}  // namespace skyvault::test
