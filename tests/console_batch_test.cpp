// The batch command as a script meets it.
#include <gtest/gtest.h>

#include "codecs/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/child_process.h"
#include "tests/picture_io.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

class ConsoleBatch : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(CreateFolder(in_) && CreateFolder(out_));
        for (const wchar_t* const name : {L"a.bmp", L"b.png", L"c.jpg"}) {
            Image picture = RandomImage(64, 32, PixelFormat::Rgb8);
            ASSERT_TRUE(Saved(picture, JoinPath(in_, name)));
        }
    }
    ProgramResult Run(const std::string& more) const {
        return RunConsole("batch --from equirectangular --set Antialiasing=N " + more, {in_, out_});
    }

    const TemporaryFolder folder_;
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
    EXPECT_EQ(result.err, "skyvault-cli: Could not open \"" + ToUtf8(JoinPath(in_, L"p cut.jpg")) + "\"\n");
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
