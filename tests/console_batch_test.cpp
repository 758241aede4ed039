// The batch command as a script meets it.
#include <gtest/gtest.h>

#include <algorithm>

#include "image/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "tests/child_process.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using Arguments = std::vector<std::wstring>;

class ConsoleBatch : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(CreateFolder(in_));
        ASSERT_TRUE(CreateFolder(out_));
    }
    void PutPicture(const std::wstring& name) const {
        Image picture = RandomImage(64, 32, PixelFormat::Rgb8);
        ASSERT_TRUE(SavePicture(picture, JoinPath(in_, name))) << ToUtf8(name);
    }
    ProgramResult Run(Arguments more) const {
        Arguments all = {L"batch", L"--from", L"equirectangular"};
        all.insert(all.end(), more.begin(), more.end());
        all.insert(all.end(), {in_, out_});
        return RunConsole(all);
    }
    std::vector<std::wstring> Results() const {
        std::vector<std::wstring> names = FindFiles(out_);
        std::sort(names.begin(), names.end());
        return names;
    }

    const TemporaryFolder folder_;
    const std::wstring in_ = folder_ / L"in", out_ = folder_ / L"out";
};

std::string LastLine(const std::string& text) {
    if (text.empty()) return text;
    const std::size_t before = text.rfind('\n', text.size() - 2);
    return text.substr(before == std::string::npos ? 0 : before + 1);
}

TEST_F(ConsoleBatch, TwentyPanoramasOneOfThemBroken) {
    const wchar_t* const extensions[] = {L"png", L"jpg", L"bmp", L"tif", L"gif", L"dds"};
    for (int i = 0; i < 19; ++i) PutPicture(L"p" + std::to_wstring(10 + i) + L"." + extensions[i % 6]);
    const std::string whole = folder_.Read(JoinPath(L"in", L"p11.jpg"));
    folder_.Write(JoinPath(L"in", L"p20 cut.jpg"), whole.substr(0, whole.size() / 2));
    folder_.Write(JoinPath(L"in", L"notes.txt"), "no panorama");

    ProgramResult result = Run({L"--to", L"heart", L"--extension", L"jpg"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(LastLine(result.out), "19 converted, 1 failed, 0 skipped\n");
    EXPECT_EQ(result.err, "skyvault-cli: Could not open \"" + ToUtf8(JoinPath(in_, L"p20 cut.jpg")) + "\"\n");
    EXPECT_EQ(Results().size(), 19u);
    for (const std::wstring& name : Results()) EXPECT_TRUE(LoadPicture(JoinPath(out_, name)).IsValid());

    // Resumed, by two machines.
    ASSERT_TRUE(RemoveFile(JoinPath(out_, L"p12.jpg")));
    ASSERT_TRUE(RemoveFile(JoinPath(in_, L"p20 cut.jpg")));
    const char* const summaries[] = {"1 converted, 0 failed, 8 skipped\n",
                                     "0 converted, 0 failed, 10 skipped\n"};
    for (int k = 1; k <= 2; ++k) {
        const std::wstring shard = std::to_wstring(k) + L"/2";
        result = Run({L"--to", L"heart", L"--extension", L"jpg", L"--skip-existing", L"--shard", shard});
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        EXPECT_EQ(LastLine(result.out), summaries[k - 1]);
    }
    EXPECT_EQ(Results().size(), 19u);
}

TEST_F(ConsoleBatch, OptionsReachEveryPanorama) {
    PutPicture(L"a.png");
    PutPicture(L"b.png");
    const Arguments plain = {L"--to", L"equirectangular", L"--set", L"Antialiasing=N"};
    Arguments turned = plain;
    turned.insert(turned.end(), {L"--turn", L"90,0,0", L"--threads", L"1", L"--quiet"});
    EXPECT_EQ(Run(plain).exitStatus, 0);
    const Image before[] = {LoadPicture(JoinPath(out_, L"a.png")), LoadPicture(JoinPath(out_, L"b.png"))};
    const ProgramResult result = Run(turned);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out + result.err, "");
    const wchar_t* const names[] = {L"a.png", L"b.png"};
    for (int i = 0; i < 2; ++i) {
        const Image after = LoadPicture(JoinPath(out_, names[i]));
        ASSERT_EQ(after.width, before[i].width);
        EXPECT_EQ(after.GetPixel8(20, 16), before[i].GetPixel8(36, 16)) << i;
    }
}

TEST_F(ConsoleBatch, WhatCannotBeginSaysWhy) {
    PutPicture(L"a.png");
    const Arguments work = {L"batch", L"--from", L"equirectangular", L"--to", L"strip"};
    const struct {
        Arguments more;
        int status;
        const char* reason;
    } rows[] = {
        {{in_, in_}, 1, "Destination folder must be different from the source folder"},
        {{folder_ / L"none", out_}, 1, "Source folder does not exist"},
        {{in_, folder_ / L"none"}, 1, "Destination folder does not exist"},
        {{out_, in_}, 1, "No files found in source folder"},
        {{L"--settings", folder_ / L"none", in_, out_}, 1, "Could not open"},
        {{in_}, 2, "SOURCE_DIR and a DESTINATION_DIR"},
        {{L"--extension", L"dds", in_, out_}, 2, "does not go with --extension dds"},
        {{L"--extension", L"webp", in_, out_}, 2, "--extension is one of"},
        {{L"--shard", L"0/2", in_, out_}, 2, "--shard takes K/N"},
        {{L"--shard", L"3/2", in_, out_}, 2, "--shard takes K/N"},
        {{L"--shard", L"1", in_, out_}, 2, "--shard takes K/N"},
        {{L"--subfolders", in_, out_}, 2, "--subfolders goes with --to single-files"},
    };
    for (const auto& row : rows) {
        Arguments all = work;
        all.insert(all.end(), row.more.begin(), row.more.end());
        const ProgramResult result = RunConsole(all);
        EXPECT_EQ(result.exitStatus, row.status) << row.reason;
        EXPECT_NE(result.err.find(row.reason), std::string::npos) << row.reason << '\n' << result.err;
        EXPECT_EQ(result.out, "") << row.reason;
    }
    const ProgramResult preview =
        RunConsole({L"batch", L"--from", L"equirectangular", L"--to", L"preview", in_, out_});
    EXPECT_EQ(preview.exitStatus, 2);
    EXPECT_TRUE(Results().empty());
}

}  // namespace
}  // namespace skyvault::test
