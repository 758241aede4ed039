#include "platform/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "platform/clock.h"
#include "platform/debug_line.h"
#include "platform/file_stream.h"
#include "platform/output_file.h"
#include "platform/path_text.h"
#include "platform/scratch_folder.h"
#include "tests/child_process.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::TemporaryFolder;
using testing::UnorderedElementsAre;

bool WriteText(const std::wstring& path, std::string_view text) {
    FileStream file(path, FileUse::Write);
    return file.Write(text.data(), text.size()) && file.Close();
}

TEST(CreateFolder, MakesAndReportsEveryMissingParentInOrder) {
    const TemporaryFolder root;
    const std::wstring a = root / L"A", b = JoinPath(a, L"B \u00e9"), c = JoinPath(b, L"C");
    const std::wstring file = root.Write(L"file", "x");
    const DebugLineCapture capture;
    EXPECT_TRUE(CreateFolder(a + L"/B \u00e9/C/"));
    EXPECT_TRUE(FolderExists(c));
    EXPECT_TRUE(CreateFolder(c) && CreateFolder(JoinPath(b, L"D")));
    for (const std::wstring& path : {std::wstring(), file, JoinPath(file, L"A")})
        EXPECT_FALSE(CreateFolder(path));
    std::wstring lines;
    for (const std::wstring& made : {a, b, c, JoinPath(b, L"D")})
        lines += L"New folder created: \"" + made + L"\"\n";
    EXPECT_EQ(capture.Text(), lines);
}

TEST(Files, AFolderIsNoFileAndAMissingOneIsNeither) {
    const TemporaryFolder root;
    const std::wstring file = root.Write(L"\u03c9.bin", "12345"), none = root / L"none";
    EXPECT_TRUE(FileExists(file) && FolderExists(root.Path()));
    EXPECT_FALSE(FolderExists(file) || FileExists(root.Path()) || FileExists(none) || FolderExists(none));
    EXPECT_EQ(FileSizeOf(file), 5u);
    for (const std::wstring& path : {none, std::wstring(), root.Path()}) EXPECT_EQ(FileSizeOf(path), 0u);
    EXPECT_THAT(FindFiles(root.Path()), UnorderedElementsAre(L"\u03c9.bin"));
    EXPECT_TRUE(FindFiles(none).empty());
    EXPECT_TRUE(RemoveFile(file));
    EXPECT_FALSE(RemoveFile(file));
}

TEST(Files, AMoveToANewNameNeverReplacesAMoveOverDoes) {
    const TemporaryFolder root;
    const std::wstring one = root.Write(L"one", "1"), two = root.Write(L"two", "2");
    EXPECT_FALSE(MoveToNewName(one, two));
    EXPECT_EQ(root.Read(L"two"), "2");
    EXPECT_TRUE(MoveToNewName(one, root / L"three"));
    EXPECT_FALSE(FileExists(one));
    EXPECT_TRUE(MoveOver(root / L"three", two));
    EXPECT_FALSE(MoveOver(root / L"none", two));
    EXPECT_EQ(root.Read(L"two"), "1");
    EXPECT_THAT(FindFiles(root.Path()), UnorderedElementsAre(L"two"));
}

TEST(Files, WellKnownFoldersExistAndEndAsTheyShould) {
    const test::OwnTemporaryFiles home;
    EXPECT_TRUE(FileExists(test::ConsoleProgramPath())) << "beside the tests";
    const std::wstring data = ApplicationDataFolder(), temporary = TemporaryFilesFolder();
    EXPECT_TRUE(FolderExists(data) && FolderExists(temporary) && FolderExists(DocumentsFolder()));
    EXPECT_EQ(data, JoinPath(JoinPath(UserDataFolder(), L"Brambleworks Studio"), L"Skyvault"));
    EXPECT_EQ(temporary, JoinPath(FolderPart(data), L"Temp"));
    EXPECT_EQ(DocumentsFolder(), JoinPath(UserDocumentsFolder(), L"Skyvault"));
#ifndef _WIN32
    EXPECT_EQ(UserDataFolder(), home.Home() + L"/.config");
    EXPECT_EQ(UserDocumentsFolder(), home.Home() + L"/Documents");
    setenv("XDG_CONFIG_HOME", "/configured", 1);
    EXPECT_EQ(UserDataFolder(), L"/configured");
    unsetenv("XDG_CONFIG_HOME");
#endif
}

TEST(OutputFile, ShowsTheFileOnlyWhenCommitted) {
    const TemporaryFolder root;
    const std::wstring target = root.Write(L"pano.v2.png", "old");
    {
        const OutputFile abandoned(target);
        EXPECT_EQ(UpperExtension(abandoned.TemporaryPath()), L"PART");
        EXPECT_EQ(FolderPart(abandoned.TemporaryPath()), root.Path());
        ASSERT_TRUE(WriteText(abandoned.TemporaryPath(), "half"));
    }
    EXPECT_EQ(root.Read(L"pano.v2.png"), "old");
    {
        OutputFile file(target), other(target);
        EXPECT_NE(file.TemporaryPath(), other.TemporaryPath());
        ASSERT_TRUE(WriteText(file.TemporaryPath(), "new"));
        EXPECT_TRUE(file.Commit());
    }
    EXPECT_EQ(root.Read(L"pano.v2.png"), "new");
    EXPECT_THAT(FindFiles(root.Path()), UnorderedElementsAre(L"pano.v2.png"));
}

TEST(OutputFile, AFailedCommitLeavesNothingBehind) {
    const TemporaryFolder root;
    const std::wstring folder = root / L"taken.png";
    ASSERT_TRUE(CreateFolder(folder));
    root.Write(L"taken.png/inside", "x");
    OutputFile file(folder), unwritten(root / L"a.png");
    ASSERT_TRUE(WriteText(file.TemporaryPath(), "new"));
    EXPECT_FALSE(file.Commit() || unwritten.Commit());
    EXPECT_THAT(FindFiles(root.Path()), UnorderedElementsAre(L"taken.png"));
}

TEST(ScratchFolder, EveryOneIsItsOwnAndGoesWithItsFiles) {
    const test::OwnTemporaryFiles temporary;
    std::wstring one, two;
    {
        const ScratchFolder first, second;
        one = first.Path(L"0.jpg");
        two = second.Path(L"0.jpg");
        EXPECT_NE(one, two);
        EXPECT_EQ(FolderPart(FolderPart(one)), TemporaryFilesFolder());
        ASSERT_TRUE(WriteText(one, "1") && WriteText(two, "2"));
    }
    for (const std::wstring& path : {one, two}) EXPECT_FALSE(FolderExists(std::wstring(FolderPart(path))));
}

#ifndef _WIN32
TEST(ScratchFolder, NeedsNoHomeButSomeFolder) {
    const TemporaryFolder shared;
    for (const std::wstring& configured : {shared.Path(), std::wstring(L"/proc/none")}) {
        setenv("HOME", "/proc/none", 1);
        setenv("TMPDIR", ToUtf8(configured).c_str(), 1);
        const ScratchFolder scratch;
        EXPECT_EQ(scratch.Exists(), configured == shared.Path());
        EXPECT_EQ(FindFiles(shared.Path()).size(), scratch.Exists() ? 1u : 0u);
    }
    unsetenv("TMPDIR");
    const test::OwnTemporaryFiles temporary;  // a home again
}
#endif

TEST(ScratchFolder, WhatAnEarlierProgramLeftGoesAfterADay) {
    const test::OwnTemporaryFiles temporary;
    const auto madeBefore = [](long long secondsAgo) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now).count();
        return JoinPath(TemporaryFilesFolder(), std::to_wstring(seconds - secondsAgo) + L"-77-0");
    };
    const std::wstring old = madeBefore(90000), young = madeBefore(3000);
    const std::wstring foreign = JoinPath(TemporaryFilesFolder(), L"12 o'clock");
    for (const std::wstring& folder : {old, young, foreign}) {
        // Another test program may remove the old one first.
        EXPECT_TRUE((CreateFolder(folder) && WriteText(JoinPath(folder, L"0.jpg"), "x")) || folder == old);
    }
    { const ScratchFolder scratch; }
    EXPECT_FALSE(FolderExists(old));
    EXPECT_TRUE(FileExists(JoinPath(young, L"0.jpg")) && FileExists(JoinPath(foreign, L"0.jpg")));
    EXPECT_TRUE(RemoveFolderOfFiles(young) && RemoveFolderOfFiles(foreign));
}

TEST(FileStream, AWrittenFileHoldsExactlyWhatWasWritten) {
    const TemporaryFolder root;
    const std::wstring path = root.Write(L"file", "a much longer older file");
    {
        FileStream file(path, FileUse::Write);
        EXPECT_TRUE(file.Write("....5678", 8) && file.Seek(0) && file.Write("1234", 4));
        char c;
        EXPECT_FALSE(file.Read(&c, 1));
    }
    EXPECT_EQ(root.Read(L"file"), "12345678");
    EXPECT_TRUE(WriteText(path, ""));
    EXPECT_TRUE(FileExists(path));
    EXPECT_EQ(root.Read(L"file"), "");
}

TEST(FileStream, ReadsCountOnlyWhenWhole) {
    const TemporaryFolder root;
    const std::wstring path = root.Write(L"file", "0123456789");
    FileStream file(path, FileUse::Read);
    char text[11] = {};
    EXPECT_EQ(file.Size(), 10u);
    EXPECT_TRUE(file.Read(text, 4) && file.Seek(7) && file.Read(text, 3));
    EXPECT_STREQ(text, "7893");
    EXPECT_FALSE(file.Read(text, 1));
    EXPECT_TRUE(file.Seek(8));
    EXPECT_FALSE(file.Read(text, 3));
    EXPECT_FALSE(file.Write("x", 1));
    FileStream moved = std::move(file);
    EXPECT_TRUE(moved.Seek(0) && moved.Read(text, 10) && moved.Close());
    EXPECT_STREQ(text, "0123456789");
    std::vector<std::byte> bytes;
    EXPECT_TRUE(ReadWholeFile(path, bytes, 10));
    EXPECT_FALSE(ReadWholeFile(path, bytes, 9));
    EXPECT_TRUE(bytes.empty());
}

TEST(FileStream, OnlyReadersShareAFileAndOnlyWhereTheyMay) {
    const TemporaryFolder root;
    const std::wstring path = root.Write(L"file", "text");
    FileStream alone(path, FileUse::Read);
    EXPECT_TRUE(alone.IsOpen());
    SetShareAndFailAtOnce(true);
    EXPECT_FALSE(FileStream(path, FileUse::Read).IsOpen());
    EXPECT_TRUE(alone.Close());
    const FileStream one(path, FileUse::Read), two(path, FileUse::Read);
    EXPECT_TRUE(one.IsOpen() && two.IsOpen());
    EXPECT_FALSE(FileStream(path, FileUse::Write).IsOpen());
    for (const std::wstring& none : {root.Path(), root / L"none", std::wstring()}) {
        EXPECT_FALSE(FileStream(none, FileUse::Read).IsOpen());
    }
    SetShareAndFailAtOnce(false);
}

TEST(FileStream, WaitsForAFileThatIsHeldForAMoment) {
    const TemporaryFolder root;
    const std::wstring path = root.Write(L"file", "text");
    // The last try comes 900 ms after the first: of a release later than that this says nothing.
    for (bool opened = false, late = true; !opened && late;) {
        FileStream holder(path, FileUse::Read);
        const std::uint32_t start = MillisecondClock();
        std::jthread releasing([&] {
            SleepMilliseconds(150);
            holder.Close();
            late = MillisecondClock() - start > 800;
        });
        opened = FileStream(path, FileUse::Read).IsOpen();
        releasing.join();
        EXPECT_TRUE(opened || late);
    }
}

}  // namespace
}  // namespace skyvault
