// The console program on a terminal, and where only Linux can make it fail.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

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

}  // namespace
}  // namespace skyvault::test
