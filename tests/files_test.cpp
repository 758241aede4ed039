#include "platform/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "platform/clock.h"
#include "platform/debug_line.h"
#include "platform/file_stream.h"
#include "platform/output_file.h"
#include "platform/path_text.h"
#include "platform/scratch_folder.h"
#include "platform/utf8.h"
#include "tests/own_temporary_files.h"
#include "tests/temporary_folder.h"

namespace skyvault {
namespace {

using test::TemporaryFolder;

using testing::UnorderedElementsAre;

bool WriteText(const std::wstring& path, std::string_view text) {
    FileStream file(path, FileUse::Write);
    return file.Write(text.data(), text.size()) && file.Close();
}

std::string ReadText(const std::wstring& path) {
    std::vector<std::byte> bytes;
    if (!ReadWholeFile(path, bytes)) return "(unreadable)";
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class ShareGuard {
  public:
    ShareGuard() { SetShareAndFailAtOnce(true); }
    ~ShareGuard() { SetShareAndFailAtOnce(false); }
};

TEST(CreateFolder, MakesAndReportsEveryMissingParentInOrder) {
    const TemporaryFolder root;
    const std::wstring a = root / L"A", b = JoinPath(a, L"B \u00e9"), c = JoinPath(b, L"C");
    const auto line = [](const std::wstring& folder) { return L"New folder created: \"" + folder + L"\"\n"; };
    const DebugLineCapture capture;
    EXPECT_TRUE(CreateFolder(a + L"/B \u00e9/C/"));
    EXPECT_TRUE(FolderExists(c));
    EXPECT_EQ(capture.Text(), line(a) + line(b) + line(c));
    EXPECT_TRUE(CreateFolder(c));
    EXPECT_TRUE(CreateFolder(JoinPath(b, L"D")));
    EXPECT_EQ(capture.Text(), line(a) + line(b) + line(c) + line(JoinPath(b, L"D")));
}

TEST(CreateFolder, FailsForAnEmptyPathAndBehindAFile) {
    const TemporaryFolder root;
    ASSERT_TRUE(WriteText(root / L"file", "x"));
    const DebugLineCapture capture;
    EXPECT_FALSE(CreateFolder(L""));
    EXPECT_FALSE(CreateFolder(root / L"file"));
    EXPECT_FALSE(CreateFolder(JoinPath(root / L"file", L"A")));
    EXPECT_EQ(capture.Text(), L"");
}

TEST(Files, AFolderIsNoFileAndAMissingOneIsNeither) {
    const TemporaryFolder root;
    const std::wstring file = root / L"\u03c9.bin";
    ASSERT_TRUE(WriteText(file, "12345"));
    EXPECT_TRUE(FileExists(file));
    EXPECT_FALSE(FolderExists(file));
    EXPECT_FALSE(FileExists(root.Path()));
    EXPECT_TRUE(FolderExists(root.Path()));
    EXPECT_FALSE(FileExists(root / L"none"));
    EXPECT_FALSE(FolderExists(root / L"none"));
    EXPECT_EQ(FileSizeOf(file), 5u);
    EXPECT_EQ(FileSizeOf(root / L"none"), 0u);
    EXPECT_EQ(FileSizeOf(L""), 0u);
    EXPECT_EQ(FileSizeOf(root.Path()), 0u);
    EXPECT_THAT(FindFiles(root.Path()), UnorderedElementsAre(L"\u03c9.bin"));
    EXPECT_TRUE(FindFiles(root / L"none").empty());
    EXPECT_TRUE(RemoveFile(file));
    EXPECT_FALSE(RemoveFile(file));
}

TEST(Files, AMoveToANewNameNeverReplacesAMoveOverDoes) {
    const TemporaryFolder root;
    const std::wstring one = root / L"one", two = root / L"two";
    ASSERT_TRUE(WriteText(one, "1") && WriteText(two, "2"));
    EXPECT_FALSE(MoveToNewName(one, two));
    EXPECT_EQ(ReadText(two), "2");
    EXPECT_TRUE(MoveToNewName(one, root / L"three"));
    EXPECT_FALSE(FileExists(one));
    EXPECT_TRUE(MoveOver(root / L"three", two));
    EXPECT_EQ(ReadText(two), "1");
    EXPECT_THAT(FindFiles(root.Path()), UnorderedElementsAre(L"two"));
    EXPECT_FALSE(MoveOver(root / L"none", two));
    EXPECT_EQ(ReadText(two), "1");
}

TEST(Files, WellKnownFoldersExistAndEndAsTheyShould) {
#ifndef _WIN32
    // Not in the home of whoever runs the tests.
    const TemporaryFolder home;
    const char* const before = std::getenv("HOME");
    const std::string oldHome = before ? before : "";
    setenv("HOME", ToUtf8(home.Path()).c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
#endif
    EXPECT_TRUE(FolderExists(ProgramFolder()));
    EXPECT_NE(ProgramFolder().back(), kPathSeparator);
    const std::wstring data = ApplicationDataFolder(), documents = DocumentsFolder();
    EXPECT_TRUE(FolderExists(data) && FolderExists(documents));
    EXPECT_EQ(FileNamePart(data), L"Skyvault");
    EXPECT_EQ(FileNamePart(FolderPart(data)), L"Brambleworks Studio");
    EXPECT_EQ(FileNamePart(documents), L"Skyvault");
#ifndef _WIN32
    EXPECT_EQ(data, home / L".config/Brambleworks Studio/Skyvault");
    EXPECT_EQ(documents, home / L"Documents/Skyvault");
    setenv("XDG_CONFIG_HOME", ToUtf8(home / L"configured").c_str(), 1);
    EXPECT_EQ(ApplicationDataFolder(), home / L"configured/Brambleworks Studio/Skyvault");
    EXPECT_EQ(TemporaryFilesFolder(), home / L"configured/Brambleworks Studio/Temp");
    unsetenv("XDG_CONFIG_HOME");
    setenv("HOME", oldHome.c_str(), 1);
#endif
}

TEST(OutputFile, ShowsTheFileOnlyWhenCommitted) {
    const TemporaryFolder root;
    const std::wstring target = root / L"pano.v2.png";
    ASSERT_TRUE(WriteText(target, "old"));
    {
        const OutputFile abandoned(target);
        EXPECT_EQ(UpperExtension(abandoned.TemporaryPath()), L"PNG");
        EXPECT_EQ(FolderPart(abandoned.TemporaryPath()), root.Path());
        ASSERT_TRUE(WriteText(abandoned.TemporaryPath(), "half"));
        EXPECT_EQ(ReadText(target), "old");
    }
    EXPECT_EQ(ReadText(target), "old");
    {
        OutputFile file(target), other(target);
        EXPECT_NE(file.TemporaryPath(), other.TemporaryPath());
        ASSERT_TRUE(WriteText(file.TemporaryPath(), "new"));
        EXPECT_TRUE(file.Commit());
    }
    EXPECT_EQ(ReadText(target), "new");
    EXPECT_THAT(FindFiles(root.Path()), UnorderedElementsAre(L"pano.v2.png"));
}

TEST(OutputFile, AFailedCommitLeavesNothingBehind) {
    const TemporaryFolder root;
    const std::wstring folder = root / L"taken.png";
    ASSERT_TRUE(CreateFolder(folder) && WriteText(JoinPath(folder, L"inside"), "x"));
    OutputFile file(folder);
    ASSERT_TRUE(WriteText(file.TemporaryPath(), "new"));
    EXPECT_FALSE(file.Commit());
    EXPECT_THAT(FindFiles(root.Path()), UnorderedElementsAre(L"taken.png"));
    OutputFile unwritten(root / L"a.png");
    EXPECT_FALSE(unwritten.Commit());
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
    EXPECT_FALSE(FolderExists(std::wstring(FolderPart(one))));
    EXPECT_FALSE(FolderExists(std::wstring(FolderPart(two))));
}

TEST(ScratchFolder, WhatAnEarlierProgramLeftGoesAfterADay) {
    const test::OwnTemporaryFiles temporary;
    const std::wstring parent = TemporaryFilesFolder();
    const auto now =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch());
    const std::wstring old = JoinPath(parent, std::to_wstring(now.count() - 90000) + L"-77-0");
    const std::wstring young = JoinPath(parent, std::to_wstring(now.count() - 3000) + L"-77-0");
    const std::wstring foreign = JoinPath(parent, L"12 o'clock");
    for (const std::wstring& folder : {young, foreign}) {
        ASSERT_TRUE(CreateFolder(folder) && WriteText(JoinPath(folder, L"0.jpg"), "x"));
    }
    // Another test program may remove it first.
    if (CreateFolder(old)) WriteText(JoinPath(old, L"0.jpg"), "x");
    { const ScratchFolder scratch; }
    EXPECT_FALSE(FolderExists(old));
    EXPECT_TRUE(FileExists(JoinPath(young, L"0.jpg")));
    EXPECT_TRUE(FileExists(JoinPath(foreign, L"0.jpg")));
    EXPECT_TRUE(RemoveFolderOfFiles(young) && RemoveFolderOfFiles(foreign));
}

TEST(FileStream, AWrittenFileHoldsExactlyWhatWasWritten) {
    const TemporaryFolder root;
    const std::wstring path = root / L"file";
    ASSERT_TRUE(WriteText(path, "a much longer older file"));
    {
        FileStream file(path, FileUse::Write);
        ASSERT_TRUE(file.IsOpen());
        EXPECT_TRUE(file.Write("....5678", 8));
        EXPECT_TRUE(file.Seek(0));
        EXPECT_TRUE(file.Write("1234", 4));
        char c;
        EXPECT_FALSE(file.Read(&c, 1));
    }
    EXPECT_EQ(ReadText(path), "12345678");
    EXPECT_TRUE(WriteText(path, ""));
    EXPECT_EQ(FileSizeOf(path), 0u);
    EXPECT_EQ(ReadText(path), "");
}

TEST(FileStream, ReadsCountOnlyWhenWhole) {
    const TemporaryFolder root;
    const std::wstring path = root / L"file";
    ASSERT_TRUE(WriteText(path, "0123456789"));
    for (const FileUse use : {FileUse::Read, FileUse::Preload}) {
        SCOPED_TRACE(static_cast<int>(use));
        FileStream file(path, use);
        char text[11] = {};
        EXPECT_EQ(file.Size(), 10u);
        EXPECT_TRUE(file.Read(text, 4));
        EXPECT_STREQ(text, "0123");
        EXPECT_TRUE(file.Seek(7));
        EXPECT_TRUE(file.Read(text, 3));
        EXPECT_STREQ(text, "7893");
        EXPECT_FALSE(file.Read(text, 1));
        EXPECT_TRUE(file.Seek(8));
        EXPECT_FALSE(file.Read(text, 3));
        EXPECT_TRUE(file.Seek(1000));
        EXPECT_FALSE(file.Read(text, 1));
        EXPECT_FALSE(file.Write("x", 1));
        FileStream moved = std::move(file);
        EXPECT_TRUE(moved.Seek(0) && moved.Read(text, 10));
        EXPECT_STREQ(text, "0123456789");
    }
    std::vector<std::byte> bytes;
    EXPECT_TRUE(ReadWholeFile(path, bytes, 10));
    EXPECT_FALSE(ReadWholeFile(path, bytes, 9));
    EXPECT_TRUE(bytes.empty());
}

TEST(FileStream, APreloadedFileIsFreeForOthersAnOpenOneIsNot) {
    const TemporaryFolder root;
    const std::wstring path = root / L"file";
    ASSERT_TRUE(WriteText(path, "text"));
    const FileStream preloaded(path, FileUse::Preload);
    {
        const FileStream reading(path, FileUse::Read);
        EXPECT_TRUE(reading.IsOpen());
        const ShareGuard sharing;
        EXPECT_FALSE(FileStream(path, FileUse::Read).IsOpen());
    }
    const ShareGuard sharing;
    const FileStream one(path, FileUse::Read), two(path, FileUse::Read);
    EXPECT_TRUE(one.IsOpen() && two.IsOpen());
    EXPECT_FALSE(FileStream(path, FileUse::Write).IsOpen());
}

TEST(FileStream, WaitsForAFileThatIsHeldForAMoment) {
    const TemporaryFolder root;
    const std::wstring path = root / L"file";
    ASSERT_TRUE(WriteText(path, "text"));
    FileStream holder(path, FileUse::Read);
    std::thread releasing([&] {
        SleepMilliseconds(250);
        holder.Close();
    });
    const FileStream patient(path, FileUse::Read);
    releasing.join();
    EXPECT_TRUE(patient.IsOpen());
}

TEST(FileStream, GivesUpAfterASecondOrAtOnce) {
    const TemporaryFolder root;
    const auto timeToFail = [&](const std::wstring& path, FileUse use) {
        const std::uint32_t start = MillisecondClock();
        EXPECT_FALSE(FileStream(path, use).IsOpen());
        return MillisecondClock() - start;
    };
    EXPECT_GE(timeToFail(root / L"none", FileUse::Read), 890u);
    EXPECT_EQ(FileStream(L"", FileUse::Read).Size(), 0u);
    const ShareGuard sharing;
    EXPECT_LT(timeToFail(root / L"none", FileUse::Read), 90u);
    EXPECT_LT(timeToFail(root.Path(), FileUse::Read), 90u);
    EXPECT_LT(timeToFail(JoinPath(root / L"none", L"file"), FileUse::Write), 90u);
}

TEST(FileStream, AFullDiskIsAResult) {
#ifdef _WIN32
    const std::wstring full = L"Z:\\dev\\full";
#else
    const std::wstring full = L"/dev/full";
#endif
    FileStream file(full, FileUse::Write);
    if (!file.IsOpen()) GTEST_SKIP() << "no device that is always full";
    EXPECT_FALSE(file.Write("x", 1));
}

}  // namespace
}  // namespace skyvault
