#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "platform/files.h"
#include "platform/utf8.h"
#include "resources/resource_ids.h"
#include "session/commands.h"
#include "session/layouts.h"
#include "tests/data_table.h"
#include "tests/picture_io.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {
namespace {

using Calls = std::vector<std::string>;
using Commands = std::vector<std::uint16_t>;

/// A session with its host and a folder of its own.
class SessionTest : public testing::Test {
  protected:
    SessionTest() {
        settings.resolution1 = 0;
        Image sky = RandomImage(64, 32, PixelFormat::Rgb8);
        EXPECT_TRUE(Saved(sky, picture));
    }

    /// Imports a 64 × 32 picture through the menu and forgets what the host recorded of it.
    void ImportPicture() {
        host.answers = {picture};
        RunCommand(session, IDM_IMPORT_EQUIRECTANGULAR);
        ASSERT_TRUE(session.panorama && session.panorama->equirectSource.IsValid());
        host.Forget();
    }

    bool Checked(std::uint16_t command) const {
        const std::vector<MenuCheck> checks = MenuChecks(session);
        const auto item = std::find_if(checks.begin(), checks.end(),
                                       [&](const MenuCheck& check) { return check.command == command; });
        EXPECT_NE(item, checks.end()) << command << " carries no check mark";
        return item != checks.end() && item->checked;
    }

    const TemporaryFolder folder;
    const std::wstring picture = folder / L"sky.bmp";
    AppState settings;
    RecordingHost host;
    Session session{settings, host};
};

TEST(Layouts, EveryRowIsFoundByItsOwnIdsAndCanDoWhatItsKindSays) {
    std::set<int> ids;
    std::set<std::string> names;
    for (const LayoutRow& row : Layouts()) {
        SCOPED_TRACE(row.consoleName);
        for (const int id :
             {int{row.importCommand}, int{row.exportCommand}, int{row.viewCommand}, row.functionKey}) {
            EXPECT_TRUE(id == 0 || ids.insert(id).second) << id << " stands for two things";
        }
        EXPECT_TRUE(names.insert(row.consoleName).second);
        EXPECT_EQ(FindLayout(row.format), &row);
        EXPECT_EQ(LayoutOfConsoleName(row.consoleName), &row);
        EXPECT_EQ(LayoutOfImportCommand(row.importCommand), row.importCommand ? &row : nullptr);
        EXPECT_EQ(LayoutOfExportCommand(row.exportCommand), row.exportCommand ? &row : nullptr);
        EXPECT_EQ(LayoutOfViewCommand(row.viewCommand), row.viewCommand ? &row : nullptr);
        EXPECT_EQ(LayoutOfFunctionKey(row.functionKey), row.functionKey ? &row : nullptr);
        const bool reads = row.kind == LayoutKind::Panorama || row.kind == LayoutKind::Generator;
        EXPECT_EQ(row.import != nullptr, reads);
        EXPECT_EQ(row.importCommand != 0, reads);
        EXPECT_EQ(row.exportCommand != 0, row.kind != LayoutKind::Generator);
        EXPECT_EQ(row.exportCommand != 0, row.render != nullptr || row.write != nullptr);
        EXPECT_TRUE(row.viewCommand == 0 || row.render != nullptr);
    }
    // Batches find their layouts by counting.
    for (std::size_t i = 0; i < 13; ++i) EXPECT_EQ(static_cast<std::size_t>(Layouts()[i].format), i);
}

TEST(Layouts, PrefixesGoBeforeTheFileNameOnce) {
    for (const DataRow& row : PathTable("prefixed_paths")) {
        EXPECT_EQ(WithExportPrefix(*LayoutOfConsoleName(row[0]), FromUtf8(row[1])), FromUtf8(row[2]))
            << row.where;
    }
}

TEST_F(SessionTest, ImportReplacesThePanoramaAndShowsIt) {
    settings.importPath = L"/start";
    host.answers = {picture};
    EXPECT_TRUE(RunCommand(session, IDM_IMPORT_EQUIRECTANGULAR));
    ASSERT_EQ(host.dialogs.size(), 1u);
    EXPECT_EQ(host.dialogs[0].kind, FileDialogKind::OpenPicture);
    EXPECT_EQ(host.dialogs[0].startPath, L"/start");
    EXPECT_EQ(host.dialogs[0].title, L"Select equirectangular");
    EXPECT_EQ(host.calls, (Calls{"ask", "begin", "end", "checks", "show", "title"}));
    EXPECT_EQ(settings.importPath, folder.Path());
    EXPECT_EQ(host.titles.back(), L"Skyvault - sky.bmp Equirectangular (64 x 32) LDR 24 bpp RGB int");
    ASSERT_EQ(host.shown.size(), 1u);
    EXPECT_EQ(host.shown[0].width, 2 * host.shown[0].height);

    session.panorama->modifications.flipHorizontal = true;
    host.answers = {picture};
    RunCommand(session, IDM_IMPORT_EQUIRECTANGULAR);
    EXPECT_FALSE(Checked(IDM_FLIP_HORIZONTAL)) << "a new panorama starts unmodified";
    EXPECT_EQ(host.titles.size(), 1u) << "the same title is not set again";
}

TEST_F(SessionTest, CancelledDialogsChangeNothing) {
    ImportPicture();
    settings.view = 10;
    settings.exportPath = L"/start";
    const Panorama* before = session.panorama.get();
    for (const LayoutRow& row : Layouts()) {
        for (const std::uint16_t command : Commands{row.importCommand, row.exportCommand}) {
            if (command == 0) continue;
            SCOPED_TRACE(row.consoleName);
            host.Forget();
            EXPECT_TRUE(RunCommand(session, command));
            EXPECT_EQ(host.calls, Calls{"ask"});
            if (command != row.exportCommand) continue;
            EXPECT_EQ(host.dialogs.at(0).title, L"Export Panorama");
            const bool isDds = row.format == PanoramaFormat::DirectXDds;
            const bool isMovie = row.format == PanoramaFormat::QuickTimeVr;
            EXPECT_EQ(host.dialogs.at(0).kind, isDds     ? FileDialogKind::SaveDds
                                               : isMovie ? FileDialogKind::SaveMovie
                                                         : FileDialogKind::SavePicture);
        }
    }
    EXPECT_EQ(session.panorama.get(), before);
    EXPECT_EQ(settings.view, 10);
    EXPECT_TRUE(settings.importPath == folder.Path() && settings.exportPath == L"/start");
}

TEST_F(SessionTest, AFailedImportLeavesAnEmptyPanorama) {
    ImportPicture();
    settings.importPath = L"kept";
    const std::wstring missing = folder.Path(L"missing.bmp");
    host.answers = {missing};
    RunCommand(session, IDM_IMPORT_EQUIRECTANGULAR);
    EXPECT_EQ(host.errors, std::vector{L"Could not open " + Quoted(missing) + L": there is no such file"});
    EXPECT_EQ(settings.importPath, L"kept") << "the folder of a file that is not there";
    ASSERT_NE(session.panorama, nullptr);
    EXPECT_TRUE(session.panorama->IsEmpty());
    EXPECT_EQ(host.titles.back(), L"Skyvault - missing.bmp");
    EXPECT_FALSE(host.active);
    host.Forget();
    settings.resolution0 = 0;
    host.answers = {missing};
    RunCommand(session, IDM_GENERATE_BLOBS);
    EXPECT_TRUE(host.errors.empty()) << "a generator does without its picture";
    EXPECT_FALSE(session.panorama->IsEmpty());
}

TEST_F(SessionTest, SingleFilesAskFaceByFace) {
    const wchar_t* const titles[] = {L"Select front face",    L"Select right face",
                                     L"Select back face",     L"Select left face",
                                     L"Select top (up) face", L"Select bottom (down) face"};
    for (std::size_t picked = 0; picked <= 6; ++picked) {
        SCOPED_TRACE(picked);
        host.Forget();
        settings.importPath = L"/start";
        for (std::size_t i = 0; i < picked; ++i)
            host.answers.push_back(L"/f" + std::to_wstring(i) + L"/x.png");
        RunCommand(session, IDM_IMPORT_SINGLE_FILES);
        ASSERT_EQ(host.dialogs.size(), std::min<std::size_t>(picked + 1, 6));
        for (std::size_t i = 0; i < host.dialogs.size(); ++i) {
            EXPECT_EQ(host.dialogs[i].title, titles[i]);
            EXPECT_EQ(host.dialogs[i].startPath, i == 0 ? L"/start" : L"/f" + std::to_wstring(i - 1));
        }
        EXPECT_EQ(host.calls.size() > host.dialogs.size(), picked > 0)
            << "nothing happens without a front face";
    }
}

TEST_F(SessionTest, ExportWritesAndBecomesTheView) {
    ImportPicture();
    settings.resolution0 = 0;
    const struct {
        std::uint16_t command;
        PanoramaFormat format;
        std::wstring file;
        PictureSize size;
    } cases[] = {
        {IDM_EXPORT_EQUIRECTANGULAR, PanoramaFormat::Equirectangular, L"out.png", {64, 32}},
        {IDM_EXPORT_PREVIEW, PanoramaFormat::Preview, L"out.png", {1280, 720}},
        // The view, and not the last of the faces.
        {IDM_EXPORT_SINGLE_FILES, PanoramaFormat::SingleFiles, L"out_bottom.png", {320, 200}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        host.Forget();
        RemoveFile(folder / c.file);
        settings.exportPath = L"/start";
        settings.view = static_cast<std::int32_t>(PanoramaFormat::Heart);
        host.answers = {folder / L"out.png"};
        EXPECT_TRUE(RunCommand(session, c.command));
        ASSERT_EQ(host.dialogs.size(), 1u);
        EXPECT_EQ(host.dialogs[0].startPath, L"/start");
        EXPECT_EQ(settings.exportPath, folder.Path());
        EXPECT_TRUE(FileExists(folder / c.file));
        ASSERT_FALSE(host.information.empty());
        EXPECT_TRUE(host.information.back().starts_with(L"360° photo successfully exported!\n\nPath\t\t"))
            << ToUtf8(host.information.back());
        EXPECT_EQ(settings.view, static_cast<std::int32_t>(c.format));
        // The picture shown is the written one, not a new build in the window's size.
        ASSERT_EQ(host.shown.size(), 1u);
        EXPECT_EQ((PictureSize{host.shown[0].width, host.shown[0].height}), c.size);
        const Calls end = {"end", "information", "checks", "show"};
        ASSERT_GE(host.calls.size(), end.size());
        EXPECT_TRUE(std::equal(end.rbegin(), end.rend(), host.calls.rbegin()));
    }
    // What could not be written is told, and is no success.
    host.Forget();
    host.answers = {folder / L"none/out.png"};
    RunCommand(session, IDM_EXPORT_EQUIRECTANGULAR);
    EXPECT_EQ(host.errors.size(), 1u);
    EXPECT_TRUE(host.information.empty() || !host.information.back().starts_with(L"360°"));
    // The preview is what its camera sees.
    Color8 ahead[2];
    for (const bool turned : {false, true}) {
        session.previewCamera.heading = turned ? 1.5f : 0.0f;
        host.answers = {folder / L"out.bmp"};
        RunCommand(session, IDM_EXPORT_PREVIEW);
        ahead[turned] = host.shown.back().GetPixel8(640, 360);
    }
    EXPECT_NE(ahead[0], ahead[1]);
}

TEST_F(SessionTest, ADdsCubeMapGetsItsPrefixAndIsNoView) {
    ImportPicture();
    settings.view = static_cast<std::int32_t>(PanoramaFormat::Heart);
    settings.resolution0 = 0;
    host.answers = {folder.Path(L"out.dds")};
    RunCommand(session, IDM_EXPORT_DDS);
    EXPECT_TRUE(FileExists(folder.Path(L"Cubemap_out.dds")));
    EXPECT_FALSE(FileExists(folder.Path(L"out.dds")));
    ASSERT_EQ(host.information.size(), 2u);
    EXPECT_NE(host.information[1].find(L"Resolution\t6 x 16 x 16\nProjection\tCubemap\n"),
              std::wstring::npos);
    EXPECT_EQ(settings.view, static_cast<std::int32_t>(PanoramaFormat::Heart));
}

TEST_F(SessionTest, StepsFollowTheModifierKeys) {
    const struct {
        bool control, shift;
        double degrees, horizon, logo;
    } cases[] = {
        {false, false, 1, 0.01, 0.01},
        {true, false, 0.1, 0.005, 0.001},
        {false, true, 15, 0.02, 0.03},
        {true, true, 0.1, 0.005, 0.001},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "ctrl " << c.control << " shift " << c.shift);
        settings.view = 0;
        session.previewCamera = {};
        ImportPicture();
        Modifications& modifications = session.panorama->modifications;
        host.modifierKeys = StepSizeOfKeys(c.control, c.shift);
        const double radians = c.degrees * 3.14159265358979 / 180;

        const float(&m)[4][4] = modifications.orientation.m;
        float &horizon = modifications.horizonPower, &logo = modifications.logoSize;
        const std::tuple<std::uint16_t, const float&, double> steps[] = {
            {IDM_HEADING_RIGHT, m[2][0], std::sin(radians)},  // the front looks right
            {IDM_HEADING_LEFT, m[2][0], 0},
            {IDM_PITCH_DOWN, m[2][1], -std::sin(radians)},
            {IDM_PITCH_UP, m[2][1], 0},
            {IDM_ROLL_CLOCKWISE, m[0][1], std::sin(radians)},
            {IDM_ROLL_COUNTERCLOCKWISE, m[0][1], 0},
            {IDM_HORIZON_UP, horizon, 1 + c.horizon},
            {IDM_HORIZON_DOWN, horizon, 1},
            {IDM_HORIZON_DOWN, horizon, 1 - c.horizon},
            {IDM_BIGGER_LOGO, logo, c.logo},
            {IDM_SMALLER_LOGO, logo, 0},
            {IDM_SMALLER_LOGO, logo, 0},
            // The preview camera turns ten times as fast, and in place of the panorama.
            {IDM_VIEW_PREVIEW, m[2][0], 0},
            {IDM_HEADING_RIGHT, session.previewCamera.heading, 10 * radians},
            {IDM_PITCH_UP, session.previewCamera.pitch, -10 * radians},
            {IDM_ROLL_CLOCKWISE, session.previewCamera.roll, 10 * radians},
            {IDM_VIEW_PREVIEW, m[0][0], 1},
        };
        for (const auto& [command, value, expected] : steps) {
            RunCommand(session, command);
            EXPECT_NEAR(value, expected, 1e-6) << command;
        }
        EXPECT_EQ(host.shown.size(), std::size(steps)) << "every step shows the view anew";
        logo = 0.9999f;
        RunCommand(session, IDM_BIGGER_LOGO);
        EXPECT_EQ(logo, 1.0f);
    }
}

TEST_F(SessionTest, MirrorsToggleAndReset) {
    const std::uint16_t commands[] = {IDM_FLIP_HORIZONTAL, IDM_MIRROR_TOP_TO_BOTTOM,
                                      IDM_MIRROR_FRONT_TO_BACK};
    ImportPicture();
    for (const std::uint16_t command : commands) {
        SCOPED_TRACE(command);
        host.Forget();
        RunCommand(session, command);
        EXPECT_EQ(host.calls, (Calls{"checks", "show"}));
        for (const std::uint16_t other : commands) EXPECT_EQ(Checked(other), other == command);
        RunCommand(session, command);
        EXPECT_FALSE(Checked(command));
    }
    for (const std::uint16_t command : commands) RunCommand(session, command);
    for (const std::uint16_t command : Commands{IDM_HEADING_LEFT, IDM_HORIZON_UP, IDM_BIGGER_LOGO}) {
        RunCommand(session, command);
    }
    host.Forget();
    RunCommand(session, IDM_RESET_ALL);
    EXPECT_EQ(host.calls, (Calls{"checks", "show"}));
    for (const std::uint16_t command : commands) EXPECT_FALSE(Checked(command));
    const Modifications& modifications = session.panorama->modifications;
    EXPECT_TRUE(modifications.orientation.isIdentity);
    EXPECT_EQ(modifications.horizonPower, 1.0f);
    EXPECT_EQ(modifications.logoSize, 0.0f);
}

TEST_F(SessionTest, UndoTakesWholeStepsBackAndAnImportBeginsAnew) {
    EXPECT_FALSE(IsAvailable(session, IDM_HEADING_LEFT) || IsAvailable(session, IDM_EXPORT_HTML));
    EXPECT_TRUE(IsAvailable(session, IDM_IMPORT_DDS) && IsAvailable(session, IDM_VIEW_STRIP));
    ImportPicture();
    EXPECT_TRUE(IsAvailable(session, IDM_HEADING_LEFT) && IsAvailable(session, IDM_EXPORT_HTML));
    const auto now = [&] { return session.panorama->modifications; };
    std::vector<Modifications> states = {now()};
    // A held key's three steps are one; so is a reset.
    for (const std::uint16_t command : Commands{IDM_HEADING_LEFT, IDM_FLIP_HORIZONTAL, IDM_RESET_ALL}) {
        EndStep(session.history);
        for (int i = 0; i < 3; ++i) RunCommand(session, command);
        states.push_back(now());
    }
    for (int i = 2; i >= 0; --i) {
        EXPECT_TRUE(RunCommand(session, IDM_UNDO) && now() == states[static_cast<std::size_t>(i)]) << i;
        EXPECT_EQ(Checked(IDM_FLIP_HORIZONTAL), i == 2);
    }
    EXPECT_FALSE(IsAvailable(session, IDM_UNDO));
    RunCommand(session, IDM_REDO);
    EXPECT_EQ(now(), states[1]);
    RunCommand(session, IDM_BIGGER_LOGO);
    EXPECT_FALSE(IsAvailable(session, IDM_REDO)) << "another way was taken";
    RunCommand(session, IDM_UNDO);
    EXPECT_EQ(now(), states[1]);
    ImportPicture();
    EXPECT_FALSE(IsAvailable(session, IDM_UNDO) || IsAvailable(session, IDM_REDO));
}

TEST_F(SessionTest, WithoutAPanoramaOnlySettingsChange) {
    for (const std::uint16_t command :
         Commands{IDM_HEADING_LEFT, IDM_PITCH_UP, IDM_ROLL_CLOCKWISE, IDM_HORIZON_UP, IDM_BIGGER_LOGO,
                  IDM_FLIP_HORIZONTAL, IDM_MIRROR_TOP_TO_BOTTOM, IDM_MIRROR_FRONT_TO_BACK, IDM_RESET_ALL}) {
        EXPECT_TRUE(RunCommand(session, command));
        EXPECT_TRUE(host.calls.empty()) << command;
    }
    settings.view = static_cast<std::int32_t>(PanoramaFormat::Preview);
    RotateStep(session, 1, 1, 1);
    EXPECT_EQ(session.previewCamera.heading, 0.0f);
    ApplyOptions(session);
    RunCommand(session, IDM_EXPORT_EQUIRECTANGULAR);
    EXPECT_TRUE(host.calls.empty()) << "nothing to show and to export";

    RunCommand(session, IDM_BIGGER_FOV);
    EXPECT_FLOAT_EQ(settings.previewFov, 0.19f);
    RunCommand(session, IDM_SMALLER_FOV);
    EXPECT_FLOAT_EQ(settings.previewFov, 0.1995f);
    for (int i = 0; i < 2000; ++i) RunCommand(session, IDM_SMALLER_FOV);
    const float smallest = settings.previewFov;
    RunCommand(session, IDM_BIGGER_FOV);
    EXPECT_LT(settings.previewFov, smallest) << "there is a way back";
    EXPECT_TRUE(host.calls.empty());

    for (const LayoutRow& row : Layouts()) {
        if (row.viewCommand == 0) continue;
        host.Forget();
        RunCommand(session, row.viewCommand);
        EXPECT_EQ(settings.view, static_cast<std::int32_t>(row.format));
        EXPECT_EQ(host.calls, Calls{"checks"}) << row.consoleName;
    }
    RunCommand(session, IDM_CROSSHAIR);
    EXPECT_TRUE(settings.crosshair && Checked(IDM_CROSSHAIR) && !Checked(IDM_MAGNIFYING_GLASS));
    RunCommand(session, IDM_MAGNIFYING_GLASS);
    EXPECT_TRUE(settings.magnifyingGlass && Checked(IDM_MAGNIFYING_GLASS));
    EXPECT_EQ(WindowTitle(session), L"Skyvault");
    for (const std::uint16_t own : Commands{IDM_ABOUT, IDM_EXIT, IDM_USER_GUIDE, IDM_BATCH, IDM_OPTIONS, 0}) {
        EXPECT_FALSE(RunCommand(session, own)) << "the window's own";
    }
}

TEST_F(SessionTest, AViewThatIsNoneShowsNothing) {
    ImportPicture();
    for (const std::int32_t view : {1, 2, 14, 15, 100, -1, 2147483647}) {
        settings.view = view;
        session.title = L"old";
        host.Forget();
        Refresh(session);
        EXPECT_EQ(host.calls, Calls{"title"}) << view;
    }
    settings.view = 0;
    host.Forget();
    host.canShow = false;
    session.title = L"old";
    Refresh(session);
    EXPECT_TRUE(host.calls.empty()) << "while minimised";
}

TEST_F(SessionTest, ViewsShowWhatTheyAre) {
    ImportPicture();
    RunCommand(session, IDM_VIEW_PREVIEW);
    EXPECT_EQ(host.calls, (Calls{"checks", "show"}));
    EXPECT_EQ(host.shown.back().width, 320u);
    EXPECT_EQ(host.shown.back().height, 180u);
    EXPECT_TRUE(Checked(IDM_VIEW_PREVIEW));
    EXPECT_FALSE(Checked(IDM_VIEW_EQUIRECTANGULAR));
    host.Forget();
    RunCommand(session, IDM_BIGGER_FOV);
    RunCommand(session, IDM_CROSSHAIR);
    RunCommand(session, IDM_MAGNIFYING_GLASS);
    EXPECT_EQ(host.calls, (Calls{"show", "checks", "show", "checks", "show"}));
    session.panorama->logoPicture = Image(2, 2, PixelFormat::Rgb8);
    ApplyOptions(session);
    EXPECT_FALSE(session.panorama->logoPicture.IsValid()) << "the logo is read anew";
    EXPECT_EQ(host.shown.size(), 4u);
}

TEST_F(SessionTest, OneFaceIsEnoughForATitle) {
    session.panorama = std::make_unique<Panorama>();
    session.panorama->path = L"/a/cube.dds";
    session.panorama->faceSize = 8;
    session.panorama->faces[2] = Image(8, 8, PixelFormat::Rgba16);
    EXPECT_EQ(WindowTitle(session), L"Skyvault - cube.dds Cubemap (8 x 8 x 6) HDR 64 bpp RGBA int");
}

}  // namespace
}  // namespace skyvault::test
