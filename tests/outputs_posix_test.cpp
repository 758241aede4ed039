// What stands where a result is to be written: links, pipes, other programs' leftovers, no room.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "platform/files.h"
#include "platform/output_file.h"
#include "platform/path_text.h"
#include "platform/process.h"
#include "platform/utf8.h"
#include "settings/text_file.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;

Outcome Write(const std::wstring& path) {
    return WriteTextFile(path, L"new", TextEncoding::Utf8);
}

std::string Of(const std::wstring& path) {
    return ToSystemBytes(path);
}

TEST(Outputs, AreWrittenThroughLinksAndKeepTheModeOfWhatTheyReplace) {
    const TemporaryFolder folder;
    const std::wstring file = folder.Write(L"file", "old"), link = folder / L"link", far = folder / L"far";
    chmod(Of(file).c_str(), 0640);
    fs::create_symlink("file", Of(link));
    fs::create_symlink(Of(link), Of(far));
    for (const std::wstring& path : {link, far}) {
        EXPECT_TRUE(Write(path).IsDone());
        EXPECT_TRUE(fs::is_symlink(Of(path)));
    }
    EXPECT_EQ(FileSizeOf(file), 6u);  // the mark and three letters
    EXPECT_EQ(fs::status(Of(file)).permissions(), fs::perms{0640});
    EXPECT_EQ(FindFiles(folder.Path()).size(), 3u);
}

TEST(Outputs, SayWhyTheyCannotBeWritten) {
    const TemporaryFolder folder;
    const std::wstring pipe = folder / L"pipe", loose = folder / L"loose",
                       held = folder.Write(L"held", "old");
    ASSERT_EQ(mkfifo(Of(pipe).c_str(), 0600), 0);
    fs::create_symlink("nowhere", Of(loose));
    const struct {
        std::wstring path;
        Cause cause;
    } rows[] = {
        {pipe, Cause::NotAPlainFile},
        {loose, Cause::NotAPlainFile},
        {folder.Path(), Cause::IsFolder},
        {folder / L"none/file", Cause::NoFolder},
        {folder / std::wstring(300, L'x'), Cause::NameTooLong},
    };
    for (const auto& row : rows) {
        const Outcome outcome = Write(row.path);
        EXPECT_EQ(outcome.reason, Reason::CannotWrite) << Of(row.path);
        EXPECT_EQ(outcome.cause, row.cause) << Of(row.path);
        EXPECT_EQ(outcome.file, row.path);
    }
    EXPECT_TRUE(fs::is_fifo(Of(pipe)) && fs::is_symlink(Of(loose)));
    const auto before = signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
    const Outcome full = Write(held);
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, before);
    EXPECT_EQ(full.cause, Cause::FileTooLarge);
    EXPECT_EQ(FileSizeOf(held), 3u);
    EXPECT_EQ(FindFiles(folder.Path()).size(), 3u);                 // nothing half-written stays
    EXPECT_TRUE(Write(folder / std::wstring(250, L'x')).IsDone());  // with room for no more beside it
}

TEST(Outputs, WhatAKilledProgramLeftIsRemovedAndNothingElse) {
    const TemporaryFolder folder;
    const pid_t gone = fork();
    if (gone == 0) _exit(0);
    ASSERT_EQ(waitpid(gone, nullptr, 0), gone);
    const OutputFile mine(folder / L"a.png");
    const std::wstring name(FileNamePart(mine.TemporaryPath()));
    EXPECT_TRUE(name.starts_with(L".a.png.") && name.ends_with(L".part"));
    const std::wstring own = std::to_wstring(ProcessId()), other = std::to_wstring(gone);
    std::wstring left = name;
    left.replace(left.find(own), own.size(), other);
    std::wstring elsewhere = left;
    elsewhere[elsewhere.size() - 6] = elsewhere[elsewhere.size() - 6] == L'0' ? L'1' : L'0';
    const std::wstring unlike[] = {elsewhere, left.substr(1), L".a.part", L".a.png." + other + L".part"};
    folder.Write(left, "half");
    for (const std::wstring& kept : unlike) folder.Write(kept, "whole");
    RemoveAbandonedOutputs(folder.Path());
    EXPECT_FALSE(FileExists(folder / left));
    EXPECT_TRUE(FileExists(mine.TemporaryPath()));
    for (const std::wstring& kept : unlike) EXPECT_TRUE(FileExists(folder / kept)) << Of(kept);
}

TEST(Outputs, OnePlaceIsKnownUnderAllItsNames) {
    const TemporaryFolder folder;
    const std::wstring file = folder.Write(L"file", "x"), hard = folder / L"hard", soft = folder / L"soft";
    fs::create_hard_link(Of(file), Of(hard));
    fs::create_symlink("file", Of(soft));
    fs::create_directory_symlink(".", Of(folder / L"again"));
    for (const std::wstring& same : {file, soft, folder / L"again/file", folder / L"./again/./file"}) {
        EXPECT_TRUE(SamePlace(file, same)) << Of(same);
    }
    // Replacing one name of two leaves the other.
    for (const std::wstring& other : {hard, folder / L"File", folder / L"none/file"}) {
        EXPECT_FALSE(SamePlace(file, other)) << Of(other);
    }
}

TEST(SystemBytes, EveryNameComesBack) {
    const TemporaryFolder folder;
    std::string all;
    for (int c = 1; c < 256; ++c) {
        if (c != '/') all += static_cast<char>(c);
    }
    for (const std::string& name : {all.substr(0, 250), std::string("Z\xFCrich.png"), std::string("\xC3\xBC"),
                                    std::string("\xED\xB2\x80"), std::string("\xEF\xBF\xBD\xE2\x82")}) {
        const std::wstring path = folder / FromSystemBytes(name);
        EXPECT_EQ(ToSystemBytes(FromSystemBytes(name)), name);
        EXPECT_TRUE(Write(path).IsDone());
        EXPECT_TRUE(fs::exists(fs::path(Of(folder.Path())) / name));
        EXPECT_EQ(FindFiles(folder.Path()), std::vector{FromSystemBytes(name)});
        EXPECT_TRUE(RemoveFile(path));
    }
    EXPECT_EQ(FromSystemBytes("\xC3\xBC"), L"\u00fc");
    // Characters of Windows' paths are ordinary ones here.
    EXPECT_EQ(FileNamePart(L"a/11:30\\x.png"), L"11:30\\x.png");
    EXPECT_EQ(Quoted(L"a\x1b[31m\n.png"), L"\"a\\x1B[31m\\x0A.png\"");
}

}  // namespace
}  // namespace skyvault
