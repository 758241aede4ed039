// What a user could lose, or never hear of: files replaced unasked, results that do not exist, silent gaps.
#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/path_text.h"
#include "resources/resource_ids.h"
#include "session/batch.h"
#include "session/commands.h"
#include "session/conversion.h"
#include "settings/number_text.h"
#include "tests/picture_io.h"
#include "tests/recording_host.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"
#include "webexport/web_page.h"

namespace skyvault::test {
namespace {

class LostFiles : public testing::Test {
  protected:
    LostFiles() {
        settings.resolution0 = settings.resolution1 = settings.resolution2 = 0;
        settings.antialiasing = false;
        Image sky = RandomImage(64, 32, PixelFormat::Rgb8);
        EXPECT_TRUE(Saved(sky, source));
    }

    void Import(std::uint16_t command, std::deque<std::wstring> paths) {
        host.answers = std::move(paths);
        RunCommand(session, command);
    }

    const TemporaryFolder folder;
    const std::wstring source = folder / L"sky.bmp";
    AppState settings;
    RecordingHost host;
    Session session{settings, host};
};

TEST_F(LostFiles, ExportsAskAboutTheFilesTheyReplace) {
    Import(IDM_IMPORT_EQUIRECTANGULAR, {source});
    const struct {
        std::uint16_t command;
        std::wstring chosen;
        std::vector<std::wstring> there, asked;
    } rows[] = {
        {IDM_EXPORT_STRIP, L"a.png", {L"a.png"}, {L"a.png"}},
        {IDM_EXPORT_SPHERE_MAP, L"b.png", {L"b.png", L"Spheremap_b.png"}, {L"Spheremap_b.png"}},
        {IDM_EXPORT_DDS, L"c.dds", {L"Cubemap_c.dds"}, {L"Cubemap_c.dds"}},
        {IDM_EXPORT_DDS, L"d.dds", {L"d.dds"}, {}},
        {IDM_EXPORT_SINGLE_FILES,
         L"e.png",
         {L"e.png", L"e_right.png", L"e_top.png"},
         {L"e_right.png", L"e_top.png"}},
        {IDM_EXPORT_HTML, L"f.png", {L"f.html"}, {L"f.html"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.chosen));
        for (const std::wstring& name : row.there) folder.Write(name, "old");
        for (const bool replace : {false, true}) {
            if (row.asked.empty() && replace) continue;
            host.answers = {folder / row.chosen};
            host.questions.clear();
            host.confirms = replace;
            RunCommand(session, row.command);
            ASSERT_EQ(host.questions.size(), row.asked.empty() ? 0u : 1u);
            for (const std::wstring& name : row.there) {
                const bool asked = std::find(row.asked.begin(), row.asked.end(), name) != row.asked.end();
                const bool named = !row.asked.empty() &&
                                   (L"\n" + host.questions[0]).find(L"\n" + name) != std::wstring::npos;
                EXPECT_EQ(named, asked) << testing::PrintToString(name);
                EXPECT_EQ(folder.Read(name) == "old", !asked || !replace);
            }
        }
    }
    // Not about a page of this program's.
    host.questions.clear();
    RemoveFile(folder / L"f.png");
    host.answers = {folder / L"f.png"};
    RunCommand(session, IDM_EXPORT_HTML);
    EXPECT_TRUE(host.questions.empty());
}

TEST_F(LostFiles, OfAWebPageWhatIsMissingIsNotNamedAsWritten) {
    Import(IDM_IMPORT_EQUIRECTANGULAR, {source});
    const WebPageFiles files = CompanionFiles(folder / L"p.png");
    CreateFolder(files.styleSheet);  // nothing can be written there
    host.answers = {folder / L"p.png"};
    host.information.clear();
    RunCommand(session, IDM_EXPORT_HTML);
    ASSERT_FALSE(host.information.empty());
    EXPECT_NE(host.information.back().find(files.page), std::wstring::npos);
    EXPECT_EQ(host.information.back().find(files.styleSheet), std::wstring::npos);
    EXPECT_EQ(host.errors, std::vector{L"Could not write " + Quoted(files.styleSheet) + L": it is a folder"});
    EXPECT_TRUE(FileExists(folder / L"p.png"));
}

TEST_F(LostFiles, AMissingLogoIsToldOnce) {
    settings.logo = folder / L"none.png";
    Import(IDM_IMPORT_EQUIRECTANGULAR, {source});
    for (int i = 0; i < 3; ++i) LogoCommand(session, 1);
    EXPECT_EQ(host.errors,
              std::vector{L"Could not open " + Quoted(settings.logo) + L": there is no such file"});
    ApplyOptions(session);
    EXPECT_EQ(host.errors.size(), 2u);
    for (const std::uint32_t size : {4u, 6u}) {
        Image logo = RandomImage(size, size, PixelFormat::Rgb8);
        ASSERT_TRUE(Saved(logo, settings.logo));
        ApplyOptions(session);
        EXPECT_EQ(session.panorama->logoPicture.width, size);
    }
    RemoveFile(settings.logo);
    ApplyOptions(session);
    // Files can be written all the same, once it is known.
    Panorama& panorama = *session.panorama;
    for (const Reason reason : {Reason::Done, Reason::CannotOpen}) {
        EXPECT_EQ(ExportPanorama(*FindLayout(PanoramaFormat::Strip), folder / L"a.png", {}, settings, host,
                                 panorama)
                      .reason,
                  reason);
        panorama.missingLogo.clear();
    }
}

TEST(AppState, AMovedProgramTakesItsLogoAlong) {
    const TemporaryFolder folder;
    const std::wstring own = DefaultLogo(folder / L"here"), gone = DefaultLogo(folder / L"there");
    const std::wstring chosen = folder / L"mine.png", kept = folder.Write(L"Logo.png", "x");
    for (const auto& [before, after] : {std::pair{gone, own},
                                        {own, own},
                                        {chosen, chosen},
                                        {kept, kept},
                                        {std::wstring(), std::wstring()}}) {
        AppState state;
        state.logo = before;
        FollowOwnLogo(state, folder / L"here");
        EXPECT_EQ(state.logo, after);
    }
}

TEST_F(LostFiles, AFailedImportLeavesNothingOnShowAndFacesOfOtherSizesAreNamed) {
    Import(IDM_IMPORT_EQUIRECTANGULAR, {source});
    Image narrow = RandomImage(3, 9, PixelFormat::Rgb8);
    ASSERT_TRUE(Saved(narrow, folder / L"narrow.bmp"));
    for (const wchar_t* name : {L"none.bmp", L"narrow.bmp"}) {
        host.errors.clear();
        Import(IDM_IMPORT_EQUIRECTANGULAR, {folder / name});
        EXPECT_FALSE(host.shown.back().IsValid());
        ASSERT_EQ(host.errors.size(), 1u);
        EXPECT_NE(host.errors[0].find(name), std::wstring::npos);
    }
    std::deque<std::wstring> faces;
    for (std::uint32_t f = 0; f < 6; ++f) {
        Image face = RandomImage(16, f == 4 ? 12 : 16, PixelFormat::Rgb8);
        faces.push_back(folder / (std::to_wstring(f) + L".bmp"));
        ASSERT_TRUE(f == 2 || Saved(face, faces.back()));
    }
    host.errors.clear();
    Import(IDM_IMPORT_SINGLE_FILES, faces);
    EXPECT_EQ(host.errors, std::vector{L"Could not open " + Quoted(faces[2]) +
                                       L": there is no such file; there is no back face\nThe top face " +
                                       Quoted(faces[4]) + L" is 16 x 12, not 16 x 16"});
}

TEST(PathText, RootsAreNotNames) {
    const struct {
        std::wstring path;
        std::size_t windows, elsewhere;
    } rows[] = {
        {L"C:\\a\\b", 3, 0},
        {L"C:a", 2, 0},
        {L"\\\\server\\share\\a\\b", 15, 0},
        {L"\\\\?\\C:\\a\\b", 7, 0},
        {L"\\\\?\\UNC\\s\\t\\a", 12, 0},
        {L"\\\\server\\share", 14, 0},
        {L"/a/b", 1, 1},
        {L"a/b", 0, 0},
        {L"", 0, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RootLength(row.path), kPathSeparator == L'\\' ? row.windows : row.elsewhere)
            << testing::PrintToString(row.path);
    }
    const TemporaryFolder folder;
    const std::wstring prefix = kPathSeparator == L'\\' ? L"\\\\?\\" : L"";
    EXPECT_TRUE(CreateFolder(prefix + folder / L"one/two"));
    EXPECT_TRUE(FolderExists(folder / L"one/two"));
}

TEST(NumberText, ADecimalCommaIsTyped) {
    const std::pair<std::wstring, float> rows[] = {{L"0,5", 0.5f},     {L"-12,25", -12.25f}, {L"0.5", 0.5f},
                                                   {L"1,234.5", 1.0f}, {L"1,2,3", 1.0f},     {L"", 0.0f},
                                                   {L",", 0.0f}};
    for (const auto& [text, value] : rows) EXPECT_EQ(ParseFloat(WithDecimalPoint(text)), value);
}

/// Two folders for batches.
class LostInBatches : public LostFiles {
  protected:
    void SetUp() override {
        job.sourceFolder = folder / L"in";
        job.destinationFolder = folder / L"out";
        ASSERT_TRUE(CreateFolder(job.sourceFolder) && CreateFolder(job.destinationFolder));
        job.from = job.to = FindLayout(PanoramaFormat::Equirectangular);
        Image sky = RandomImage(64, 32, PixelFormat::Rgb8);
        for (const wchar_t* name : {L"in/a.bmp", L"in/a.png"}) ASSERT_TRUE(Saved(sky, folder / name));
    }
    BatchJob job;
    struct : BatchObserver {
        bool OnBegin(const BatchItem&, std::size_t, std::size_t) override { return true; }
        void OnEnd(const BatchItem&, BatchEnd, const ConversionResult&) override {}
    } silence;
};

TEST_F(LostInBatches, ALayoutsOwnTypeGoesBeforeTheChosenOne) {
    for (const auto& [format, chosen, written] : {std::tuple{PanoramaFormat::DirectXDds, L"mov", L"dds"},
                                                  {PanoramaFormat::QuickTimeVr, L"png", L"mov"},
                                                  {PanoramaFormat::Strip, L"mov", L"png"},
                                                  {PanoramaFormat::Strip, L"dds", L"dds"}}) {
        job.to = FindLayout(format);
        job.extension = chosen;
        EXPECT_TRUE(PlanBatch(job, settings).items[0].output.ends_with(std::wstring(L".") + written));
    }
}

TEST_F(LostInBatches, ObstaclesComeBeforeSkipping) {
    job.extension = L"png";
    for (int run = 0; run < 2; ++run) {
        const BatchCounts counts = RunBatch(job, PlanBatch(job, settings).items, true, settings, silence);
        EXPECT_EQ(counts.failed, 1u) << run;
        EXPECT_EQ(counts.skipped, run == 0 ? 0u : 1u);
    }
}

}  // namespace
}  // namespace skyvault::test
