// The console program on a terminal, and where only Linux can make it fail.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/files.h"
#include "tests/child_process.h"
#include "tests/made_files.h"

namespace skyvault::test {
namespace {

std::wstring SaveRandom(const std::wstring& path, std::uint32_t width) {
    Image picture = RandomImage(width, width / 2, PixelFormat::Rgb8);
    EXPECT_TRUE(Saved(picture, path));
    return path;
}

/// Runs the program with a terminal of its own, and returns what appeared there.
std::string OnATerminal(const std::wstring& arguments) {
    const std::wstring line = ConsoleProgramPath() + L" " + arguments;
    const ProgramResult result = ChildProcess(L"/usr/bin/script", {L"-qec", line, L"/dev/null"}).Wait();
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    return result.out;
}

TEST(ConsoleOnATerminal, ShowsAProgressBarAndClearsIt) {
    const TemporaryFolder folder;
    const std::wstring arguments =
        L"convert --from equirectangular --to equirectangular --set Resolution1=3 " +
        SaveRandom(folder / L"in.bmp", 2048) + L" " + folder / L"out.bmp";
    const std::string text = OnATerminal(arguments);
    const std::size_t first = text.find("\r["), last = text.rfind("\r[");
    ASSERT_NE(first, std::string::npos) << text;
    EXPECT_NE(text.find("Exporting equirectangular...", first), std::string::npos) << text;
    // Behind the last bar only spaces over it, and then the description of the file.
    const std::size_t cleared = text.find('\r', last + 1), end = text.find('\r', cleared + 1);
    ASSERT_NE(cleared, std::string::npos) << text;
    EXPECT_EQ(text.substr(cleared + 1, end - cleared - 1).find_first_not_of(' '), std::string::npos);
    EXPECT_GT(text.find("Path\t\t"), cleared) << text;

    EXPECT_EQ(OnATerminal(arguments + L" --quiet"), "");
}

TEST(ConsoleOnLinux, ConversionsHoldTheirSourceTheirResultAndLittleMore) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer takes memory of its own";
#endif
    constexpr std::size_t kMegabyte = std::size_t{1} << 20;
    constexpr std::size_t kSource = 24 * kMegabyte;  // 4096 x 2048 pixels of 3 bytes
    constexpr std::size_t kFace = 3 * kMegabyte;     // 1024 x 1024
    // 8 of them for the stack of the thread that waits for Ctrl+C.
    constexpr std::size_t kSpare = 16 * kMegabyte;
    const TemporaryFolder folder;
    SaveRandom(folder / L"in.bmp", 4096);
    const std::pair<std::wstring, std::size_t> rows[] = {
        {L"--to equirectangular --set Antialiasing=N in.bmp out.bmp", kSource},
        {L"--to equirectangular --set Antialiasing=Y in.bmp out.bmp", kSource},
        {L"--to single-files --set Antialiasing=N in.bmp out.bmp", kFace},
        {L"--to horizontal-cross --set Antialiasing=N in.bmp out.bmp", 12 * kFace},
        // Blocks of that size are aligned to large pages: 2 megabytes of addresses more for each.
        {L"--to dds --set CompressDDS=N in.bmp out.dds", 6 * (kFace * 4 / 3 + 2 * kMegabyte) + kFace},
        {L"--to dds --set CompressDDS=Y in.bmp out.dds", 6 * kFace / 6 + kFace},
    };
    for (const auto& [arguments, result] : rows) {
        const auto statusWithin = [&](std::size_t limit) {
            const std::wstring line = L"cd '" + folder.Path() + L"' && ulimit -d " +
                                      std::to_wstring(limit / 1024) + L" && exec '" + ConsoleProgramPath() +
                                      L"' convert --threads 1 --from equirectangular " +
                                      L"--set Resolution0=2 --set Resolution1=4 " + arguments;
            return ChildProcess(L"/bin/sh", {L"-c", line}).Wait().exitStatus;
        };
        EXPECT_EQ(statusWithin(kSource + result + kSpare), 0) << ToUtf8(arguments);
        // The limit is one: without its spare nothing is left for the program itself.
        EXPECT_EQ(statusWithin(kSource + result - kMegabyte), 1) << ToUtf8(arguments);
    }
}

ProgramResult Shell(const std::wstring& line) {
    return ChildProcess(L"/bin/sh", {L"-c", line}).Wait();
}

TEST(ConsoleOnLinux, AStandardOutputThatIsFullOrClosedIsAFailure) {
    const TemporaryFolder folder;
    const std::wstring in = SaveRandom(folder / L"in.bmp", 64), program = L"'" + ConsoleProgramPath() + L"' ";
    const std::wstring convert = program +
                                 L"convert --from equirectangular --to strip --set Resolution0=0 '" + in +
                                 L"' '" + folder / L"out.bmp'";
    for (const std::wstring& line : {program + L"info '" + in + L"' >/dev/full",
                                     program + L"info '" + in + L"' >&-", convert + L" >/dev/full"}) {
        EXPECT_EQ(Shell(line).exitStatus, 1) << ToUtf8(line);
    }
    EXPECT_EQ(Loaded(folder / L"out.bmp").width, 96u) << "no message has got into the file";
}

TEST(ConsoleOnLinux, APictureThatBringsALibraryDownEndsOnlyItself) {
    const TemporaryFolder folder;
    for (const wchar_t* name : {L"a.bmp", L"b.bmp", L"c.bmp"}) SaveRandom(folder / name, 2048);
    ASSERT_TRUE(CreateFolder(folder / L"out"));
    // The worker is killed as soon as there is one, whatever it has done by then.
    const ProgramResult result =
        Shell(L"cd '" + folder.Path() + L"'; '" + ConsoleProgramPath() +
              L"' batch --threads 1 --from equirectangular --to equirectangular . out & " +
              L"while [ -z \"$c\" ] && kill -0 $!; do read c </proc/$!/task/$!/children; done 2>/dev/null; " +
              L"kill -9 $c; wait $!");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.out.find("2 converted, 1 failed, 0 skipped"), std::string::npos)
        << result.out << result.err;
    EXPECT_NE(result.err.find("a picture library broke down on it"), std::string::npos) << result.err;
    EXPECT_EQ(FindFiles(folder / L"out").size(), 2u);
}

TEST(ConsoleOnLinux, AskedForQualityReachesEveryJpeg) {
    const TemporaryFolder folder;
    const std::wstring source = SaveRandom(folder / L"in.bmp", 128);
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {{L"equirectangular", L"a.jpg"},
                                                              {L"single-files", L"a_top.jpg"},
                                                              {L"qtvr", L"a.mov"},
                                                              {L"html", L"a.jpg"}};
    for (const auto& [layout, written] : rows) {
        const std::wstring output = folder / (std::wstring(layout) == L"qtvr" ? L"a.mov" : L"a.jpg");
        std::uint64_t smaller = 0;
        for (const wchar_t* quality : {L"20", L"80", L"95"}) {
            const ProgramResult result =
                ChildProcess(ConsoleProgramPath(), {L"convert", L"--quiet", L"--quality", quality, L"--from",
                                                    L"equirectangular", L"--to", layout, source, output})
                    .Wait();
            ASSERT_EQ(result.exitStatus, 0) << result.err;
            const std::uint64_t size = FileSizeOf(folder / written);
            EXPECT_GT(size, smaller) << ToUtf8(layout) << " " << ToUtf8(quality);
            smaller = size;
        }
    }
}

TEST(ConsoleOnLinux, TwelveProcessesReadOnePicture) {
    const TemporaryFolder folder;
    const std::wstring source = SaveRandom(folder / L"in.jpg", 256);
    std::vector<std::unique_ptr<ChildProcess>> readers;
    for (int i = 0; i < 12; ++i) {
        const std::wstring output = folder / (L"out" + std::to_wstring(i) + L".bmp");
        const std::vector<std::wstring> arguments = {
            L"convert", L"--from", L"equirectangular", L"--to", L"equirectangular", source, output};
        readers.push_back(std::make_unique<ChildProcess>(ConsoleProgramPath(), arguments));
    }
    for (const auto& reader : readers) {
        const ProgramResult result = reader->Wait();
        EXPECT_EQ(result.exitStatus, 0) << result.err;
    }
}

TEST(ConsoleOnLinux, AMissingModuleIsTold) {
    const TemporaryFolder folder;
    std::filesystem::copy_file(ToUtf8(ConsoleProgramPath()), ToUtf8(folder / L"skyvault-cli"));
    const auto convert = [&](const std::wstring& input) {
        return ChildProcess(folder / L"skyvault-cli", {L"convert", L"--quiet", L"--from", L"equirectangular",
                                                       L"--to", L"single-files", input, folder / L"out.bmp"})
            .Wait();
    };
    const ProgramResult failed = convert(folder.Write(L"in.heic", "1234ftypheic"));
    EXPECT_EQ(failed.exitStatus, 1);
    EXPECT_NE(failed.err.find("skyvault-cli: The picture library could not be loaded"), std::string::npos)
        << failed.err;
    EXPECT_NE(failed.err.find(ToUtf8(folder / L"skyvault-oiio.so")), std::string::npos) << failed.err;
    for (const wchar_t* input : {L"in.bmp", L"in.jpg", L"in.png", L"in.tif"}) {
        const ProgramResult done = convert(SaveRandom(folder / input, 64));
        EXPECT_EQ(done.exitStatus, 0) << done.err;
        EXPECT_EQ(done.err, "");
    }
}

}  // namespace
}  // namespace skyvault::test
