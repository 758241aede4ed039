// Batches: which files they take, what they call the results, and what they do about files that fail.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "codecs/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "session/batch.h"
#include "session/messages.h"
#include "tests/data_table.h"
#include "tests/picture_io.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using Names = std::vector<std::wstring>;

Names Sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
}

const LayoutRow* Row(PanoramaFormat format) {
    return FindLayout(format);
}

/// A source and a destination folder side by side.
class Batch : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(CreateFolder(job_.sourceFolder = folder_ / L"in"));
        ASSERT_TRUE(CreateFolder(job_.destinationFolder = folder_ / L"out"));
        job_.from = job_.to = Row(PanoramaFormat::Equirectangular);
        settings_.antialiasing = false;
        settings_.resolution0 = settings_.resolution1 = settings_.resolution2 = 0;
    }

    std::wstring Source(const std::wstring& name) const { return JoinPath(job_.sourceFolder, name); }
    std::wstring Result(const std::wstring& name) const { return JoinPath(job_.destinationFolder, name); }
    Names Results() const { return Sorted(FindFiles(job_.destinationFolder)); }

    void PutPicture(const std::wstring& name, std::uint32_t width = 64, std::uint32_t height = 32) const {
        Image picture = RandomImage(width, height, PixelFormat::Rgb8);
        ASSERT_TRUE(Saved(picture, Source(name))) << ToUtf8(name);
    }
    void PutText(const std::wstring& name) const { folder_.Write(JoinPath(L"in", name), "no picture"); }

    BatchPlan Plan() const { return PlanBatch(job_, settings_); }
    /// File names of the planned panoramas' first sources and of their results.
    Names Planned() const {
        Names names;
        for (const BatchItem& item : Plan().items) names.emplace_back(FileNamePart(item.sources.front()));
        return Sorted(names);
    }
    const TemporaryFolder folder_;
    BatchJob job_;
    AppState settings_;
};

/// Remembers what it heard; stops before the panorama of the given index.
struct Listener : BatchObserver {
    std::size_t stopBefore = 1000;
    std::vector<std::size_t> begun;
    std::vector<BatchEnd> ends;
    Names reasons;
    std::size_t faceTroubles = 0;
    bool OnBegin(const BatchItem&, std::size_t index, std::size_t) override {
        if (index == stopBefore) return false;
        begun.push_back(index);
        return true;
    }
    void OnEnd(const BatchItem&, BatchEnd end, const ConversionResult& result) override {
        ends.push_back(end);
        reasons.push_back(LineOf(result.outcome));
        faceTroubles += result.troubles.size();
    }
};

TEST(BatchLists, LayoutAndExtensionFollowEachOther) {
    for (const auto& [where, list, choice, before, after] :
         TableOf<std::string, int, int, int>("batch_choices")) {
        const auto follow = list == "layout" ? BatchExtensionForLayout : BatchLayoutForExtension;
        EXPECT_EQ(follow(choice, before), after) << where;
    }
}

TEST_F(Batch, TakesTheFilesThatFitTheLayout) {
    Names names[3];
    const PanoramaFormat layouts[] = {PanoramaFormat::InteriorSquare, PanoramaFormat::DirectXDds,
                                      PanoramaFormat::QuickTimeVr};
    for (const DataRow& row : DataTable("batch_sources")) {
        PutText(FromUtf8(row[0]));
        for (std::size_t i = 0; i < 3; ++i) {
            if (row[i + 1] == "Y") names[i].push_back(FromUtf8(row[0]));
        }
    }
    ASSERT_TRUE(CreateFolder(Source(L"folder.png")));
    for (std::size_t i = 0; i < 3; ++i) {
        job_.from = Row(layouts[i]);
        EXPECT_EQ(Planned(), Sorted(names[i])) << i;
    }
}

TEST_F(Batch, ResultsAreNamedAfterTheirSources) {
    PutText(L"my.lake 1.jpg");
    for (const auto& [where, to, extension, subfolders, output] :
         TableOf<std::string, std::wstring, bool, std::wstring>("batch_results")) {
        job_.to = LayoutOfConsoleName(to);
        job_.extension = extension;
        job_.subfolders = subfolders;
        const BatchPlan plan = Plan();
        ASSERT_EQ(plan.items.size(), 1u) << where;
        const std::filesystem::path planned(plan.items.front().output);
        EXPECT_EQ(planned, std::filesystem::path(Result(output))) << where;
    }
}

TEST_F(Batch, SixFilesAreOnePanoramaAndMissingOnesAreTold) {
    job_.from = Row(PanoramaFormat::SingleFiles);
    for (const DataRow& row : DataTable("batch_faces")) {
        // The folder's own name holds a face's part, too.
        ASSERT_TRUE(CreateFolder(job_.sourceFolder = folder_ / (L"x_f0_front_ft f_" + FromUtf8(row[0]))));
        Names expected;
        for (std::size_t f = 1; f <= 6; ++f) {
            PutPicture(FromUtf8(row[f]), 8, 8);
            expected.push_back(Source(FromUtf8(row[f])));
        }
        settings_.fileNamingSystem = std::stoi(row[0]);
        const BatchPlan plan = Plan();
        ASSERT_EQ(plan.items.size(), 1u) << row.where;
        EXPECT_EQ(plan.items.front().sources, expected) << row.where;
        ASSERT_TRUE(RemoveFile(expected[2]) && RemoveFile(expected[5]));
        Listener listener;
        EXPECT_EQ(RunBatch(job_, plan.items, false, settings_, listener).converted, 1u);
        EXPECT_EQ(listener.faceTroubles, 2u);
    }
}

TEST_F(Batch, WhatFailsIsToldAndTheRestConverted) {
    PutPicture(L"a.png");
    PutText(L"b.png");
    PutPicture(L"c.bmp");
    PutText(L"d.jpg");
    job_.to = Row(PanoramaFormat::SingleFiles);
    job_.subfolders = true;
    job_.extension = L"bmp";
    Listener listener;
    const std::vector<BatchItem> items = ShardOfBatch(Plan().items, 1, 1);
    BatchCounts counts = RunBatch(job_, items, false, settings_, listener);
    EXPECT_EQ(counts.converted, 2u);
    EXPECT_EQ(counts.failed, 2u);
    using enum BatchEnd;
    EXPECT_EQ(listener.ends, (std::vector{Converted, Failed, Converted, Failed}));
    EXPECT_EQ(listener.reasons[1], L"Could not open \"" + Source(L"b.png") + L"\": it is not a picture");
    EXPECT_EQ(Results(), (Names{L"a", L"c"})) << "no folder stays behind for what failed";
    EXPECT_EQ(FindFiles(Result(L"a")).size(), 6u);
    EXPECT_EQ(ReadPictureSize(JoinPath(Result(L"c"), L"c_bottom.bmp")).width, 16u);

    // What is complete is left out the second time; a panorama with a face missing is not.
    ASSERT_TRUE(RemoveFile(JoinPath(Result(L"c"), L"c_bottom.bmp")));
    counts = RunBatch(job_, items, true, settings_, listener = {});
    EXPECT_EQ(listener.ends, (std::vector{Skipped, Failed, Converted, Failed}));
    EXPECT_EQ(counts.skipped, 1u);
    EXPECT_EQ(FindFiles(Result(L"c")).size(), 6u);
}

TEST_F(Batch, SourcesAreNeverReplaced) {
    for (const wchar_t* name : {L"a.bmp", L"a.png", L"b.bmp"}) PutPicture(name);
    // The same folder under another name.
    job_.destinationFolder = JoinPath(job_.destinationFolder, JoinPath(L"..", L"in"));
    const std::string before = folder_.Read(JoinPath(L"in", L"a.png"));
    using enum BatchEnd;
    const BatchEnd expected[] = {Failed, Failed, Converted};
    for (int shard = 1; shard <= 3; ++shard) {
        // a.bmp's result would replace a source that belongs to another shard.
        Listener listener;
        RunBatch(job_, ShardOfBatch(Plan().items, shard, 3), false, settings_, listener);
        EXPECT_EQ(listener.ends, std::vector{expected[shard - 1]}) << shard;
    }
    EXPECT_EQ(folder_.Read(JoinPath(L"in", L"a.png")), before);
    EXPECT_EQ(FindFiles(job_.sourceFolder).size(), 4u);
}

TEST_F(Batch, OfSharedResultsOnlyTheFirstIsMade) {
    for (const wchar_t* name : {L"a.png", L"a.bmp", L"b.png"}) PutPicture(name);
    Listener listener;
    const BatchCounts counts = RunBatch(job_, Plan().items, false, settings_, listener);
    EXPECT_EQ(TextOfCounts(counts), L"2 converted, 1 failed, 0 skipped");
    const std::wstring shared =
        Quoted(Source(L"a.png")) + L" has the same result as " + Quoted(Source(L"a.bmp"));
    EXPECT_EQ(Sorted(listener.reasons), (Names{L"", L"", shared}));
}

TEST_F(Batch, UnwritableResultsDoNotStopItAndStoppingKeepsWhatIsDone) {
    for (const wchar_t* name : {L"a.png", L"b.png", L"c.png"}) PutPicture(name);
    ASSERT_TRUE(CreateFolder(Result(L"a.png")));
    Listener listener;
    listener.stopBefore = 2;
    const BatchCounts counts = RunBatch(job_, Plan().items, false, settings_, listener);
    EXPECT_EQ(TextOfCounts(counts), L"1 converted, 1 failed, 0 skipped");
    EXPECT_EQ(listener.begun, (std::vector<std::size_t>{0, 1}));
    EXPECT_TRUE(listener.reasons[0].starts_with(L"Could not write")) << ToUtf8(listener.reasons[0]);
    EXPECT_EQ(Results().size(), 2u);
}

TEST(BatchShards, AreEqualPartsOfTheSortedList) {
    for (const std::size_t count : {0u, 1u, 5u, 20u}) {
        std::vector<BatchItem> items;
        for (std::size_t i = 0; i < count; ++i) {
            items.push_back({{std::wstring(1, static_cast<wchar_t>(L'a' + (i * 7) % 20))}, L"", {}});
        }
        for (const int shards : {1, 3, 7, 25}) {
            Names joined;
            for (int shard = 1; shard <= shards; ++shard) {
                const std::vector<BatchItem> part = ShardOfBatch(items, shard, shards);
                EXPECT_GE(part.size(), count / static_cast<std::size_t>(shards));
                EXPECT_LE(part.size(), count / static_cast<std::size_t>(shards) + 1);
                for (const BatchItem& item : part) joined.push_back(item.sources.front());
            }
            EXPECT_EQ(joined.size(), count) << shards;
            EXPECT_TRUE(std::is_sorted(joined.begin(), joined.end())) << shards;
        }
    }
}

}  // namespace
}  // namespace skyvault::test
