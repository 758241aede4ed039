// Batches: which files they take, what they call the results, and what they do about files that fail.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "codecs/picture_files.h"
#include "platform/files.h"
#include "platform/utf8.h"
#include "session/batch.h"
#include "session/messages.h"
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
    std::wstring OnlyOutput() const {
        const BatchPlan plan = Plan();
        EXPECT_EQ(plan.items.size(), 1u);
        return plan.items.empty() ? std::wstring() : plan.items.front().output;
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
    std::size_t missingFaces = 0;
    bool OnBegin(const BatchItem&, std::size_t index, std::size_t) override {
        if (index == stopBefore) return false;
        begun.push_back(index);
        return true;
    }
    void OnEnd(const BatchItem&, BatchEnd end, const ConversionResult& result) override {
        ends.push_back(end);
        reasons.push_back(LineOf(result.outcome));
        missingFaces += result.missingFaces.size();
    }
};

TEST(BatchLists, LayoutAndExtensionFollowEachOther) {
    enum { Dds, Mov, Bmp, Jpg, Gif, Tif, Png };
    enum { Equirect, CubeMap, Movie, Cross, Files = 7 };
    const struct {
        int layout, extension, newExtension;
    } layouts[] = {{CubeMap, Jpg, Dds}, {Movie, Jpg, Mov}, {Equirect, Jpg, Jpg}, {Files, Bmp, Bmp},
                   {Cross, Dds, Png},   {Cross, Mov, Png}, {Equirect, -1, Png}};
    for (const auto& row : layouts) {
        EXPECT_EQ(BatchExtensionForLayout(row.layout, row.extension), row.newExtension) << row.layout;
    }
    const struct {
        int extension, layout, newLayout;
    } extensions[] = {{Dds, Cross, CubeMap},    {Mov, Cross, Movie}, {Png, Movie, Equirect},
                      {Tif, CubeMap, Equirect}, {Png, Files, Files}, {Gif, Cross, Cross}};
    for (const auto& row : extensions) {
        EXPECT_EQ(BatchLayoutForExtension(row.extension, row.layout), row.newLayout) << row.extension;
    }
}

TEST_F(Batch, TheFirstObstacleIsTold) {
    const std::wstring good = job_.sourceFolder, other = job_.destinationFolder, none = folder_ / L"none";
    const struct {
        std::wstring source, destination, obstacle;
    } rows[] = {
        {none, none, L"Destination folder must be different from the source folder"},
        {none, folder_ / L"neither", L"Source folder does not exist"},
        {L"", other, L"Source folder does not exist"},
        {good, none, L"Destination folder does not exist"},
        {good, other, L"No files found in source folder"},
    };
    PutText(L"only a text.txt");
    for (const auto& row : rows) {
        job_.sourceFolder = row.source;
        job_.destinationFolder = row.destination;
        EXPECT_EQ(MessageOf(Plan().obstacle), row.obstacle);
        EXPECT_TRUE(Plan().items.empty()) << ToUtf8(row.obstacle);
    }
}

TEST_F(Batch, TakesTheFilesThatFitTheLayout) {
    for (const wchar_t* name : {L"a.jpg", L"b.JPEG", L"c.png", L"d.Tif", L"e.tga", L"f.dds", L"g.DDS",
                                L"h.mov", L"i.txt", L"png", L"k", L"l.png.bak", L"\x4e2d \x00fc.bmp"}) {
        PutText(name);
    }
    ASSERT_TRUE(CreateFolder(Source(L"folder.png")));
    const Names pictures = {L"a.jpg", L"b.JPEG", L"c.png", L"d.Tif",
                            L"e.tga", L"f.dds",  L"g.DDS", L"\x4e2d \x00fc.bmp"};
    const struct {
        PanoramaFormat from;
        Names names;
    } rows[] = {{PanoramaFormat::Equirectangular, pictures},
                {PanoramaFormat::InteriorSquare, pictures},
                {PanoramaFormat::DirectXDds, {L"f.dds", L"g.DDS"}},
                {PanoramaFormat::QuickTimeVr, {L"h.mov"}}};
    for (const auto& row : rows) {
        job_.from = Row(row.from);
        EXPECT_EQ(Planned(), Sorted(row.names)) << static_cast<int>(row.from);
    }
}

TEST_F(Batch, ResultsAreNamedAfterTheirSources) {
    PutText(L"my.lake 1.jpg");
    using enum PanoramaFormat;
    const struct {
        PanoramaFormat to;
        const wchar_t* extension;
        bool subfolders;
        std::wstring output;
    } rows[] = {
        {Equirectangular, L"jpg", false, L"my.lake 1.jpg"},
        {Heart, L"tif", false, L"my.lake 1.tif"},
        {DirectXDds, L"dds", false, L"cubemap_my.lake 1.dds"},
        {SphereMap, L"png", false, L"spheremap_my.lake 1.png"},
        {QuickTimeVr, L"png", false, L"my.lake 1.mov"},
        {SingleFiles, L"bmp", false, L"my.lake 1.bmp"},
        {SingleFiles, L"bmp", true, JoinPath(L"my.lake 1", L"my.lake 1.bmp")},
        {Strip, L"bmp", true, L"my.lake 1.bmp"},
    };
    for (const auto& row : rows) {
        job_.to = Row(row.to);
        job_.extension = row.extension;
        job_.subfolders = row.subfolders;
        EXPECT_EQ(OnlyOutput(), Result(row.output)) << static_cast<int>(row.to);
    }
}

TEST_F(Batch, SixFilesAreOnePanorama) {
    const struct {
        int system;
        Names faces;  ///< in the order of the faces
    } rows[] = {
        {0,
         {L"front room_front.png", L"front room_right.png", L"front room_back.png", L"front room_left.png",
          L"front room_top.png", L"front room_bottom.png"}},
        {2, {L"a_f_f.png", L"a_f_r.png", L"a_f_b.png", L"a_f_l.png", L"a_f_u.png", L"a_f_d.png"}},
        {3,
         {L"x_ft hdr.png", L"x_rt hdr.png", L"x_bk hdr.png", L"x_lf hdr.png", L"x_up hdr.png",
          L"x_dn hdr.png"}},
        {4,
         {L"f_leaf_f_.png", L"r_leaf_f_.png", L"b_leaf_f_.png", L"l_leaf_f_.png", L"u_leaf_f_.png",
          L"d_leaf_f_.png"}},
        {6, {L"q_front.png", L"q_right.png", L"q_back.png", L"q_left.png", L"q_top.png", L"q_bottom.png"}},
        {5, {L"pano100.png", L"pano101.png", L"pano102.png", L"pano103.png", L"pano104.png", L"pano105.png"}},
    };
    job_.from = Row(PanoramaFormat::SingleFiles);
    for (const auto& row : rows) {
        // The folder's own name holds a face's part, too.
        ASSERT_TRUE(
            CreateFolder(job_.sourceFolder = folder_ / (L"x_f0_front_ft f_" + std::to_wstring(row.system))));
        Names expected;
        for (const std::wstring& name : row.faces) {
            Image picture = RandomImage(8, 8, PixelFormat::Rgb8);
            ASSERT_TRUE(Saved(picture, Source(name)));
            expected.push_back(Source(name));
        }
        settings_.fileNamingSystem = row.system;
        const BatchPlan plan = Plan();
        ASSERT_EQ(plan.items.size(), 1u) << row.system;
        EXPECT_EQ(plan.items.front().sources, expected) << row.system;
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
    EXPECT_EQ(listener.reasons[1], L"Could not open \"" + Source(L"b.png") + L"\"");
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

TEST_F(Batch, MissingFacesAreTold) {
    PutPicture(L"x_front.png", 8, 8);
    PutPicture(L"x_left.png", 8, 8);
    PutText(L"x_bottom.png");
    job_.from = Row(PanoramaFormat::SingleFiles);
    Listener listener;
    EXPECT_EQ(RunBatch(job_, Plan().items, false, settings_, listener).converted, 1u);
    EXPECT_EQ(listener.missingFaces, 4u);
}

TEST_F(Batch, StoppingKeepsWhatIsDone) {
    for (const wchar_t* name : {L"a.png", L"b.png", L"c.png"}) PutPicture(name);
    Listener listener;
    listener.stopBefore = 2;
    const BatchCounts counts = RunBatch(job_, Plan().items, false, settings_, listener);
    EXPECT_EQ(counts.converted, 2u);
    EXPECT_EQ(listener.begun, (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(Results().size(), 2u);
}

TEST_F(Batch, EveryLayoutIsWrittenAndReadBack) {
    // There and back: the results of one batch are the sources of the next.
    // Light in front, dark behind.
    Image sky(1024, 512, PixelFormat::Rgb8);
    for (int y = 0; y < 512; ++y) {
        for (int x = 0; x < 1024; ++x) {
            const std::uint8_t grey = x >= 256 && x < 768 ? 200 : 40;
            sky.SetPixel(x, y, Color8(grey, grey, grey, 255));
        }
    }
    ASSERT_TRUE(Saved(sky, Source(L"a.png")));
    for (const LayoutRow& row : BatchLayouts().subspan(1)) {
        SCOPED_TRACE(row.consoleName);
        BatchJob there = job_, back = job_;
        there.to = back.from = &row;
        there.extension = row.ownExtension != nullptr ? row.ownExtension : L"png";
        there.destinationFolder = back.sourceFolder = folder_ / FromUtf8(row.consoleName);
        ASSERT_TRUE(CreateFolder(there.destinationFolder));
        std::wstring output;
        for (const BatchJob& job : {there, back}) {
            Listener listener;
            const BatchPlan plan = PlanBatch(job, settings_);
            ASSERT_EQ(plan.items.size(), 1u);
            EXPECT_EQ(RunBatch(job, plan.items, false, settings_, listener).converted, 1u)
                << ToUtf8(listener.reasons.front());
            output = plan.items.front().output;
        }
        // Only a mirror ball has lost the back: it repeats the front.
        Image result;
        ASSERT_TRUE(LoadPicture(output, result).IsDone());
        ASSERT_EQ(result.width, 256u);
        const int red = result.GetPixel8(128, 64).red, behind = result.GetPixel8(36, 64).red;
        EXPECT_NEAR(red, 200, 12);
        EXPECT_NEAR(behind, row.format == PanoramaFormat::MirrorBall ? 200 : 40, 12);
    }
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
